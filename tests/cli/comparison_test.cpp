// comparison_test.cpp -- compare and cpg end to end: exit statuses, field order, '-', progress, Ctrl-C.
#include <csignal>
#include <string>
#include <vector>

#include "cli_harness.h"

namespace trelvane::cli::testing {
namespace {

// The number of resamplings, as the histogram of a result block counts them:
// the W + 1 lines "bin TAB count" right behind "Bases1=".
double histogramTotal(const std::string& block) {
  std::vector<std::string> ls = lines(block);
  int window = std::stoi(valueOf(block, "Window size="));
  for (std::size_t k = 0; k < ls.size(); ++k) {
    if (ls[k].rfind("Bases1=", 0) != 0) continue;
    double total = 0;
    for (int b = 0; b <= window; ++b) {
      const std::string& row = ls.at(k + 1 + static_cast<std::size_t>(b));
      std::size_t tab = row.find('\t');
      EXPECT_EQ(row.substr(0, tab), std::to_string(b));
      total += std::stod(row.substr(tab + 1));
    }
    return total;
  }
  ADD_FAILURE() << "no Bases1= line";
  return -1;
}

class Compare : public CliTest {
 protected:
  void SetUp() override {
    CliTest::SetUp();
    longSeq_ = pseudoBases(200, 7);
    longPath_ = fasta("long.fa", longSeq_);
    // A stretch of the long sequence with a few changes: real similarity.
    std::string s = longSeq_.substr(40, 60);
    s[10] = s[10] == 'A' ? 'C' : 'A';
    s[35] = s[35] == 'G' ? 'T' : 'G';
    shortPath_ = fasta("short.fa", s);
  }
  std::string longSeq_, longPath_, shortPath_;
};

// exit statuses: bad input exits 1 with one line, a bad option 2, and no output is written

TEST_F(Compare, FailuresExitBeforeAnyOutput) {
  std::string longer = fasta("longer.fa", pseudoBases(300, 3));
  std::string stored = path("stored.txt");
  writeFile(stored, "TRELVANE COMPARISON\nWindow size=30\n#\n");
  std::string allN = fasta("alln.fa", std::string(120, 'N'));
  std::string shortN = fasta("shortn.fa", "NNNNUUUUNNNN");
  std::string empty = path("empty.fa");
  writeFile(empty, ">nothing here\n");
  auto noBase = [](const std::string& file) {
    return "trelvane-cli: " + file + " holds no base (A, C, G or T): nothing to compare\n";
  };
  struct Case {
    std::vector<std::string> args;
    int status;
    std::string err;  // the whole of it; with status 2 its first line
  };
  const Case cases[] = {
      {{"compare", path("nothere.fa"), shortPath_},
       1, "trelvane-cli: cannot read " + path("nothere.fa") + ": the file does not exist\n"},
      {{"compare", longPath_, longer},
       1, "trelvane-cli: " + longer + ": short sequence longer than long sequence ! (300 bases against 200 in " +
              longPath_ + ")\n"},
      {{"compare", longPath_, stored},
       1, "trelvane-cli: " + stored + " is a stored result, not a sequence: draw it with 'trelvane-cli redraw'\n"},
      {{"compare", longPath_, shortPath_, "--rows", path("no/such/rows.txt")},
       1, "trelvane-cli: cannot write " + path("no/such/rows.txt") + ": the folder " + path("no/such") +
              " does not exist\n"},
      {{"compare", allN, shortPath_}, 1, noBase(allN)},
      {{"compare", longPath_, shortN}, 1, noBase(shortN)},
      {{"cpg", allN}, 1, noBase(allN)},
      {{"cpg", empty}, 1, noBase(empty)},
      {{"compare", longPath_, shortPath_, "--windw", "20"}, 2, "trelvane-cli: unrecognized option '--windw'\n"},
  };
  for (const Case& c : cases) {
    std::vector<std::string> args = c.args;
    args.insert(args.end(), {"--report", path("r.txt"), "--result", path("o.txt")});
    Captured r = runCli(args);
    EXPECT_EQ(r.status, c.status) << c.err;
    EXPECT_EQ(r.out, "");
    if (c.status == 2) {
      EXPECT_EQ(countLines(r.err), 2);
      EXPECT_EQ(r.err.rfind(c.err, 0), 0u) << r.err;
    } else {
      EXPECT_EQ(r.err, c.err);
    }
    EXPECT_FALSE(fs::exists(path("r.txt"))) << c.err;
    EXPECT_FALSE(fs::exists(path("o.txt"))) << c.err;
  }
}

TEST_F(Compare, EqualLengthsPassTheLengthCheck) {
  std::string same = fasta("same.fa", pseudoBases(200, 3));
  Captured r = runCli({"compare", longPath_, same, "--seed", "1", "--report", path("r.txt")});
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(valueOf(readFile(path("r.txt")), "Bases1="), "200");
}

// field order

TEST_F(Compare, WindowIsClippedByTheShortSequenceThenLimitedTo255) {
  std::string longer = fasta("l2.fa", pseudoBases(400, 11)), shorter = fasta("s2.fa", pseudoBases(300, 12));
  for (auto [longFile, shortFile, typed, window] :
       {std::tuple{longPath_, shortPath_, "100", "60"}, std::tuple{longer, shorter, "300", "255"}}) {
    Captured r = runCli({"compare", longFile, shortFile, "--window", typed, "--seed", "4", "--resamplings", "3",
                         "--report", path("r.txt")});
    ASSERT_EQ(r.status, 0) << r.err;
    std::string report = readFile(path("r.txt"));
    EXPECT_EQ(valueOf(report, "Window size="), window);
    // litshort clipped EFWS before the run, which had nothing to clamp.
    EXPECT_EQ(report.find("Window size resizes to"), std::string::npos);
  }
}

TEST_F(Compare, ResamplingsFollowTheFieldsThatWroteThemLast) {
  struct Case {
    std::vector<std::string> extra;
    double resamplings;
  };
  const Case cases[] = {
      {{}, 200 - 30},                           // litlongue: bases less the window
      {{"--window", "25"}, 200 - 25},           // the window typed before the read
      {{"--from", "11"}, 200 - 11},             // EFAnaFrom's change handler, EFTo at "max"
      {{"--to", "50"}, 50 - 1},                 // EFAnaTo's change handler
      {{"--from", "1", "--to", "max"}, 170},    // unchanged texts run no handler
      {{"--to", "50", "--resamplings", "7"}, 7},  // typed last, kept
  };
  for (const Case& c : cases) {
    std::vector<std::string> args = {"compare", longPath_, shortPath_, "--seed", "9",
                                     "--result", path("o.txt")};
    args.insert(args.end(), c.extra.begin(), c.extra.end());
    Captured r = runCli(args);
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(histogramTotal(readFile(path("o.txt"))), c.resamplings)
        << ::testing::PrintToString(c.extra);
  }
}

TEST_F(Compare, ReaderOptionsReachTheirSideOnly) {
  // The short sequence is the reverse complement of a stretch of the long
  // one: only --short-reverse --short-complement brings back full identity.
  std::string stretch = longSeq_.substr(100, 50);
  std::string rc;
  for (auto it = stretch.rbegin(); it != stretch.rend(); ++it)
    rc += *it == 'A' ? 'T' : *it == 'T' ? 'A' : *it == 'C' ? 'G' : 'C';
  std::string rcPath = fasta("rc.fa", rc);
  Captured plain = runCli({"compare", longPath_, rcPath, "--window", "50", "--seed", "1",
                           "--report", path("plain.txt")});
  Captured turned = runCli({"compare", longPath_, rcPath, "--window", "50", "--seed", "1",
                            "--short-reverse", "--short-complement", "--report",
                            path("turned.txt")});
  ASSERT_EQ(plain.status, 0) << plain.err;
  ASSERT_EQ(turned.status, 0) << turned.err;
  EXPECT_NE(valueOf(readFile(path("plain.txt")), "Max="), "50");
  EXPECT_EQ(valueOf(readFile(path("turned.txt")), "Max="), "50");
}

TEST_F(Compare, SameSeedSameBytesOtherSeedOtherH0) {
  std::vector<std::string> base = {"compare", longPath_, shortPath_, "--resamplings", "40"};
  auto run = [&](const std::string& seed, const std::string& out) {
    std::vector<std::string> args = base;
    args.insert(args.end(), {"--seed", seed, "--result", path(out)});
    EXPECT_EQ(runCli(args).status, 0);
    return readFile(path(out));
  };
  std::string a = run("5", "a.txt"), b = run("5", "b.txt"), c = run("6", "c.txt");
  EXPECT_EQ(a, b);
  EXPECT_EQ(valueOf(a, "Mean="), valueOf(c, "Mean="));  // the scan has no chance in it
  EXPECT_NE(valueOf(a, "Mean H0="), valueOf(c, "Mean H0="));
}

// standard output

TEST_F(Compare, DashWritesEachOutputToStandardOutput) {
  std::vector<std::string> base = {"compare", longPath_, shortPath_, "--seed", "5"};
  for (const char* kind : {"--report", "--rows", "--result"}) {
    std::vector<std::string> toFile = base, toOut = base;
    toFile.insert(toFile.end(), {kind, path("file.txt")});
    toOut.insert(toOut.end(), {kind, "-"});
    Captured f = runCli(toFile);
    Captured o = runCli(toOut);
    ASSERT_EQ(f.status, 0) << f.err;
    ASSERT_EQ(o.status, 0) << o.err;
    EXPECT_EQ(f.out, "") << kind;
    EXPECT_EQ(o.err, "") << kind;
    std::string want = readFile(path("file.txt"));
    EXPECT_FALSE(want.empty()) << kind;
    EXPECT_EQ(o.out, want) << kind;
  }
  // The result went through a staging file; none is left behind.
  for (const auto& entry : fs::directory_iterator(fs::temp_directory_path()))
    EXPECT_EQ(entry.path().filename().string().find(
                  "trelvane-cli-result.trelvane-" + std::to_string(::getpid())),
              std::string::npos);
}

TEST_F(Compare, OutputsToStandardOutputFollowAFixedOrder) {
  std::vector<std::string> base = {"compare", longPath_, shortPath_, "--seed", "5"};
  std::vector<std::string> all = base, files = base;
  all.insert(all.end(), {"--result", "-", "--report", "-"});
  files.insert(files.end(), {"--result", path("o.txt"), "--report", path("r.txt")});
  Captured a = runCli(all);
  ASSERT_EQ(a.status, 0) << a.err;
  ASSERT_EQ(runCli(files).status, 0);
  EXPECT_EQ(a.out, readFile(path("r.txt")) + readFile(path("o.txt")));
}

// progress

TEST_F(Compare, ProgressGoesToATerminalOnlyAndNotWithQuiet) {
  std::vector<std::string> args = {"compare", longPath_, shortPath_, "--seed", "5",
                                   "--report", "-"};
  Captured tty = runCli(args, true);
  ASSERT_EQ(tty.status, 0);
  for (const char* stage : {"\r\033[KShow sequences", "\r\033[KComputing...",
                            "\r\033[KEstimate of SD", "\r\033[KWriting the output...",
                            "\r\033[KEnd..."})
    EXPECT_NE(tty.err.find(stage), std::string::npos) << stage;
  EXPECT_NE(tty.err.find("] 100%"), std::string::npos);
  EXPECT_EQ(tty.err.back(), '\n');

  std::vector<std::string> quiet = args;
  quiet.push_back("--quiet");
  Captured q = runCli(quiet, true);
  Captured pipe = runCli(args, false);
  EXPECT_EQ(q.err, "");
  EXPECT_EQ(pipe.err, "");
  // Progress never touches the outputs.
  EXPECT_EQ(tty.out, q.out);
  EXPECT_EQ(tty.out, pipe.out);
}

// Ctrl-C

TEST_F(Compare, InterruptStopsTheRunWithoutResultFile) {
  writeFile(path("o.txt"), "an earlier result\n");
  int calls = 0;
  Captured r = runWithHook(
      false,
      {longPath_, shortPath_, "--seed", "5", "--result", path("o.txt"), "--rows", path("w.txt"),
       "--report", path("r.txt")},
      [&](ComparisonState&) {
        if (++calls == 5) std::raise(SIGINT);
      });
  EXPECT_EQ(r.status, 130);
  EXPECT_EQ(r.err, "trelvane-cli: interrupted: the run was stopped, no output written\n");
  EXPECT_EQ(readFile(path("o.txt")), "an earlier result\n");
  EXPECT_FALSE(fs::exists(path("w.txt")));
  EXPECT_FALSE(fs::exists(path("r.txt")));
  // As a Stop: the scan ends at its next stop test, resampling 0 is still
  // scanned, and the stop is seen at resampling 1.
  EXPECT_EQ(calls, 6);
  // The default action of SIGINT is back.
  struct sigaction now {};
  ::sigaction(SIGINT, nullptr, &now);
  EXPECT_EQ(now.sa_handler, SIG_DFL);
  // The staging file of the result is gone.
  for (const auto& entry : fs::directory_iterator(dir_))
    EXPECT_EQ(entry.path().filename().string().find(".part"), std::string::npos);
}

TEST_F(Compare, StopDuringTheRandomScanAlsoEndsWith130) {
  int calls = 0;
  Captured r = runWithHook(false, {longPath_, shortPath_, "--seed", "5", "--result", path("o.txt")},
                           [&](ComparisonState& st) {
                             // Past the 170 positions: inside the resamplings.
                             if (++calls == 200) st.askclose = true;
                           });
  EXPECT_EQ(r.status, 130);
  EXPECT_FALSE(fs::exists(path("o.txt")));
}

TEST_F(Compare, HookThatNeverStopsSeesEveryPositionAndResampling) {
  int calls = 0;
  Captured r = runWithHook(false, {longPath_, shortPath_, "--seed", "5", "--to", "99",
                                   "--resamplings", "10", "--result", path("o.txt")},
                           [&](ComparisonState&) { ++calls; });
  ASSERT_EQ(r.status, 0) << r.err;
  // Positions 1 to 99 after the first, resamplings 1 to 9.
  EXPECT_EQ(calls, 99 + 9);
  EXPECT_TRUE(fs::exists(path("o.txt")));
}

// cpg

TEST_F(Compare, CpgNeedsNoShortSequence) {
  Captured r = runCli({"cpg", longPath_, "--window", "20", "--seed", "1", "--report", "-"});
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(valueOf(r.out, "Window size="), "20");
  EXPECT_EQ(valueOf(r.out, "Bases="), "200");
  EXPECT_EQ(valueOf(r.out, "Bases1="), "0");
  EXPECT_EQ(valueOf(r.out, "Mean H0="), "NaN");
}

}  // namespace
}  // namespace trelvane::cli::testing
