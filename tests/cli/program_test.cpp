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
    std::string first, help;
  };
  // the same words for the same mistake in every command, and its own --help
  const Case cases[] = {
      {{}, "trelvane-cli: missing command", "trelvane-cli"},
      {{"comapre", "a", "b"}, "trelvane-cli: unknown command 'comapre'", "trelvane-cli"},
      {{"--verbose"}, "trelvane-cli: unrecognized option '--verbose'", "trelvane-cli"},
      {{"compare", "a.fa"}, "trelvane-cli: missing operand: SHORT", "trelvane-cli compare"},
      {{"cpg", "a.fa", "--window"}, "trelvane-cli: option '--window' requires an argument", "trelvane-cli cpg"},
      {{"redraw", "r.txt", "--verbose"}, "trelvane-cli: unrecognized option '--verbose'", "trelvane-cli redraw"},
      {{"redraw", "r.txt", "s.txt"}, "trelvane-cli: extra operand 's.txt'", "trelvane-cli redraw"},
      {{"check-update", "x"}, "trelvane-cli: extra operand 'x'", "trelvane-cli check-update"},
      {{"check-update", "-v"}, "trelvane-cli: invalid option -- 'v'", "trelvane-cli check-update"},
      {{"check-update", "--site"}, "trelvane-cli: option '--site' requires an argument", "trelvane-cli check-update"},
  };
  for (const Case& c : cases) {
    Captured r = runCli(c.args);
    EXPECT_EQ(r.status, 2) << c.first;
    EXPECT_EQ(r.err, c.first + "\nTry '" + c.help + " --help' for more information.\n");
    EXPECT_EQ(r.out, "");
  }
}

}  // namespace
}  // namespace trelvane::cli::testing
