// run_control_test.cpp -- stop points, stage messages, progress, and the end of a run.
#include <gtest/gtest.h>

#include <filesystem>

#include "engine_test_util.h"

namespace trelvane {
namespace {

using testing::TestRun;

// 60 bases against 20: with W = 10, positions 0 to 50.
std::string sixty() {
  std::string lg;
  for (int k = 0; k < 60; ++k) lg += "ACGTTGCA"[(k * 3 + k / 4) % 8];
  return lg;
}

struct Sixty : TestRun {
  explicit Sixty(int stopAfter = -1) : TestRun(sixty(), sixty().substr(7, 20), stopAfter) {}
};

const std::string kStopped = (std::filesystem::temp_directory_path() / "trelvane_engine_stopped.txt").string();

RunSettings stopSettings(const char* efsd) {
  std::filesystem::remove(kStopped);
  return {.EFWS = "10", .EFIdentities = "100", .EFSD = efsd, .display0 = true, .CBFile = true, .CBClipboard = true,
          .resultPath = kStopped};
}

TEST(RunControl, StopInTheScanStillDoesResamplingZero) {
  Sixty r(3);  // askclose set at the third position's yield
  ComparisonState& st = r.st;
  st.maxgraph = 12.5f;  // from an earlier run
  const RunOutcome& out = r.run(stopSettings("20")).out;
  testing::RecordingHost& host = r.host;
  EXPECT_TRUE(out.stopped);
  // Three yields in the scan, then the stop is seen at resampling 1.
  EXPECT_EQ(host.doEventsCalls, 4);
  EXPECT_EQ(host.messages, (std::vector<std::string>{"Show sequences", "Computing...", "Estimate of SD"}));
  EXPECT_EQ(host.clipboardCalls, 0);
  EXPECT_FALSE(std::filesystem::exists(kStopped));
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

TEST(RunControl, LaterStopsSkipTheWholeOutput) {
  // 50 yields in the scan (positions 1 to 50), then one a resampling.
  struct Row { const char* name; const char* efsd; int stopAfter, yields; };
  for (const Row& row : {Row{"OneResamplingEndsAfterResamplingZero", "1", 3, 3},
                         Row{"InTheRandomExpectation", "20", 52, 52}, Row{"AtTheLastYield", "20", 69, 69}}) {
    SCOPED_TRACE(row.name);
    Sixty r(row.stopAfter);
    r.run(stopSettings(row.efsd));
    EXPECT_TRUE(r.out.stopped);
    EXPECT_EQ(r.host.doEventsCalls, row.yields);
    EXPECT_EQ(r.host.clipboardCalls, 0);
    EXPECT_FALSE(std::filesystem::exists(kStopped));
    if (row.stopAfter > 50) {
      EXPECT_EQ(r.host.messages.back(), "Estimate of SD");
      EXPECT_GT(r.st.m2.get(50), 2);  // the whole scan was done
    }
  }
}

TEST(RunControl, CpgStopWaitsForTheNextWindowWithoutN) {
  TestRun r("ACGTNACGTACGTACG", {}, 2);  // W = 4: windows 1 to 4 hold the N; asked at position 1
  r.run({.EFWS = "4", .CBCPG = true});
  EXPECT_TRUE(r.out.stopped);
  EXPECT_EQ(r.host.doEventsCalls, 6);  // positions 0 to 5; the stop is seen at 5
  for (int i = 1; i <= 4; ++i) EXPECT_EQ(r.st.m2.get(i), 1) << i;
  EXPECT_EQ(r.st.m2.get(5), 2);  // not scored
  for (const std::string& m : r.host.messages) EXPECT_NE(m, "Estimate of SD");
}

TEST(RunControl, FinishedRunShowsEveryStageAndEndsOnTheMainThread) {
  Sixty r;
  ComparisonState& st = r.st;
  testing::RecordingHost& host = r.host;
  const RunOutcome& out = r.run({.EFWS = "10", .EFSD = "20"}).out;
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
  Sixty r;  // nresample 50, as many as the scan's 50 steps; one thread, one scan after the other
  const testing::RecordingHost& host =
      r.run({.EFWS = "10", .EFSD = "51", .progressWidth = 200, .threads = 1}).host;
  // Step 0 below 100 positions: one update a position, then a resampling.
  ASSERT_EQ(host.progressValues.size(), 1u + 50u + 50u);
  EXPECT_EQ(host.progressValues[0], 0);
  EXPECT_EQ(host.progressValues[1], 2);     // 200 * 1 / 100
  EXPECT_EQ(host.progressValues[50], 100);  // the scan fills half the bar
  EXPECT_EQ(host.progressValues[100], 200);
  EXPECT_EQ(host.lastMaximum, 200);
}

TEST(RunControl, SingleAnalysedPositionGivesNoProgressStep) {
  RunSettings s{.EFWS = "10", .EFAnaFrom = "5", .EFAnaTo = "4", .EFSD = "1"};
  Sixty r;
  EXPECT_EQ(r.run(s).host.progressValues, std::vector<int>{0});
  EXPECT_EQ(r.host.doEventsCalls, 0);
  // In CpG mode the one position divides 0 by 0: the conversion gives 0.
  s.CBCPG = true;
  Sixty cpg;
  EXPECT_EQ(cpg.run(s).host.progressValues, (std::vector<int>{0, 0}));
  EXPECT_EQ(cpg.host.doEventsCalls, 1);
}

TEST(RunControl, CpgProgressFillsOnlyAHundredUnits) {
  std::string lg;
  for (int k = 0; k < 210; ++k) lg += "ACGT"[k % 4];
  TestRun r(lg);
  const testing::RecordingHost& host = r.run({.EFWS = "10", .CBCPG = true, .progressWidth = 262}).host;
  ASSERT_EQ(host.progressValues.size(), 1u + 201u);
  EXPECT_EQ(host.progressValues[1], 0);
  EXPECT_EQ(host.progressValues[101], 50);
  EXPECT_EQ(host.progressValues.back(), 100);
}

}  // namespace
}  // namespace trelvane
