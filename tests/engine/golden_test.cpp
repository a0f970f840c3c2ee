// golden_test.cpp -- three whole runs on the example sequences, byte for byte against golden outputs.
#include <gtest/gtest.h>

#include <filesystem>

#include "engine_test_util.h"

namespace trelvane {
namespace {

using testing::readBytes;
using testing::readFasta;
using testing::RecordingHost;

const std::string kExamples = TRELVANE_EXAMPLES;
const std::string kGolden = std::string(TRELVANE_TEST_DATA) + "/golden/";

// Runs with the clipboard and the result file on and compares all three
// outputs as whole texts: a mismatch shows the first differing place.
void expectGolden(ComparisonState& st, RunSettings s, const std::string& name) {
  std::filesystem::path path = std::filesystem::temp_directory_path() / ("trelvane_engine_" + name + ".result");
  s.CBClipboard = true;
  s.CBFile = true;
  s.resultPath = path.string();
  RecordingHost host(st);
  RunOutcome out = rumcompute(st, s, host);
  EXPECT_FALSE(out.stopped);
  EXPECT_TRUE(out.resultWritten);
  EXPECT_EQ(out.report, readBytes(kGolden + name + ".report"));
  EXPECT_EQ(host.clipboard, readBytes(kGolden + name + ".rows"));
  EXPECT_EQ(readBytes(path.string()), readBytes(kGolden + name + ".result"));
  std::filesystem::remove(path);
}

TEST(Golden, S1CompareRangePastFilledStart) {
  ComparisonState st;
  testing::openWith(st, readFasta(kExamples + "/HUMHBB.fa"), readFasta(kExamples + "/V00508.fa"));
  expectGolden(st, {.EFAnaFrom = "18001", .EFAnaTo = "22000", .EFSD = "2000", .seed = 1}, "S1");
}

TEST(Golden, S2CpgOnLambda) {
  ComparisonState st;
  st.open();
  testing::setLong(st, readFasta(kExamples + "/lambda.fa"));
  expectGolden(st, {.EFWS = "100", .EFSD = std::to_string(st.nbbases - 100), .CBCPG = true, .seed = 2}, "S2");
}

TEST(Golden, S3ReverseComplementWithShortShown) {
  ComparisonState st;
  testing::openWith(st, readFasta(kExamples + "/HUMHBB.fa", true, true), readFasta(kExamples + "/V00508.fa"));
  expectGolden(st, {.EFWS = "20", .EFAnaTo = "3000", .EFIdentities = "14", .EFSD = "300", .Display1 = true, .seed = 3},
               "S3");
}

}  // namespace
}  // namespace trelvane
