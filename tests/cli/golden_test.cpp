// golden_test.cpp -- the golden runs S1 to S3, byte for byte, through trelvane-cli in-process.
#include <string>
#include <vector>

#include "cli_harness.h"

namespace trelvane::cli::testing {
namespace {

const std::string kExamples = TRELVANE_EXAMPLES;

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
      std::string want = readFile(goldenFile(name + "." + kind));
      ASSERT_FALSE(want.empty()) << name << "." << kind;
      EXPECT_TRUE(readFile(path(name + "." + kind)) == want) << name << "." << kind << " differs from the golden file";
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
  expectGolden("S3", s3Args());
}

}  // namespace
}  // namespace trelvane::cli::testing
