// golden_test.cpp -- the golden runs S1 to S3, byte for byte, through trelvane-cli in-process.
#include <string>
#include <vector>

#include "cli_harness.h"

namespace trelvane::cli::testing {
namespace {

const std::string kExamples = TRELVANE_EXAMPLES;
const std::string kGolden = std::string(TRELVANE_TEST_DATA) + "/golden/";

class GoldenRun : public CliTest {
 protected:
  // Runs the command with the three outputs into the test's folder and
  // compares each with its golden file.
  void expectGolden(const std::string& name, std::vector<std::string> args) {
    for (const char* kind : {"report", "rows", "result"}) {
      args.push_back(std::string("--") + kind);
      args.push_back(path(name + "." + kind));
    }
    Captured r = runCli(args);
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(r.err, "");
    for (const char* kind : {"report", "rows", "result"}) {
      std::string want = readFile(kGolden + name + "." + kind);
      std::string got = readFile(path(name + "." + kind));
      ASSERT_FALSE(want.empty()) << name << "." << kind;
      EXPECT_EQ(got.size(), want.size()) << name << "." << kind;
      EXPECT_TRUE(got == want) << name << "." << kind << " differs from the golden file";
    }
  }
};

TEST_F(GoldenRun, S1RangePastTheFilledStart) {
  expectGolden("S1", {"compare", kExamples + "/HUMHBB.fa", kExamples + "/V00508.fa", "--from",
                      "18001", "--to", "22000", "--seed", "1", "--resamplings", "2000"});
}

TEST_F(GoldenRun, S2CpgOnLambda) {
  expectGolden("S2", {"cpg", kExamples + "/lambda.fa", "--window", "100", "--seed", "2"});
}

TEST_F(GoldenRun, S3ReverseComplementShownShortAlignmentsListed) {
  expectGolden("S3", {"compare", kExamples + "/HUMHBB.fa", kExamples + "/V00508.fa",
                      "--long-reverse", "--long-complement", "--window", "20", "--to", "3000",
                      "--seed", "3", "--resamplings", "300", "--show-short", "--identities",
                      "14"});
}

}  // namespace
}  // namespace trelvane::cli::testing
