// profile_test.cpp -- profile byte encoding and decoding, and the filled start of m2.
#include <gtest/gtest.h>

#include "engine/profile.h"
#include "engine_test_util.h"

namespace trelvane {
namespace {

TEST(Profile, ByteIs255LessScoreTimesStepTruncated) {
  EXPECT_EQ(profileByte(0.0f, 30), 255);
  EXPECT_EQ(profileByte(20.0f, 20), 5);
  EXPECT_EQ(profileByte(1.0f, 30), 246);   // 255 - 8.33...
  EXPECT_EQ(profileByte(14.0f, 20), 80);   // 255 - 175
  EXPECT_EQ(profileByte(2.5f, 10), 192);
  // 250 / 30 rounds up in Double: 30 times it is a hair above 250, so a
  // perfect score of 30 gives 4, while 24 times it rounds back to 200.
  EXPECT_EQ(profileByte(30.0f, 30), 4);
  EXPECT_EQ(profileByte(24.0f, 30), 55);
}

TEST(Profile, ByteKeepsLowEightBitsAboveW) {
  // 255 - 31 * 250 / 30 = -3.33: truncated to -3, whose low byte is 253.
  EXPECT_EQ(profileByte(31.0f, 30), 253);
  EXPECT_EQ(profileByte(30.5f, 30), 0);  // -0.83 truncates to 0
}

TEST(Profile, ByteOfZeroWindowIsTheNonFiniteConversion) {
  // 250 / 0 is an infinity; 0 times it is not a number: both convert to 0.
  EXPECT_EQ(profileByte(0.0f, 0), 0);
  EXPECT_EQ(profileByte(3.0f, 0), 0);
}

TEST(Profile, ScoreIsIntegerProductOver250) {
  EXPECT_DOUBLE_EQ(profileScore(5, 30), 30.0);
  EXPECT_DOUBLE_EQ(profileScore(4, 30), 30.12);
  EXPECT_DOUBLE_EQ(profileScore(255, 30), 0.0);
  EXPECT_DOUBLE_EQ(profileScore(54, 30), 201 * 30 / 250.0);
  EXPECT_DOUBLE_EQ(profileScore(80, 20), 14.0);
}

TEST(Profile, RoundTripLosesLessThanOneStep) {
  for (int32_t W : {5, 20, 30, 255}) {
    for (int32_t s = 0; s <= W; ++s) {
      double back = profileScore(profileByte(static_cast<float>(s), W), W);
      EXPECT_LE(back, s + W / 250.0 + 1e-9) << "W=" << W << " s=" << s;
      EXPECT_GE(back, s - 1e-9) << "W=" << W << " s=" << s;
    }
  }
}

TEST(Profile, FillingOf100000BasesEndsAtOffset1000) {
  MemoryBlock m2(100000 + 410);
  fillProfileStart(m2, 100000, kProfileNoScore);
  for (int k = 0; k < 1000; ++k) ASSERT_EQ(m2.get(k), 2) << k;
  for (int k = 1000; k < 100410; ++k) ASSERT_EQ(m2.get(k), 0) << k;
}

TEST(Profile, FillingOfNoBaseLeavesZeroAt400) {
  MemoryBlock m2(410);
  fillProfileStart(m2, 0, kProfileN);  // a stored result fills with 1
  for (int k = 0; k < 400; ++k) ASSERT_EQ(m2.get(k), 1) << k;
  for (int k = 400; k < 410; ++k) ASSERT_EQ(m2.get(k), 0) << k;
}

TEST(Profile, FillingStopsWhereTheFlooredBoundIsPassed) {
  // Floor(39999 / 200 + 300) = 499: offsets 0 to 400, so 600 bytes.
  MemoryBlock m2(39999 + 410);
  fillProfileStart(m2, 39999, kProfileNoScore);
  EXPECT_EQ(m2.get(599), 2);
  EXPECT_EQ(m2.get(600), 0);
  // Floor(60000 / 200 + 300) = 600: the write at 600 reaches byte 799,
  // one base less stops at 400.
  MemoryBlock m3(60000 + 410);
  fillProfileStart(m3, 60000, kProfileNoScore);
  EXPECT_EQ(m3.get(799), 2);
  EXPECT_EQ(m3.get(800), 0);
  MemoryBlock m4(59999 + 410);
  fillProfileStart(m4, 59999, kProfileNoScore);
  EXPECT_EQ(m4.get(599), 2);
  EXPECT_EQ(m4.get(600), 0);
}

// A run of 1,000 bases over all positions: scans and tail rows cover 0 to 999.
TEST(Profile, RunOn1000BasesLeavesNoZeroBeforeTheEnd) {
  std::string longSeq, shortSeq;
  for (int k = 0; k < 1000; ++k) longSeq += "ACGTTGCA"[(k * 7 + k / 3) % 8];
  shortSeq = longSeq.substr(100, 40);
  ComparisonState st;
  testing::openWith(st, longSeq, shortSeq);
  RunSettings s;
  s.EFWS = "12";
  s.EFSD = "10";
  s.seed = 5;
  testing::RecordingHost host(st);
  rumcompute(st, s, host);
  ASSERT_EQ(st.m2.size(), 1410);
  for (int k = 0; k < 1000; ++k) ASSERT_NE(st.m2.get(k), 0) << k;
  EXPECT_EQ(st.m2.get(1000), 0);
  EXPECT_GT(st.m2.get(988), 2);  // the last window start, 1000 - 12
  EXPECT_EQ(st.m2.get(989), 2);  // the first tail position
}

TEST(Profile, RunLimitedOn100000BasesLeavesZerosWhereNotAnalysed) {
  std::string longSeq;
  for (int k = 0; k < 100000; ++k) longSeq += "ACGT"[(k * 31 + k / 7) % 4];
  ComparisonState st;
  testing::openWith(st, longSeq, longSeq.substr(5000, 30));
  RunSettings s;
  s.EFWS = "10";
  s.EFAnaFrom = "5001";
  s.EFAnaTo = "5010";
  s.EFSD = "5";
  s.seed = 9;
  testing::RecordingHost host(st);
  rumcompute(st, s, host);
  for (int k = 0; k < 1000; ++k) ASSERT_EQ(st.m2.get(k), 2) << k;
  for (int k = 1000; k < 5000; ++k) ASSERT_EQ(st.m2.get(k), 0) << k;
  for (int k = 5000; k <= 5010; ++k) ASSERT_GT(st.m2.get(k), 2) << k;
  EXPECT_EQ(st.m2.get(5000), 5);  // the short sequence's own first window
  for (int k = 5011; k < 99991; ++k) ASSERT_EQ(st.m2.get(k), 0) << k;
  for (int k = 99991; k < 100000; ++k) ASSERT_EQ(st.m2.get(k), 2) << k;
  EXPECT_EQ(st.m2.get(100000), 0);
}

}  // namespace
}  // namespace trelvane
