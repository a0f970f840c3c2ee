// model_option_test.cpp -- --model and --aligned: matrice estimated before the run.
#include <string>

#include "cli_harness.h"

namespace trelvane::cli::testing {
namespace {

std::string maxOf(const std::string& report) { return valueOf(report, "Max="); }

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
  const std::pair<std::vector<std::string>, const char*> rows[] = {
      {{}, "20"},
      {{"--model", "identity"}, "20"},  // identity needs no alignment
      {{"--model", "general", "--aligned", path("a1.txt"), path("a2.txt")}, "5"}};
  for (const auto& [extra, max] : rows) {
    Captured r = run(extra);
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(maxOf(r.out), max);  // a perfect window of 20 at 0.25 a base gives 5
  }
}

TEST_F(ModelOption, UnalignedTextsAndMissingFilesAreBadInput) {
  writeFile(path("a1.txt"), "ACGT\n");
  writeFile(path("a2.txt"), "ACG\n");
  Captured r = run({"--model", "tstv", "--aligned", path("a1.txt"), path("a2.txt")});
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.err.rfind("trelvane-cli: ", 0), 0u);
  EXPECT_EQ(countLines(r.err), 1);
  EXPECT_EQ(r.out, "");
  r = run({"--model", "tstv", "--aligned", path("a1.txt"), path("gone.txt")});
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.err, "trelvane-cli: cannot read " + path("gone.txt") + ": the file does not exist\n");
}

}  // namespace
}  // namespace trelvane::cli::testing
