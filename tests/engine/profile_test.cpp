// profile_test.cpp -- profile byte encoding and decoding, and the filled start of m2.
#include <gtest/gtest.h>

#include "state/profile.h"
#include "engine_test_util.h"

namespace trelvane {
namespace {

using testing::TestRun;

TEST(Profile, ByteIs255LessScoreTimesStepTruncatedToItsLowEightBits) {
  struct Row { float score; int32_t W; int byte; };
  const Row rows[] = {
      {0.0f, 30, 255}, {20.0f, 20, 5}, {1.0f, 30, 246}, {14.0f, 20, 80}, {2.5f, 10, 192},
      // 250 / 30 rounds up in Double: 30 times it is a hair above 250, so a
      // perfect score of 30 gives 4, while 24 times it rounds back to 200.
      {30.0f, 30, 4}, {24.0f, 30, 55},
      // Above W: -3.33 truncates to -3, whose low byte is 253; -0.83 to 0.
      {31.0f, 30, 253}, {30.5f, 30, 0},
      // 250 / 0 is an infinity, 0 times it no number: both convert to 0.
      {0.0f, 0, 0}, {3.0f, 0, 0}};
  for (const Row& r : rows) EXPECT_EQ(profileByte(r.score, r.W), r.byte) << r.score << " of " << r.W;
}

TEST(Profile, ScoreIsIntegerProductOver250AndRoundTripsWithinOneStep) {
  EXPECT_DOUBLE_EQ(profileScore(5, 30), 30.0);
  EXPECT_DOUBLE_EQ(profileScore(4, 30), 30.12);
  EXPECT_DOUBLE_EQ(profileScore(255, 30), 0.0);
  EXPECT_DOUBLE_EQ(profileScore(54, 30), 201 * 30 / 250.0);
  EXPECT_DOUBLE_EQ(profileScore(80, 20), 14.0);
  for (int32_t W : {5, 20, 30, 255}) {
    for (int32_t s = 0; s <= W; ++s) {
      double back = profileScore(profileByte(static_cast<float>(s), W), W);
      EXPECT_LE(back, s + W / 250.0 + 1e-9) << "W=" << W << " s=" << s;
      EXPECT_GE(back, s - 1e-9) << "W=" << W << " s=" << s;
    }
  }
}

TEST(Profile, FillingStopsWhereTheFlooredBoundIsPassed) {
  // Floor(nbbases / 200 + 300) bounds the 200-byte writes: 39999 gives 499,
  // so 600 bytes; 60000 gives 600, whose write reaches byte 799.
  struct Row { int32_t nbbases; uint8_t fill; int end; };
  for (const Row& r : {Row{100000, kProfileNoScore, 1000}, Row{0, kProfileN, 400}, Row{39999, kProfileNoScore, 600},
                       Row{60000, kProfileNoScore, 800}, Row{59999, kProfileNoScore, 600}}) {
    MemoryBlock m2(r.nbbases + 410);
    fillProfileStart(m2, r.nbbases, r.fill);
    for (int k = 0; k < r.end; ++k) ASSERT_EQ(m2.get(k), r.fill) << r.nbbases << " at " << k;
    for (int k = r.end; k < m2.size(); ++k) ASSERT_EQ(m2.get(k), 0) << r.nbbases << " at " << k;
  }
}

// A run of 1,000 bases over all positions: scans and tail rows cover 0 to 999.
TEST(Profile, RunOn1000BasesLeavesNoZeroBeforeTheEnd) {
  std::string lg;
  for (int k = 0; k < 1000; ++k) lg += "ACGTTGCA"[(k * 7 + k / 3) % 8];
  TestRun r(lg, lg.substr(100, 40));
  r.run({.EFWS = "12", .EFSD = "10", .seed = 5});
  ASSERT_EQ(r.st.m2.size(), 1410);
  for (int k = 0; k < 1000; ++k) ASSERT_NE(r.st.m2.get(k), 0) << k;
  EXPECT_EQ(r.st.m2.get(1000), 0);
  EXPECT_GT(r.st.m2.get(988), 2);  // the last window start, 1000 - 12
  EXPECT_EQ(r.st.m2.get(989), 2);  // the first tail position
}

TEST(Profile, RunLimitedOn100000BasesLeavesZerosWhereNotAnalysed) {
  std::string lg;
  for (int k = 0; k < 100000; ++k) lg += "ACGT"[(k * 31 + k / 7) % 4];
  TestRun r(lg, lg.substr(5000, 30));
  r.run({.EFWS = "10", .EFAnaFrom = "5001", .EFAnaTo = "5010", .EFSD = "5", .seed = 9});
  const MemoryBlock& m2 = r.st.m2;
  for (int k = 0; k < 1000; ++k) ASSERT_EQ(m2.get(k), 2) << k;
  for (int k = 1000; k < 5000; ++k) ASSERT_EQ(m2.get(k), 0) << k;
  for (int k = 5000; k <= 5010; ++k) ASSERT_GT(m2.get(k), 2) << k;
  EXPECT_EQ(m2.get(5000), 5);  // the short sequence's own first window
  for (int k = 5011; k < 99991; ++k) ASSERT_EQ(m2.get(k), 0) << k;
  for (int k = 99991; k < 100000; ++k) ASSERT_EQ(m2.get(k), 2) << k;
  EXPECT_EQ(m2.get(100000), 0);
}

}  // namespace
}  // namespace trelvane
