// run_control_test.cpp -- stop points, stage messages, progress, and the end of a run.
#include <gtest/gtest.h>

#include <filesystem>

#include "engine_test_util.h"

namespace trelvane {
namespace {

using testing::RecordingHost;

// 60 bases against 20: with W = 10, positions 0 to 50.
void sixtyAgainstTwenty(ComparisonState& st) {
  std::string lg;
  for (int k = 0; k < 60; ++k) lg += "ACGTTGCA"[(k * 3 + k / 4) % 8];
  testing::openWith(st, lg, lg.substr(7, 20));
}

RunSettings stopSettings(const char* efsd) {
  RunSettings s;
  s.EFWS = "10";
  s.EFSD = efsd;
  s.display0 = true;
  s.EFIdentities = "100";
  s.CBClipboard = true;
  s.CBFile = true;
  s.resultPath = (std::filesystem::temp_directory_path() / "trelvane_engine_stopped.txt").string();
  std::filesystem::remove(*s.resultPath);
  return s;
}

TEST(RunControl, StopInTheScanStillDoesResamplingZero) {
  ComparisonState st;
  sixtyAgainstTwenty(st);
  st.maxgraph = 12.5f;  // from an earlier run
  RunSettings s = stopSettings("20");
  RecordingHost host(st, 3);  // askclose set at the third position's yield
  RunOutcome out = rumcompute(st, s, host);
  EXPECT_TRUE(out.stopped);
  // Three yields in the scan, then the stop is seen at resampling 1.
  EXPECT_EQ(host.doEventsCalls, 4);
  EXPECT_EQ(host.messages, (std::vector<std::string>{"Show sequences", "Computing...", "Estimate of SD"}));
  EXPECT_EQ(host.clipboardCalls, 0);
  EXPECT_FALSE(std::filesystem::exists(*s.resultPath));
  // What remains is the report built so far: the sequence text.
  std::string letters;
  for (int k = 0; k < 60; ++k) letters += kLetters[st.m0.get(k)];
  EXPECT_EQ(out.report, "First sequence\n60\n" + letters.substr(0, 31) + "\n" + letters.substr(31) + "\n");
  // Positions 0 to 2 were written, the rest of m2 keeps its filled start.
  EXPECT_GT(st.m2.get(2), 2);
  EXPECT_EQ(st.m2.get(3), 2);

  Form form;
  form.EF_MaxX = "0.7";
  bool drawn = false;
  endOfRun(st, form, out, host, [&] { drawn = true; });
  EXPECT_FALSE(drawn);
  EXPECT_EQ(form.Message, "End...");
  EXPECT_EQ(host.messages.back(), "End...");
  EXPECT_EQ(form.Results, out.report);
  EXPECT_EQ(form.EF_MaxX, "0.7");
  EXPECT_EQ(st.maxgraph, 12.5f);
  EXPECT_EQ(host.beeps, 1);
}

TEST(RunControl, StopWithOneResamplingEndsAfterResamplingZero) {
  ComparisonState st;
  sixtyAgainstTwenty(st);
  RecordingHost host(st, 3);
  RunOutcome out = rumcompute(st, stopSettings("1"), host);
  EXPECT_TRUE(out.stopped);
  EXPECT_EQ(host.doEventsCalls, 3);
}

TEST(RunControl, StopInTheRandomExpectation) {
  ComparisonState st;
  sixtyAgainstTwenty(st);
  // 50 yields in the scan (positions 1 to 50), then resamplings 1 and 2.
  RecordingHost host(st, 52);
  RunOutcome out = rumcompute(st, stopSettings("20"), host);
  EXPECT_TRUE(out.stopped);
  EXPECT_EQ(host.doEventsCalls, 52);
  EXPECT_EQ(host.messages.back(), "Estimate of SD");
  EXPECT_GT(st.m2.get(50), 2);  // the whole scan was done
}

TEST(RunControl, StopAtTheLastYieldStillSkipsTheOutput) {
  ComparisonState st;
  sixtyAgainstTwenty(st);
  RecordingHost host(st, 50 + 19);
  RunOutcome out = rumcompute(st, stopSettings("20"), host);
  EXPECT_TRUE(out.stopped);
  EXPECT_EQ(host.clipboardCalls, 0);
}

TEST(RunControl, CpgStopWaitsForTheNextWindowWithoutN) {
  ComparisonState st;
  st.open();
  testing::setLong(st, "ACGTNACGTACGTACG");  // W = 4: windows 1 to 4 hold the N
  RunSettings s;
  s.CBCPG = true;
  s.EFWS = "4";
  RecordingHost host(st, 2);  // asked at position 1's yield
  RunOutcome out = rumcompute(st, s, host);
  EXPECT_TRUE(out.stopped);
  EXPECT_EQ(host.doEventsCalls, 6);  // positions 0 to 5; the stop is seen at 5
  for (int i = 1; i <= 4; ++i) EXPECT_EQ(st.m2.get(i), 1) << i;
  EXPECT_EQ(st.m2.get(5), 2);  // not scored
  for (const std::string& m : host.messages) EXPECT_NE(m, "Estimate of SD");
}

TEST(RunControl, FinishedRunShowsEveryStageAndEndsOnTheMainThread) {
  ComparisonState st;
  sixtyAgainstTwenty(st);
  RunSettings s;
  s.EFWS = "10";
  s.EFSD = "20";
  RecordingHost host(st);
  RunOutcome out = rumcompute(st, s, host);
  EXPECT_FALSE(out.stopped);
  EXPECT_EQ(host.messages, (std::vector<std::string>{"Show sequences", "Computing...", "Estimate of SD",
                                                     "Preparing the output...", "Writing the output...",
                                                     "Drawing picture..."}));
  EXPECT_TRUE(st.running);
  EXPECT_TRUE(st.changegraph);
  EXPECT_EQ(st.windgraph, 0);  // the properties wait for the main thread

  Form form;
  std::vector<std::string> order;
  endOfRun(st, form, out, host, [&] {
    // The drawing sees the new properties, and comes before "End...".
    EXPECT_EQ(st.windgraph, 10);
    EXPECT_EQ(st.maxgraph, 10.0f);  // the short sequence is part of the long one
    EXPECT_EQ(form.EF_MaxX, "1");
    EXPECT_NE(form.Message, "End...");
    order.push_back("graph");
  });
  EXPECT_EQ(order.size(), 1u);
  EXPECT_EQ(form.Message, "End...");
  EXPECT_EQ(form.Results, out.report);
  EXPECT_EQ(st.meangraph, out.meangraph);
  EXPECT_EQ(st.omaxgraph, out.omaxgraph);
  EXPECT_EQ(st.sumu2up, out.sumu2up);
  EXPECT_EQ(host.beeps, 1);
}

TEST(RunControl, ProgressSharesOneBarBetweenBothScans) {
  ComparisonState st;
  sixtyAgainstTwenty(st);
  RunSettings s;
  s.EFWS = "10";
  s.EFSD = "51";  // nresample 50, as many as the scan's 50 steps
  s.progressWidth = 200;
  RecordingHost host(st);
  rumcompute(st, s, host);
  // Step 0 below 100 positions: one update a position, then a resampling.
  ASSERT_EQ(host.progressValues.size(), 1u + 50u + 50u);
  EXPECT_EQ(host.progressValues[0], 0);
  EXPECT_EQ(host.progressValues[1], 2);     // 200 * 1 / 100
  EXPECT_EQ(host.progressValues[50], 100);  // the scan fills half the bar
  EXPECT_EQ(host.progressValues[100], 200);
  EXPECT_EQ(host.lastMaximum, 200);
}

TEST(RunControl, SingleAnalysedPositionGivesNoProgressStep) {
  ComparisonState st;
  sixtyAgainstTwenty(st);
  RunSettings s;
  s.EFWS = "10";
  s.EFAnaFrom = "5";
  s.EFAnaTo = "4";
  s.EFSD = "1";
  RecordingHost host(st);
  rumcompute(st, s, host);
  EXPECT_EQ(host.progressValues, std::vector<int>{0});
  EXPECT_EQ(host.doEventsCalls, 0);

  // In CpG mode the one position divides 0 by 0: the conversion gives 0.
  s.CBCPG = true;
  RecordingHost cpg(st);
  rumcompute(st, s, cpg);
  EXPECT_EQ(cpg.progressValues, (std::vector<int>{0, 0}));
  EXPECT_EQ(cpg.doEventsCalls, 1);
}

TEST(RunControl, CpgProgressFillsOnlyAHundredUnits) {
  ComparisonState st;
  st.open();
  std::string lg;
  for (int k = 0; k < 210; ++k) lg += "ACGT"[k % 4];
  testing::setLong(st, lg);
  RunSettings s;
  s.CBCPG = true;
  s.EFWS = "10";
  s.progressWidth = 262;
  RecordingHost host(st);
  rumcompute(st, s, host);
  ASSERT_EQ(host.progressValues.size(), 1u + 201u);
  EXPECT_EQ(host.progressValues[1], 0);
  EXPECT_EQ(host.progressValues[101], 50);
  EXPECT_EQ(host.progressValues.back(), 100);
}

}  // namespace
}  // namespace trelvane
