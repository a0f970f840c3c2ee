// batch.cpp -- trelvane-cli batch: the pairs of a manifest run as compare, each in its own
// process and folder, over the cores; a summary table and the failures at the end.
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "cli/batch_manifest.h"
#include "cli/command_line.h"
#include "cli/commands.h"
#include "cli/interrupt.h"
#include "cli/options.h"

namespace trelvane::cli {
namespace {

namespace fs = std::filesystem;

const char kBatchHelp[] =
    "Usage: trelvane-cli batch MANIFEST [OPTION]...\n"
    "Run every comparison of MANIFEST, one pair a line written as the arguments of\n"
    "compare (LONG SHORT [OPTION]...), each in its own process, over the cores.\n"
    "Paths of the sequences and of --aligned are taken from the manifest's folder;\n"
    "the outputs a line names go into its pair's folder. '#' starts a comment;\n"
    "quotes and backslashes work as in a shell.\n"
    "\n"
    "Each pair's folder, NNN-LONG-SHORT in the output folder, holds report.txt,\n"
    "rows.txt and result.txt (unless the line names its own --report, --rows or\n"
    "--result), what else the line asks for, and log.txt where the run said\n"
    "anything. summary.tsv in the output folder lists every pair.\n"
    "\n"
    "  --output-dir DIR      where the pairs' folders go (default: MANIFEST's name\n"
    "                        without its extension, with '-results', in the\n"
    "                        current folder)\n"
    "  --jobs N              run at most N pairs at once (default 0: one a core)\n"
    "  --seed N              the seed of every pair whose line gives none\n"
    "  --quiet               no line on standard error as each pair ends\n"
    "  --help                display this help and exit\n"
    "  --version             output version information and exit\n"
    "\n"
    "A line with a usage mistake stops the batch before anything runs (status 2).\n"
    "Exit status: 0 when every pair ran, 1 when any failed (they are listed), 2 on a\n"
    "usage error, 130 when interrupted.\n";

struct BatchOptions {
  std::string manifest;
  std::optional<std::string> outputDir;
  uint64_t jobs = 0;
  std::optional<uint64_t> seed;
  bool quiet = false;
};

// One pair as it will run and as it ended.
struct Pair {
  int index = 0;  // 1-based, in manifest order
  BatchLine line;
  std::vector<std::string> args;  // compare's arguments, paths resolved
  std::string longArg, shortArg;  // the two sequences as the line names them
  std::string folder;             // its folder's name in the output folder
  pid_t pid = -1;
  int status = -1;  // the exit status, or 128 + the signal
  std::string message;
};

// compare's arguments of a line: inputs from the manifest's folder, the
// default outputs, the batch's seed and a share of the cores.
bool preparePair(Pair& p, const fs::path& base, const BatchOptions& b, unsigned threadsEach, std::string* why) {
  if (!p.line.mistake.empty()) {
    *why = p.line.mistake;
    return false;
  }
  p.args = p.line.words;
  auto resolve = [&base](const std::string& path) {
    if (path.empty() || path == "-" || path[0] == '/') return path;
    return (base / path).lexically_normal().string();
  };
  ComparisonOptions o;
  if (!resolveComparisonInputs(false, p.args, resolve, o, why)) return false;
  if (o.help || o.version) {
    *why = "--help and --version have no place in a manifest";
    return false;
  }
  for (auto [given, out] : {std::pair{&o.report, "report"}, {&o.rows, "rows"}, {&o.result, "result"}}) {
    if (*given) continue;
    p.args.insert(p.args.end(), {std::string("--") + out, std::string(out) + ".txt"});
  }
  p.longArg = o.longPath;
  p.shortArg = o.shortPath;
  if (b.seed && !o.seed) p.args.insert(p.args.end(), {"--seed", std::to_string(*b.seed)});
  if (!o.threads) p.args.insert(p.args.end(), {"--threads", std::to_string(threadsEach)});
  p.args.insert(p.args.begin(), "compare");
  p.folder = pairFolderName(p.index, o.longPath, o.shortPath);
  return true;
}

std::string selfProgram() {
  std::error_code ec;
  const fs::path self = fs::read_symlink("/proc/self/exe", ec);
  return ec ? std::string("/proc/self/exe") : self.string();
}

// Starts compare for p in its folder, its streams in files there.
bool start(Pair& p, const std::string& program, const fs::path& outDir, std::string* why) {
  const fs::path dir = outDir / p.folder;
  std::error_code ec;
  fs::create_directories(dir, ec);
  if (ec) {
    *why = "cannot create " + dir.string() + ": " + ec.message();
    return false;
  }
  // Everything the child needs is made before the fork: after it, only
  // calls that are safe in a forked process.
  const std::string dirText = dir.string(), log = (dir / "log.txt").string(), out = (dir / "stdout.txt").string();
  std::vector<std::string> args = p.args;
  args.insert(args.begin(), "trelvane-cli");
  std::vector<char*> argv;
  for (std::string& a : args) argv.push_back(a.data());
  argv.push_back(nullptr);
  const pid_t pid = ::fork();
  if (pid < 0) {
    *why = std::string("cannot start a process: ") + std::strerror(errno);
    return false;
  }
  if (pid == 0) {
    const int o = ::open(out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    const int e = ::open(log.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    if (o < 0 || e < 0 || ::chdir(dirText.c_str()) != 0 || ::dup2(o, 1) < 0 || ::dup2(e, 2) < 0) ::_exit(126);
    ::execv(program.c_str(), argv.data());
    ::_exit(127);
  }
  p.pid = pid;
  return true;
}

// What a failed pair said: the last line of its log, without the program's name.
std::string failureOf(const Pair& p, const fs::path& outDir) {
  if (p.status == kExitInterrupted || p.status == 128 + SIGINT) return "interrupted";
  if (p.status > 128) return "ended by signal " + std::to_string(p.status - 128);
  std::ifstream in(outDir / p.folder / "log.txt");
  std::string line, last;
  while (std::getline(in, line))
    if (!line.empty() && line.rfind("Try '", 0) != 0) last = line;
  const std::string prefix = std::string(kProgram) + ": ";
  if (last.rfind(prefix, 0) == 0) last.erase(0, prefix.size());
  if (p.status == 127 && last.empty()) return "cannot run " + selfProgram();
  return last.empty() ? "exit status " + std::to_string(p.status) : last;
}

// Drops the files of a pair that stayed empty.
void tidy(const fs::path& dir) {
  for (const char* name : {"log.txt", "stdout.txt"}) {
    std::error_code ec;
    if (fs::file_size(dir / name, ec) == 0 && !ec) fs::remove(dir / name, ec);
  }
}

std::string tsvField(std::string s) {
  for (char& c : s)
    if (c == '\t' || c == '\n' || c == '\r') c = ' ';
  return s;
}

bool writeSummary(const std::vector<Pair>& pairs, const fs::path& outDir, std::string* why) {
  const fs::path path = outDir / "summary.tsv";
  std::ofstream out(path, std::ios::binary);
  out << "pair\tline\tlong\tshort\tstatus\tfolder\tmessage\n";
  for (const Pair& p : pairs) {
    out << p.index << '\t' << p.line.number << '\t' << tsvField(p.longArg) << '\t' << tsvField(p.shortArg) << '\t'
        << (p.status == 0 ? "ok" : "failed") << '\t' << p.folder << '\t' << tsvField(p.message) << '\n';
  }
  out.close();
  if (!out) *why = "cannot write " + path.string();
  return static_cast<bool>(out);
}

std::vector<Option> batchTable(BatchOptions& b) {
  return {
      {"output-dir", 1, [&b](const std::vector<std::string>& v) {
         b.outputDir = v[0];
         return v[0].empty() ? std::string("--output-dir needs a folder name") : std::string();
       }},
      {"jobs", 1, [&b](const std::vector<std::string>& v) {
         const auto n = wholeNumber(v[0], 0, 1024);
         if (!n) return "invalid job count '" + v[0] + "': expected a whole number from 0 (one a core) to 1024";
         b.jobs = *n;
         return std::string();
       }},
      {"seed", 1, [&b](const std::vector<std::string>& v) {
         b.seed = wholeNumber(v[0], 0, UINT64_MAX);
         return b.seed ? std::string()
                       : "invalid seed '" + v[0] + "': expected a whole number from 0 to 18446744073709551615";
       }},
      {"quiet", 0, [&b](const std::vector<std::string>&) {
         b.quiet = true;
         return std::string();
       }},
  };
}

}  // namespace

int runBatch(const std::vector<std::string>& args, const Console& console) {
  BatchOptions b;
  CommandLine line;
  std::string error;
  if (!parseCommandLine(args, batchTable(b), line, &error)) return usageError(console, error, "batch");
  if (line.help || line.version) return helpOrVersion(console, line.help, kBatchHelp);
  if (!checkOperands(line.operands, {"MANIFEST"}, &error)) return usageError(console, error, "batch");
  b.manifest = line.operands[0];

  std::vector<BatchLine> lines;
  if (!readManifest(b.manifest, lines, &error)) return badInput(console, error);
  if (lines.empty()) return badInput(console, "no pair in " + b.manifest + ": nothing to run");

  const unsigned cores = std::max(1u, std::thread::hardware_concurrency());
  const std::size_t jobs = std::min<std::size_t>(b.jobs ? b.jobs : cores, lines.size());
  const unsigned threadsEach = std::max<unsigned>(1, cores / static_cast<unsigned>(jobs));

  // Every line is checked before the first run: a mistake on line 40 must
  // not surface after 39 runs.
  const fs::path base = fs::absolute(b.manifest).parent_path();
  std::vector<Pair> pairs;
  bool mistakes = false;
  for (const BatchLine& l : lines) {
    Pair p;
    p.index = static_cast<int>(pairs.size()) + 1;
    p.line = l;
    if (!preparePair(p, base, b, threadsEach, &error)) {
      std::fprintf(console.err, "%s: %s:%d: %s\n", kProgram, b.manifest.c_str(), l.number, error.c_str());
      mistakes = true;
    }
    pairs.push_back(std::move(p));
  }
  if (mistakes) return usageError(console, "the manifest has mistakes: nothing was run", "batch");

  fs::path outDir = b.outputDir ? fs::path(*b.outputDir)
                                : fs::path(fs::path(b.manifest).stem().string() + "-results");
  std::error_code ec;
  fs::create_directories(outDir, ec);
  if (ec || !fs::is_directory(outDir, ec))
    return badInput(console, "cannot create the output folder " + outDir.string() + ": " +
                                 (ec ? ec.message() : std::string("a file of that name is in the way")));

  const std::string program = selfProgram();
  std::atomic<bool> interrupted{false};
  InterruptGuard guard(interrupted);
  std::map<pid_t, Pair*> running;
  std::size_t next = 0, done = 0;
  bool forwarded = false;
  while (done < pairs.size()) {
    while (!interrupted && running.size() < jobs && next < pairs.size()) {
      Pair& p = pairs[next++];
      if (start(p, program, outDir, &error)) {
        running[p.pid] = &p;
        continue;
      }
      p.status = kExitBadInput;
      p.message = error;
      ++done;
    }
    if (interrupted && !forwarded) {
      // Pairs not started stay so; the running ones stop as compare does.
      for (auto& [pid, p] : running) ::kill(pid, SIGINT);
      forwarded = true;
      done += pairs.size() - next;
      next = pairs.size();
    }
    if (running.empty()) continue;
    int status = 0;
    const pid_t pid = ::waitpid(-1, &status, WNOHANG);
    if (pid <= 0) {
      const timespec pause{0, 20'000'000};
      ::nanosleep(&pause, nullptr);
      continue;
    }
    auto it = running.find(pid);
    if (it == running.end()) continue;
    Pair& p = *it->second;
    running.erase(it);
    ++done;
    p.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    if (p.status != 0) p.message = failureOf(p, outDir);
    tidy(outDir / p.folder);
    if (!b.quiet) {
      std::fprintf(console.err, "%s: [%zu/%zu] %s %s%s%s\n", kProgram, done, pairs.size(), p.folder.c_str(),
                   p.status == 0 ? "ok" : "failed", p.status == 0 ? "" : ": ", p.message.c_str());
      std::fflush(console.err);
    }
  }

  for (Pair& p : pairs)
    if (p.pid < 0 && p.message.empty()) p.message = "not run: interrupted";
  if (!writeSummary(pairs, outDir, &error)) return badInput(console, error);
  if (interrupted) {
    std::fprintf(console.err, "%s: interrupted: %s lists the pairs that ended\n", kProgram,
                 (outDir / "summary.tsv").c_str());
    return kExitInterrupted;
  }
  std::size_t failed = 0;
  for (const Pair& p : pairs) failed += p.status != 0;
  if (failed == 0) return kExitOk;
  std::fprintf(console.err, "%s: %zu of %zu pairs failed:\n", kProgram, failed, pairs.size());
  for (const Pair& p : pairs)
    if (p.status != 0)
      std::fprintf(console.err, "  %s:%d (%s): %s\n", b.manifest.c_str(), p.line.number, p.folder.c_str(),
                   p.message.c_str());
  std::fflush(console.err);
  return kExitBadInput;
}

}  // namespace trelvane::cli
