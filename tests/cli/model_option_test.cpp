// model_option_test.cpp -- --model and --aligned: matrice estimated before the run.
#include <string>

#include "cli_harness.h"

namespace trelvane::cli::testing {
namespace {

std::string maxOf(const std::string& report) {
  std::size_t at = report.find("\nMax=");
  if (at == std::string::npos) return "<no Max=>";
  return report.substr(at + 5, report.find('\n', at + 1) - at - 5);
}

class ModelOption : public CliTest {
 protected:
  void SetUp() override {
    CliTest::SetUp();
    std::string bases = pseudoBases(100, 21);
    longPath_ = fasta("long.fa", bases);
    shortPath_ = fasta("short.fa", bases.substr(30, 40));
  }
  Captured run(std::vector<std::string> extra) {
    std::vector<std::string> args = {"compare", longPath_, shortPath_, "--window", "20",
                                     "--seed", "1", "--report", "-"};
    args.insert(args.end(), extra.begin(), extra.end());
    return runCli(args);
  }
  std::string longPath_, shortPath_;
};

TEST_F(ModelOption, GeneralModelOfIdenticalTextsScoresAQuarterPerBase) {
  // Aligned files as pasted: title lines left out, lines joined.
  writeFile(path("a1.txt"), ">one\nAC\nGT\n");
  writeFile(path("a2.txt"), "%two\nACGT\n");
  Captured identity = run({});
  Captured general = run({"--model", "general", "--aligned", path("a1.txt"), path("a2.txt")});
  ASSERT_EQ(identity.status, 0) << identity.err;
  ASSERT_EQ(general.status, 0) << general.err;
  EXPECT_EQ(maxOf(identity.out), "20");
  EXPECT_EQ(maxOf(general.out), "5");  // a perfect window of 20 at 0.25 a base
}

TEST_F(ModelOption, IdentityNeedsNoAlignment) {
  Captured r = run({"--model", "identity"});
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(maxOf(r.out), "20");
}

TEST_F(ModelOption, UnalignedTextsAreBadInput) {
  writeFile(path("a1.txt"), "ACGT\n");
  writeFile(path("a2.txt"), "ACG\n");
  Captured r = run({"--model", "tstv", "--aligned", path("a1.txt"), path("a2.txt")});
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.err.rfind("trelvane-cli: ", 0), 0u);
  EXPECT_EQ(countLines(r.err), 1);
  EXPECT_EQ(r.out, "");
}

TEST_F(ModelOption, MissingAlignedFileIsBadInput) {
  writeFile(path("a1.txt"), "ACGT\n");
  Captured r = run({"--model", "tstv", "--aligned", path("a1.txt"), path("gone.txt")});
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.err, "trelvane-cli: cannot read " + path("gone.txt") + ": the file does not exist\n");
}

}  // namespace
}  // namespace trelvane::cli::testing
