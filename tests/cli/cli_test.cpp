// cli_test.cpp -- trelvane-cli in-process by scripts of calls, with its streams and files; the options as parsed;
// Ctrl-C during a run.
#include <gtest/gtest.h>

#include <grp.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <csignal>
#include <cstring>
#include <iterator>
#include <unistd.h>
#include <set>

#include "cli/cli.h"
#include "cli/commands.h"
#include "cli/options.h"
#include "support/desk.h"

namespace trelvane::testing {
namespace {

std::string lastOut;  // the standard output of the last call

struct Captured {
  int status = -1;
  std::string out, err;
};

// The real program in a child process, as a user runs it: as the
// unprivileged user (where the tests run as root, who reads every file), or
// with a largest file it may write (a disk that fills up), or a copy of it
// standing alone on a machine without a display.
Captured exec(Desk& d, const std::string& how, std::vector<std::string> args) {
  std::string program = TRELVANE_CLI;
  if (how == "alone") {
    std::filesystem::create_directory(d.dir / "alone");
    const std::string alone = (d.dir / "alone" / "trelvane-cli").string();
    std::filesystem::copy_file(program, alone, std::filesystem::copy_options::skip_existing);
    program = alone;
  }
  args.insert(args.begin(), program);
  const std::string out = (d.dir / ".out").string(), err = (d.dir / ".err").string();
  if (const pid_t pid = ::fork(); pid == 0) {
    if (!std::freopen(out.c_str(), "w", stdout) || !std::freopen(err.c_str(), "w", stderr)) ::_exit(120);
    if (how == "alone") {
      for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) ::unsetenv(name);
    } else {
      ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    }
    if (how.rfind("limit", 0) == 0) {
      ::signal(SIGXFSZ, SIG_IGN);  // a write past the limit fails with EFBIG instead
      const rlimit lim{std::stoul(how.substr(5)), std::stoul(how.substr(5))};
      if (::setrlimit(RLIMIT_FSIZE, &lim) != 0) ::_exit(121);
    }
    if (how == "nobody" && ::getuid() == 0 && (::setgroups(0, nullptr) || ::setgid(65534) || ::setuid(65534))) ::_exit(122);
    std::vector<char*> argv;
    for (std::string& a : args) argv.push_back(a.data());
    argv.push_back(nullptr);
    ::execv(argv[0], argv.data());
    ::_exit(127);
  } else {
    int status = 0;
    ::waitpid(pid, &status, 0);
    Captured r{WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), "", ""};
    for (auto [name, text] : {std::pair{out, &r.out}, {err, &r.err}}) {
      std::ifstream in(name, std::ios::binary);
      *text = std::string(std::istreambuf_iterator<char>(in), {});
      std::filesystem::remove(name);
    }
    return r;
  }
}

// Runs the program (or, with a hook, compare directly; or, with how, the real
// program as exec does) on the arguments, "''" an empty one.
Captured call(Desk& d, const std::string& line, bool terminal = false, const cli::DoEventsHook& hook = {},
              const std::string& how = "") {
  std::vector<std::string> args;
  std::istringstream words(line);
  for (std::string w; words >> w;) {
    for (auto [mark, root] : {std::pair{"$DIR", d.dir.string()}, {"@data", std::string(TRELVANE_TEST_DATA)},
                              {"@examples", std::string(TRELVANE_EXAMPLES)}})
      for (std::size_t at; (at = w.find(mark)) != std::string::npos;) w.replace(at, std::strlen(mark), root);
    args.push_back(w == "''" ? "" : w);
  }
  if (!how.empty()) return exec(d, how, args);
  cli::Console c{std::tmpfile(), std::tmpfile(), terminal};
  Captured r;
  r.status = hook ? cli::runComparison(false, std::vector(args.begin() + 1, args.end()), c, hook) : cli::cliMain(args, c);
  for (auto [f, text] : {std::pair{c.out, &r.out}, {c.err, &r.err}}) {
    std::rewind(f);
    for (int ch; (ch = std::fgetc(f)) != EOF;) *text += static_cast<char>(ch);
    std::fclose(f);
  }
  return r;
}

// A text in lines, each behind a prefix.
void lines(std::ostream& out, const std::string& prefix, const std::string& text) {
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) out << prefix << cases::escaped(line, true) << "\n";
  if (!text.empty() && text.back() != '\n') out << prefix << "(no line end)\n";
}

void report(std::ostream& out, const Captured& r, bool listOut = true) {
  lastOut = r.out;
  out << "  status " << r.status << "\n";
  if (listOut) lines(out, "  out| ", r.out);
  else out << "  out: " << r.out.size() << " bytes\n";
  lines(out, "  err| ", r.err);
}

// A file, "-" the last standard output, "A+B" two files one after the other.
std::string read(Desk& d, const std::string& name) {
  if (name == "-") return lastOut;
  if (name.find('+') != std::string::npos)
    return read(d, name.substr(0, name.find('+'))) + read(d, name.substr(name.find('+') + 1));
  std::ifstream in(d.path(name), std::ios::binary);
  return in ? std::string(std::istreambuf_iterator<char>(in), {}) : "(no file)";
}

const std::map<std::string, Step> kSteps = {
    {"run", [](Desk& d, const std::string& v, std::ostream& out) { report(out, call(d, v)); }},
    // the same, its standard output counted, not listed
    {"runq", [](Desk& d, const std::string& v, std::ostream& out) { report(out, call(d, v), false); }},
    // the real program; as the unprivileged user; standing alone; with a largest file of BYTES
    {"exec", [](Desk& d, const std::string& v, std::ostream& out) { report(out, call(d, v, false, {}, "plain")); }},
    {"execq", [](Desk& d, const std::string& v, std::ostream& out) { report(out, call(d, v, false, {}, "plain"), false); }},
    {"exec-nobody", [](Desk& d, const std::string& v, std::ostream& out) { report(out, call(d, v, false, {}, "nobody")); }},
    {"exec-alone", [](Desk& d, const std::string& v, std::ostream& out) { report(out, call(d, v, false, {}, "alone")); }},
    {"exec-limit", [](Desk& d, const std::string& v, std::ostream& out) {
       report(out, call(d, v.substr(v.find(' ') + 1), false, {}, "limit" + v.substr(0, v.find(' '))));
     }},
    // a file the owner only may read, or a folder everyone may only read
    {"chmod", [](Desk& d, const std::string& v, std::ostream&) {
       std::filesystem::permissions(d.path(v.substr(v.find(' ') + 1)), static_cast<std::filesystem::perms>(std::stoi(v, nullptr, 8)));
     }},
    // with standard error a terminal
    {"tty", [](Desk& d, const std::string& v, std::ostream& out) { report(out, call(d, v, true)); }},
    // compare with a stop asked at the Nth DoEvents of the run (0 never), and the count of them
    {"stop", [](Desk& d, const std::string& v, std::ostream& out) {
       int calls = 0, at = std::stoi(v);
       report(out, call(d, v.substr(v.find(' ') + 1), false, [&](ComparisonState& st) {
                if (++calls == at) st.askclose = true;
              }));
       out << "  DoEvents " << calls << "\n";
     }},
    // a FASTA file of one record, 60 letters a line
    {"fasta", [](Desk& d, const std::string& v, std::ostream&) {
       static std::string before;  // the letters of the file before, for "long:FROM:LEN"
       const std::string name = v.substr(0, v.find(' ')), bases = cases::pieces(v.substr(v.find(' ') + 1), before);
       before = bases;
       std::ofstream file(d.path(name), std::ios::binary);
       file << ">" << name << "\n";
       for (std::size_t i = 0; i < bases.size(); i += 60) file << bases.substr(i, 60) << "\n";
     }},
    {"saveout", [](Desk& d, const std::string& v, std::ostream&) { std::ofstream(d.path(v), std::ios::binary) << lastOut; }},
    {"cat", [](Desk& d, const std::string& v, std::ostream& out) { lines(out, "  | ", read(d, v)); }},
    {"head", [](Desk& d, const std::string& v, std::ostream& out) {
       lines(out, "  | ", read(d, v.substr(v.find(' ') + 1)).substr(0, std::stoul(v)));
     }},
    {"same", [](Desk& d, const std::string& v, std::ostream& out) {
       const std::string a = read(d, v.substr(0, v.find(' '))), b = read(d, v.substr(v.find(' ') + 1));
       show(out, a == b ? "same" : "differ at byte " + std::to_string(std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first - a.begin()));
     }},
    // the lines of a file (or "-") that hold the pattern
    {"grep", [](Desk& d, const std::string& v, std::ostream& out) {
       std::istringstream in(read(d, v.substr(0, v.find(' '))));
       for (std::string line; std::getline(in, line);)
         if (line.find(v.substr(v.find(' ') + 1)) != std::string::npos) out << "  | " << cases::escaped(line, true) << "\n";
     }},
    // staging files of this process left in the temporary folder
    {"staged", [](Desk&, const std::string&, std::ostream& out) {
       int left = 0;
       for (const auto& e : std::filesystem::directory_iterator(std::filesystem::temp_directory_path()))
         left += e.path().filename().string().find("trelvane-cli-result.trelvane-" + std::to_string(::getpid())) != std::string::npos;
       show(out, std::to_string(left));
     }},
    // the names in the case's folder, or in a folder of it
    {"ls", [](Desk& d, const std::string& v, std::ostream& out) {
       std::set<std::string> names;
       std::error_code ec;
       for (const auto& e : std::filesystem::directory_iterator(v.empty() ? d.dir : std::filesystem::path(d.path(v)), ec))
         names.insert(e.path().filename().string());
       std::string all;
       for (const std::string& n : names) all += n + " ";
       show(out, all);
     }},
};

class Cli : public ::testing::TestWithParam<cases::Case> {};

TEST_P(Cli, GivesItsTranscript) { cases::expectTranscript(GetParam(), runDesk(GetParam(), kSteps), false); }

INSTANTIATE_TEST_SUITE_P(, Cli, ::testing::ValuesIn(cases::readCases(TRELVANE_TEST_DATA "/cli/cli.cases")), cases::caseName);
// Records and regions of plain and compressed FASTA files.
INSTANTIATE_TEST_SUITE_P(Region, Cli, ::testing::ValuesIn(cases::readCases(TRELVANE_TEST_DATA "/cli/regions.cases")), cases::caseName);
// The rows of bad input and bad destinations of docs/robustness.md, on the program itself.
INSTANTIATE_TEST_SUITE_P(BadInput, Cli, ::testing::ValuesIn(cases::readCases(TRELVANE_TEST_DATA "/cli/bad_input.cases")),
                         cases::caseName);

INSTANTIATE_TEST_SUITE_P(Stack, Cli, ::testing::ValuesIn(cases::readCases(TRELVANE_TEST_DATA "/cli/stack.cases")),
                         cases::caseName);
INSTANTIATE_TEST_SUITE_P(Batch, Cli, ::testing::ValuesIn(cases::readCases(TRELVANE_TEST_DATA "/cli/batch.cases")),
                         cases::caseName);

// The row kernel and the thread count change no byte of the outputs: only their fields show them.
TEST(ComparisonOptions, KernelAndThreadsReachTheirFields) {
  cli::ComparisonOptions o;
  std::string error;
  ASSERT_TRUE(parseComparisonOptions(false, {"L", "S", "--kernel", "scalar", "--threads=1"}, o, &error)) << error;
  EXPECT_TRUE(o.kernel == "scalar" && o.threads == 1);
  ASSERT_TRUE(parseComparisonOptions(true, {"L", "--kernel=generic", "--threads", "0"}, o, &error)) << error;
  EXPECT_TRUE(o.kernel == "generic" && o.threads == 0);
}

TEST(Interrupt, StopsTheRunWithoutAnyOutput) {
  Desk d;
  std::ofstream(d.path("o.txt")) << "an earlier result\n";
  int calls = 0;
  const Captured r = call(d, "compare @examples/HUMHBB.fa @examples/V00508.fa --to 300 --seed 5 --result $DIR/o.txt "
                             "--rows $DIR/w.txt --report $DIR/r.txt", false, [&](ComparisonState&) {
    if (++calls == 5) std::raise(SIGINT);
  });
  EXPECT_EQ(r.status, 130);
  EXPECT_EQ(r.err, "trelvane-cli: interrupted: the run was stopped, no output written\n");
  EXPECT_EQ(calls, 6);  // as a Stop: resampling 0 is still scanned, the stop seen at resampling 1
  struct sigaction now {};
  ::sigaction(SIGINT, nullptr, &now);
  EXPECT_EQ(now.sa_handler, SIG_DFL);  // the default action is back
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(d.dir), {}), 1);  // no staging file either
  EXPECT_EQ(read(d, "o.txt"), "an earlier result\n");
}

}  // namespace
}  // namespace trelvane::testing
