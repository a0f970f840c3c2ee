// options.cpp -- parses the command line of compare and cpg; GNU style long options.
#include "cli/options.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "cli/command_line.h"
#include "engine/kernels/scan_kernels.h"

namespace trelvane::cli {
namespace {

// A thread count: a whole number from 0 (every core) to kMaxThreads.
constexpr uint64_t kMaxThreads = 1024;

// Every kernel name, the Single ones first, then the whole-number ones.
std::string kernelList() {
  std::string out;
  for (const auto* names : {&scanKernelNames(), &integerScanKernelNames()})
    for (std::string_view name : *names) {
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

// The option table of compare and cpg: fields kept as typed, flags, and
// the options whose values are checked here.
std::vector<Option> comparisonTable(ComparisonOptions& o) {
  std::vector<Option> table;
  auto field = [&](const char* name, std::optional<std::string> ComparisonOptions::*f) {
    table.push_back({name, 1, [&o, f](const std::vector<std::string>& v) {
                       o.*f = v[0];
                       return std::string();
                     }});
  };
  auto flag = [&](const char* name, bool ComparisonOptions::*f) {
    table.push_back({name, 0, [&o, f](const std::vector<std::string>&) {
                       o.*f = true;
                       return std::string();
                     }});
  };
  field("window", &ComparisonOptions::window);
  field("from", &ComparisonOptions::from);
  field("to", &ComparisonOptions::to);
  field("resamplings", &ComparisonOptions::resamplings);
  field("identities", &ComparisonOptions::identities);
  field("long-region", &ComparisonOptions::longRegion);
  field("short-region", &ComparisonOptions::shortRegion);
  table.push_back({"coordinates", 1, [&o](const std::vector<std::string>& v) {
                     if (v[0] != "record" && v[0] != "run")
                       return "invalid coordinates '" + v[0] + "': expected record or run";
                     o.coordinates = v[0] == "record" ? Coordinates::Record : Coordinates::Run;
                     // Tracks are for browsers, which know records: they follow the
                     // record unless the run's numbering is asked for.
                     o.tracks.track.recordCoordinates = o.coordinates == Coordinates::Record;
                     return std::string();
                   }});
  field("report", &ComparisonOptions::report);
  field("rows", &ComparisonOptions::rows);
  field("result", &ComparisonOptions::result);
  field("svg", &ComparisonOptions::svg);
  field("pdf", &ComparisonOptions::pdf);
  field("png", &ComparisonOptions::png);
  field("dotplot", &ComparisonOptions::dotplot);
  flag("long-complement", &ComparisonOptions::longComplement);
  flag("long-reverse", &ComparisonOptions::longReverse);
  flag("long-remove-n", &ComparisonOptions::longRemoveN);
  flag("short-complement", &ComparisonOptions::shortComplement);
  flag("short-reverse", &ComparisonOptions::shortReverse);
  flag("short-remove-n", &ComparisonOptions::shortRemoveN);
  flag("show-long", &ComparisonOptions::showLong);
  flag("show-short", &ComparisonOptions::showShort);
  flag("quiet", &ComparisonOptions::quiet);
  table.push_back({"seed", 1, [&o](const std::vector<std::string>& v) {
                     o.seed = wholeNumber(v[0], 0, UINT64_MAX);
                     return o.seed ? std::string()
                                   : "invalid seed '" + v[0] + "': expected a whole number from 0 to 18446744073709551615";
                   }});
  table.push_back({"kernel", 1, [&o](const std::vector<std::string>& v) {
                     bool known = false;
                     for (std::string_view k : scanKernelNames()) known = known || k == v[0];
                     for (std::string_view k : integerScanKernelNames()) known = known || k == v[0];
                     if (!known) return "invalid kernel '" + v[0] + "': expected " + kernelList();
                     if (!findScanKernel(v[0])) return "kernel '" + v[0] + "' needs an instruction set this processor lacks";
                     o.kernel = v[0];
                     return std::string();
                   }});
  table.push_back({"threads", 1, [&o](const std::vector<std::string>& v) {
                     const std::optional<uint64_t> n = wholeNumber(v[0], 0, kMaxThreads);
                     if (!n)
                       return "invalid thread count '" + v[0] + "': expected a whole number from 0 (every core) to " +
                              std::to_string(kMaxThreads);
                     o.threads = static_cast<int>(*n);
                     return std::string();
                   }});
  table.push_back({"model", 1, [&o](const std::vector<std::string>& v) {
                     const char* names[] = {"identity", "tstv", "general"};
                     for (int k = 0; k < 3; ++k)
                       if (v[0] == names[k]) o.model = k;
                     return o.model ? std::string() : "invalid model '" + v[0] + "': expected identity, tstv or general";
                   }});
  table.push_back({"aligned", 2, [&o](const std::vector<std::string>& v) {
                     o.aligned1 = v[0];
                     o.aligned2 = v[1];
                     return std::string();
                   }});
  addTrackOptions(table, o.tracks, o.cpg ? TrackCommand::Cpg : TrackCommand::Compare);
  return table;
}

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
  CommandLine line;
  if (!parseCommandLine(args, comparisonTable(o), line, error)) return false;
  o.help = line.help;
  o.version = line.version;
  if (o.help || o.version) return true;
  if (!(cpg ? checkOperands(line.operands, {"LONG"}, error)
            : checkOperands(line.operands, {"LONG", "SHORT"}, error)))
    return false;
  o.longPath = line.operands[0];
  if (!cpg) o.shortPath = line.operands[1];

  if (o.aligned1 && !o.model) {
    *error = "--aligned needs --model tstv or --model general";
    return false;
  }
  if (o.model && *o.model != 0 && !o.aligned1) {
    *error = "--model tstv and --model general need --aligned FILE1 FILE2";
    return false;
  }
  if (cpg && o.shortRegion) {
    *error = "--short-region needs a shortest sequence: cpg reads LONG alone";
    return false;
  }
  if (o.dotplot && pictureFormatOf(*o.dotplot).empty()) {
    *error = "--dotplot needs a file name ending in .svg, .pdf or .png";
    return false;
  }
  return checkTrackOutputs(o.tracks, cpg ? TrackCommand::Cpg : TrackCommand::Compare, true, error);
}

bool resolveComparisonInputs(bool cpg, std::vector<std::string>& args,
                             const std::function<std::string(const std::string&)>& resolve,
                             ComparisonOptions& o, std::string* error) {
  if (!parseComparisonOptions(cpg, args, o, error)) return false;
  if (o.help || o.version) return true;
  // The same words again, for where each operand and value stands.
  ComparisonOptions again;
  CommandLine line;
  parseCommandLine(args, comparisonTable(again), line, error);
  for (const CommandLine::Place& at : line.places) {
    if (!at.option.empty() && at.option != "aligned") continue;
    std::string& word = args[at.index];
    if (at.inlineValue) {
      const std::size_t eq = word.find('=');
      word = word.substr(0, eq + 1) + resolve(word.substr(eq + 1));
    } else {
      word = resolve(word);
    }
  }
  return true;
}

std::string comparisonHelp() {
  return std::string(
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
      "  --long-region R --short-region R\n"
      "                        read only a record or region of a FASTA file (plain,\n"
      "                        gzip or BGZF): NAME, NAME:FROM or NAME:FROM-TO, 1-based\n"
      "                        and inclusive, commas allowed; LONG:R and SHORT:R say\n"
      "                        the same where no file has that whole name\n"
      "  --coordinates record|run   number the rows, the drawing's positions and the\n"
      "                        tracks by the record's own coordinates or along the\n"
      "                        run (default: the rows and the drawing along the run,\n"
      "                        the tracks by the record)\n"
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
      "  --dotplot FILE        the dot plot (.svg, .pdf or .png)\n") +
      trackHelp(true, true, true) +
      "\n"
      "Other:\n"
      "  --seed N              seed of the random resampling (default: the clock)\n"
      "  --kernel NAME         the scan's kernel: auto (default: the fastest this\n"
      "                        processor has), scalar, generic, sse2, avx2 or\n"
      "                        avx512; generic-u8, avx2-u8, avx512-u8 (scores in\n"
      "                        bytes) and generic-i16, avx2-i16, avx512-i16 (in\n"
      "                        16 bits) where the matrix holds whole numbers, a\n"
      "                        wider one where the scores need it; all give the\n"
      "                        same bytes\n"
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
