// golden_test.cpp -- three whole runs on the example sequences, byte for byte against golden outputs.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>

#include "engine_test_util.h"

namespace trelvane {
namespace {

using testing::readBytes;
using testing::readFasta;
using testing::RecordingHost;
using testing::rowsOf;

const std::string kExamples = TRELVANE_EXAMPLES;
const std::string kGolden = std::string(TRELVANE_TEST_DATA) + "/golden/";

struct GoldenRun {
  std::string report, clipboard, result;
};

GoldenRun runGolden(ComparisonState& st, RunSettings s, const std::string& name) {
  std::filesystem::path path = std::filesystem::temp_directory_path() / ("trelvane_engine_" + name + ".result");
  s.CBClipboard = true;
  s.CBFile = true;
  s.resultPath = path.string();
  RecordingHost host(st);
  RunOutcome out = rumcompute(st, s, host);
  EXPECT_FALSE(out.stopped);
  EXPECT_TRUE(out.resultWritten);
  GoldenRun g{out.report, host.clipboard, readBytes(path.string())};
  std::filesystem::remove(path);
  return g;
}

void expectGolden(const GoldenRun& g, const std::string& name) {
  // Compared as whole texts: a mismatch shows the first differing place.
  EXPECT_EQ(g.report, readBytes(kGolden + name + ".report"));
  EXPECT_EQ(g.clipboard, readBytes(kGolden + name + ".rows"));
  EXPECT_EQ(g.result, readBytes(kGolden + name + ".result"));
}

TEST(Golden, S1CompareRangePastFilledStart) {
  ComparisonState st;
  testing::openWith(st, readFasta(kExamples + "/HUMHBB.fa"), readFasta(kExamples + "/V00508.fa"));
  RunSettings s;
  s.EFAnaFrom = "18001";
  s.EFAnaTo = "22000";
  s.EFSD = "2000";
  s.seed = 1;
  expectGolden(runGolden(st, s, "S1"), "S1");
}

TEST(Golden, S2CpgOnLambda) {
  ComparisonState st;
  st.open();
  testing::setLong(st, readFasta(kExamples + "/lambda.fa"));
  RunSettings s;
  s.CBCPG = true;
  s.EFWS = "100";
  s.EFSD = std::to_string(st.nbbases - 100);
  s.seed = 2;
  expectGolden(runGolden(st, s, "S2"), "S2");
}

TEST(Golden, S3ReverseComplementWithShortShown) {
  ComparisonState st;
  testing::openWith(st, readFasta(kExamples + "/HUMHBB.fa", true, true), readFasta(kExamples + "/V00508.fa"));
  RunSettings s;
  s.EFWS = "20";
  s.EFAnaTo = "3000";
  s.EFSD = "300";
  s.Display1 = true;
  s.EFIdentities = "14";
  s.seed = 3;
  expectGolden(runGolden(st, s, "S3"), "S3");
}

}  // namespace
}  // namespace trelvane
