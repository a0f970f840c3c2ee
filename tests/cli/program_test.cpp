// program_test.cpp -- the command dispatch: GNU --help and --version, usage errors.
#include <string>

#include "cli_harness.h"

namespace trelvane::cli::testing {
namespace {

TEST(Program, HelpGoesToStandardOutput) {
  Captured r = runCli({"--help"});
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.out.rfind("Usage: trelvane-cli COMMAND", 0), 0u) << r.out;
  EXPECT_NE(r.out.find("  compare LONG SHORT"), std::string::npos);
  EXPECT_NE(r.out.find("  cpg LONG"), std::string::npos);
  EXPECT_EQ(r.err, "");
}

TEST(Program, VersionIsTheProjectVersion) {
  for (std::vector<std::string> args : {std::vector<std::string>{"--version"},
                                        {"compare", "--version", "--frobnicate"},
                                        {"cpg", "x.fa", "--version"}}) {
    Captured r = runCli(args);
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.out, std::string("trelvane-cli (Trelvane) ") + TRELVANE_VERSION + "\n");
    EXPECT_EQ(r.err, "");
  }
}

TEST(Program, CommandHelpNeedsNoFiles) {
  for (const char* command : {"compare", "cpg"}) {
    Captured r = runCli({command, "--help"});
    EXPECT_EQ(r.status, 0) << command;
    EXPECT_NE(r.out.find("  --window N"), std::string::npos) << command;
    EXPECT_EQ(r.err, "") << command;
  }
}

TEST(Program, UsageErrorsExitTwoWithAPointerToHelp) {
  struct Case {
    std::vector<std::string> args;
    std::string first;
  };
  const Case cases[] = {
      {{}, "trelvane-cli: missing command"},
      {{"comapre", "a", "b"}, "trelvane-cli: unknown command 'comapre'"},
      {{"--verbose"}, "trelvane-cli: unrecognized option '--verbose'"},
      {{"compare", "a.fa"}, "trelvane-cli: missing SHORT sequence file"},
      {{"cpg", "a.fa", "--window"}, "trelvane-cli: option '--window' requires an argument"},
  };
  for (const Case& c : cases) {
    Captured r = runCli(c.args);
    EXPECT_EQ(r.status, 2) << c.first;
    EXPECT_EQ(r.err, c.first + "\nTry 'trelvane-cli --help' for more information.\n");
    EXPECT_EQ(r.out, "");
  }
}

}  // namespace
}  // namespace trelvane::cli::testing
