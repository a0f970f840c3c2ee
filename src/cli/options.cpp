// options.cpp -- parses the command line of compare and cpg; GNU style long options.
#include "cli/options.h"

#include <cstddef>

#include "engine/kernels/scan_kernels.h"

namespace trelvane::cli {
namespace {

bool parseSeed(const std::string& text, uint64_t& seed) {
  if (text.empty() || text.size() > 20) return false;
  uint64_t v = 0;
  for (char c : text) {
    if (c < '0' || c > '9') return false;
    uint64_t d = static_cast<uint64_t>(c - '0');
    if (v > (UINT64_MAX - d) / 10) return false;
    v = v * 10 + d;
  }
  seed = v;
  return true;
}

// A thread count: a whole number from 0 (every core) to kMaxThreads.
constexpr int kMaxThreads = 1024;
bool parseThreads(const std::string& text, int& threads) {
  if (text.empty() || text.size() > 4) return false;
  int v = 0;
  for (char c : text) {
    if (c < '0' || c > '9') return false;
    v = v * 10 + (c - '0');
  }
  if (v > kMaxThreads) return false;
  threads = v;
  return true;
}

std::string kernelList() {
  std::string out;
  for (std::string_view name : scanKernelNames()) {
    if (!out.empty()) out += ", ";
    out += name;
  }
  return out;
}

std::string lowerCase(std::string s) {
  for (char& c : s)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return s;
}

// The option table: each long option and where its value goes.
struct ValueOption {
  const char* name;
  std::optional<std::string> ComparisonOptions::*field;
};
struct FlagOption {
  const char* name;
  bool ComparisonOptions::*field;
};

const ValueOption kValueOptions[] = {
    {"window", &ComparisonOptions::window},
    {"from", &ComparisonOptions::from},
    {"to", &ComparisonOptions::to},
    {"resamplings", &ComparisonOptions::resamplings},
    {"identities", &ComparisonOptions::identities},
    {"report", &ComparisonOptions::report},
    {"rows", &ComparisonOptions::rows},
    {"result", &ComparisonOptions::result},
    {"svg", &ComparisonOptions::svg},
    {"pdf", &ComparisonOptions::pdf},
    {"png", &ComparisonOptions::png},
    {"dotplot", &ComparisonOptions::dotplot},
};

const FlagOption kFlagOptions[] = {
    {"long-complement", &ComparisonOptions::longComplement},
    {"long-reverse", &ComparisonOptions::longReverse},
    {"long-remove-n", &ComparisonOptions::longRemoveN},
    {"short-complement", &ComparisonOptions::shortComplement},
    {"short-reverse", &ComparisonOptions::shortReverse},
    {"short-remove-n", &ComparisonOptions::shortRemoveN},
    {"show-long", &ComparisonOptions::showLong},
    {"show-short", &ComparisonOptions::showShort},
    {"quiet", &ComparisonOptions::quiet},
};

}  // namespace

std::string pictureFormatOf(const std::string& path) {
  std::size_t dot = path.rfind('.');
  std::size_t slash = path.rfind('/');
  if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return {};
  std::string ext = lowerCase(path.substr(dot + 1));
  if (ext == "svg" || ext == "pdf" || ext == "png") return ext;
  return {};
}

bool parseComparisonOptions(bool cpg, const std::vector<std::string>& args,
                            ComparisonOptions& o, std::string* error) {
  o = ComparisonOptions{};
  o.cpg = cpg;
  std::vector<std::string> positional;
  bool optionsEnd = false;

  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    if (optionsEnd || arg.size() < 2 || arg[0] != '-') {
      positional.push_back(arg);
      continue;
    }
    if (arg == "--") {
      optionsEnd = true;
      continue;
    }
    if (arg.compare(0, 2, "--") != 0) {
      *error = "invalid option -- '" + arg.substr(1) + "'";
      return false;
    }
    std::string name = arg.substr(2);
    std::optional<std::string> inlineValue;
    if (std::size_t eq = name.find('='); eq != std::string::npos) {
      inlineValue = name.substr(eq + 1);
      name.erase(eq);
    }
    // Takes the option's value: the text after '=' or the next argument.
    auto value = [&](std::string& out) {
      if (inlineValue) {
        out = *inlineValue;
        return true;
      }
      if (i + 1 >= args.size()) {
        *error = "option '--" + name + "' requires an argument";
        return false;
      }
      out = args[++i];
      return true;
    };

    if (name == "help" || name == "version") {
      (name == "help" ? o.help : o.version) = true;
      return true;
    }

    bool known = false;
    for (const FlagOption& f : kFlagOptions) {
      if (name != f.name) continue;
      if (inlineValue) {
        *error = "option '--" + name + "' doesn't allow an argument";
        return false;
      }
      o.*f.field = true;
      known = true;
    }
    for (const ValueOption& v : kValueOptions) {
      if (name != v.name) continue;
      std::string text;
      if (!value(text)) return false;
      o.*v.field = text;
      known = true;
    }
    if (known) continue;

    if (name == "seed") {
      std::string text;
      if (!value(text)) return false;
      uint64_t seed = 0;
      if (!parseSeed(text, seed)) {
        *error = "invalid seed '" + text + "': expected a whole number from 0 to 18446744073709551615";
        return false;
      }
      o.seed = seed;
    } else if (name == "kernel") {
      std::string text;
      if (!value(text)) return false;
      bool knownName = false;
      for (std::string_view k : scanKernelNames()) knownName = knownName || k == text;
      if (!knownName) {
        *error = "invalid kernel '" + text + "': expected " + kernelList();
        return false;
      }
      if (!findScanKernel(text)) {
        *error = "kernel '" + text + "' needs an instruction set this processor lacks";
        return false;
      }
      o.kernel = text;
    } else if (name == "threads") {
      std::string text;
      if (!value(text)) return false;
      int threads = 0;
      if (!parseThreads(text, threads)) {
        *error = "invalid thread count '" + text + "': expected a whole number from 0 (every core) to " +
                 std::to_string(kMaxThreads);
        return false;
      }
      o.threads = threads;
    } else if (name == "model") {
      std::string text;
      if (!value(text)) return false;
      if (text == "identity") o.model = 0;
      else if (text == "tstv") o.model = 1;
      else if (text == "general") o.model = 2;
      else {
        *error = "invalid model '" + text + "': expected identity, tstv or general";
        return false;
      }
    } else if (name == "aligned") {
      if (inlineValue || i + 2 >= args.size()) {
        *error = "option '--aligned' requires two arguments: FILE1 FILE2";
        return false;
      }
      o.aligned1 = args[++i];
      o.aligned2 = args[++i];
    } else {
      *error = "unrecognized option '" + arg + "'";
      return false;
    }
  }

  std::size_t wanted = cpg ? 1 : 2;
  if (positional.size() < wanted) {
    *error = cpg ? "missing LONG sequence file"
                 : (positional.empty() ? "missing LONG and SHORT sequence files"
                                       : "missing SHORT sequence file");
    return false;
  }
  if (positional.size() > wanted) {
    *error = "unexpected argument '" + positional[wanted] + "'";
    return false;
  }
  o.longPath = positional[0];
  if (!cpg) o.shortPath = positional[1];

  if (o.aligned1 && !o.model) {
    *error = "--aligned needs --model tstv or --model general";
    return false;
  }
  if (o.model && *o.model != 0 && !o.aligned1) {
    *error = "--model tstv and --model general need --aligned FILE1 FILE2";
    return false;
  }
  if (o.dotplot && pictureFormatOf(*o.dotplot).empty()) {
    *error = "--dotplot needs a file name ending in .svg, .pdf or .png";
    return false;
  }
  return true;
}

std::string comparisonHelp() {
  return
      "Usage: trelvane-cli compare LONG SHORT [OPTION]...\n"
      "  or:  trelvane-cli cpg LONG [OPTION]...\n"
      "Draw the identity profile of the sequence file LONG against SHORT (compare),\n"
      "or the CpG profile of LONG alone (cpg), without a window. The outputs are the\n"
      "bytes the desktop window gives for the same inputs and seed.\n"
      "\n"
      "Fields, taken as typed into the window, in this order:\n"
      "  --window N            window size (default 30; above 255 becomes 255); then\n"
      "                        LONG is read, then SHORT (which clips the window to\n"
      "                        its length)\n"
      "  --from N              first analysed position, 1-based (default 1)\n"
      "  --to N|max            end of the analysed range (default max)\n"
      "  --resamplings N       number of random resamplings (default: the number of\n"
      "                        analysed positions that reading the files left there)\n"
      "  --identities N        list alignments scoring at least N (default 20)\n"
      "\n"
      "Reading the sequences:\n"
      "  --long-complement --long-reverse --long-remove-n\n"
      "  --short-complement --short-reverse --short-remove-n\n"
      "  --show-long --show-short   put the sequence's text at the top of the report\n"
      "\n"
      "Substitution model, estimated before the run:\n"
      "  --model identity|tstv|general\n"
      "  --aligned FILE1 FILE2 two aligned sequences (FILE1 from the longest one)\n"
      "\n"
      "Outputs (FILE '-' is standard output):\n"
      "  --report FILE         the text of the Results tab\n"
      "  --rows FILE           the clipboard text: result head and one row a position\n"
      "  --result FILE         the result file, which 'redraw' reads back\n"
      "  --svg FILE --pdf FILE --png FILE   the profile as drawn after the run\n"
      "  --dotplot FILE        the dot plot (.svg, .pdf or .png)\n"
      "\n"
      "Other:\n"
      "  --seed N              seed of the random resampling (default: the clock)\n"
      "  --kernel NAME         the scan's kernel: auto (default: the fastest this\n"
      "                        processor has), scalar, generic, sse2, avx2 or\n"
      "                        avx512; all give the same bytes\n"
      "  --threads N           use at most N threads (default 0: every core)\n"
      "  --quiet               no progress on standard error\n"
      "  --help                display this help and exit\n"
      "  --version             output version information and exit\n"
      "\n"
      "Progress goes to standard error when it is a terminal; Ctrl-C stops the run\n"
      "as the window's Stop does (no result file) and exits with status 130.\n"
      "Exit status: 0 on success, 1 on bad input, 2 on a usage error.\n";
}

}  // namespace trelvane::cli
