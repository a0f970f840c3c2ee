// tracks_test.cpp -- genome-browser files as real clients read them, and record coordinates of a run.
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include "cli/cli.h"
#include "state/profile.h"
#include "support/cases.h"
#include "support/desk.h"
#include "tracks/bedgraph.h"
#include "tracks/cpg_islands.h"
#include "tracks/segments.h"
#include "tracks/text.h"

namespace trelvane::testing {
namespace {

void lines(std::ostream& out, const std::string& text) {
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) out << "  | " << cases::escaped(line, true) << "\n";
}

std::vector<std::string> words(Desk& d, const std::string& line) {
  std::vector<std::string> args;
  std::istringstream in(line);
  for (std::string w; in >> w;) {
    for (auto [mark, root] : {std::pair{"$DIR", d.dir.string()}, {"@examples", std::string(TRELVANE_EXAMPLES)}})
      for (std::size_t at; (at = w.find(mark)) != std::string::npos;) w.replace(at, std::string(mark).size(), root);
    args.push_back(w == "''" ? "" : w);
  }
  // no progress: compare and cpg would show it on a terminal
  if (!args.empty() && args[0] != "redraw") args.push_back("--quiet");
  return args;
}

const std::map<std::string, Step> kSteps = {
    // trelvane-cli in-process: its status and standard error
    {"run", [](Desk& d, const std::string& v, std::ostream& out) {
       cli::Console c{std::tmpfile(), std::tmpfile(), false};
       const int status = cli::cliMain(words(d, v), c);
       out << "  status " << status << "\n";
       std::string err;
       std::rewind(c.err);
       for (int ch; (ch = std::fgetc(c.err)) != EOF;) err += static_cast<char>(ch);
       std::fclose(c.out);
       std::fclose(c.err);
       lines(out, err);
     }},
    // a bash command in the case's folder (bedtools, Debian's python3 with
    // pyBigWig): what it prints, and its status where it fails
    {"cat", [](Desk& d, const std::string& v, std::ostream& out) {
       std::ifstream in(d.path(v), std::ios::binary);
       lines(out, in ? std::string(std::istreambuf_iterator<char>(in), {}) : "(no file)");
     }},
};

class Tracks : public ::testing::TestWithParam<cases::Case> {};
TEST_P(Tracks, GivesItsTranscript) { cases::expectTranscript(GetParam(), runDesk(GetParam(), kSteps), false); }
INSTANTIATE_TEST_SUITE_P(, Tracks, ::testing::ValuesIn(cases::readCases(TRELVANE_TEST_DATA "/tracks/tracks.cases")),
                         cases::caseName);

// A profile of W = 10 over 12 positions: scores 10 10 10 N 7 7 4 4 4 tail.
void smallRun(ComparisonState& st) {
  st.open();
  st.windgraph = 10;
  st.nbbases = 12;
  st.m2 = MemoryBlock(st.nbbases + 410);
  const int scores[] = {10, 10, 10, -1, 7, 7, 4, 4, 4};
  for (int p = 0; p < 9; ++p)
    st.m2.set(p, scores[p] < 0 ? kProfileN : profileByte(static_cast<float>(scores[p]), 10));
  st.m2.set(9, kProfileNoScore);
  st.origin[0].path = "chr.fa";
  st.origin[0].record = "chr7";
  st.origin[0].recordLength = 1000;
  st.origin[0].from = 101;
  st.origin[0].to = 115;
  st.origin[0].wholeFile = false;
}

std::string intervals(const std::vector<tracks::Interval>& list) {
  std::string out;
  for (const auto& iv : list) out += std::to_string(iv.start) + "-" + std::to_string(iv.end) + "=" + tracks::number(iv.value) + " ";
  return out;
}

TEST(ProfileIntervals, RecordCoordinatesFollowTheRegionTheStrandAndRemovedN) {
  ComparisonState st;
  smallRun(st);
  tracks::TrackOptions o;
  o.unit = tracks::Unit::Score;
  EXPECT_EQ(intervals(tracks::profileIntervals(st, o)), "100-103=10 104-106=7 106-109=4 ");
  o.recordCoordinates = false;
  EXPECT_EQ(intervals(tracks::profileIntervals(st, o)), "0-3=10 4-6=7 6-9=4 ");
  o.recordCoordinates = true;
  o.anchor = tracks::Anchor::Centre;  // (10 - 1) / 2 = 4 bases on
  EXPECT_EQ(intervals(tracks::profileIntervals(st, o)), "104-107=10 108-110=7 110-113=4 ");
  o.anchor = tracks::Anchor::First;
  // Three Ns removed before run position 6: the run's bases 6 on stand 3 further.
  st.origin[0].removed = {{6, 3}};
  EXPECT_EQ(intervals(tracks::profileIntervals(st, o)), "100-103=10 104-105=7 108-109=7 109-112=4 ");
  // Reversed: run position 1 is the record's base 115, counted down.
  st.origin[0].removed.clear();
  st.origin[0].reverse = st.origin[0].complement = true;
  EXPECT_EQ(intervals(tracks::profileIntervals(st, o)), "106-109=4 109-111=7 112-115=10 ");
  tracks::SegmentRule rule;
  rule.minIdentity = 0.7;
  rule.minLength = 2;
  const auto found = tracks::callSegments(st, rule, 7);
  EXPECT_EQ(tracks::segmentsBed(st, found, o), "chr7\t109\t111\tsegment1\t700\t-\nchr7\t112\t115\tsegment2\t1000\t-\n");
  EXPECT_EQ(tracks::chromSize(st, o, 0), 1000);
}

TEST(ProfileIntervals, FractionsAndNamesOfAStoredResultWithoutOrigin) {
  ComparisonState st;
  smallRun(st);
  st.origin[0] = SequenceOrigin{};
  tracks::TrackOptions o;
  o.source = "runs/result.txt";
  EXPECT_EQ(tracks::chromName(st, o), "result");
  EXPECT_EQ(intervals(tracks::profileIntervals(st, o)), "0-3=1 4-6=0.7 6-9=0.4 ");
  o.chrom = "chr 2";
  EXPECT_EQ(tracks::chromName(st, o), "chr_2");
  EXPECT_EQ(tracks::chromSize(st, o, 40), 40);
  // no random expectation: a CpG run's 0 / 0
  st.omeangraph = st.osdgraph = st.omaxgraph = std::numeric_limits<float>::quiet_NaN();
  EXPECT_FALSE(tracks::expectationBedGraph(st, o, tracks::ExpectationLine::Mean));
  std::string why;
  tracks::SegmentRule rule;
  ASSERT_TRUE(tracks::parseAbove("mean+2.5sd", rule, &why));
  EXPECT_EQ(rule.sds, 2.5);
  EXPECT_FALSE(tracks::thresholdScore(st, rule, &why));
  for (const char* bad : {"mean+", "mean+sd", "mean+-1sd", "median", "mean+3"})
    EXPECT_FALSE(tracks::parseAbove(bad, rule, &why)) << bad;
}

TEST(Islands, CutToTheirCpGAndCheckedWhole) {
  // 300 bases of AT, 260 of a CpG-rich repeat, 300 of AT: one island, its
  // ends on the first C and the last G of a CpG.
  std::string seq(300, 'A');
  for (int k = 0; k < 65; ++k) seq += "TCGG";
  seq += std::string(300, 'T');
  ComparisonState st;
  st.open();
  st.nbbases = static_cast<int32_t>(seq.size());
  st.m0 = MemoryBlock(st.nbbases + 100);
  const std::string letters = "NATCG";
  for (std::size_t i = 0; i < seq.size(); ++i) {
    const auto code = static_cast<uint8_t>(letters.find(seq[i]));
    st.m0.set(static_cast<std::ptrdiff_t>(i), code);
    ++st.basesfreq[code][0];
  }
  const auto islands = tracks::findIslands(st, tracks::IslandRule{});
  ASSERT_EQ(islands.size(), 1u);
  EXPECT_EQ(islands[0].runFrom, 302);  // the C of the first TCGG
  EXPECT_EQ(islands[0].runTo, 559);    // the G of the last CpG
  EXPECT_EQ(islands[0].cpg, 65);
  tracks::IslandRule strict;
  strict.minLength = 300;
  EXPECT_TRUE(tracks::findIslands(st, strict).empty());
}

}  // namespace
}  // namespace trelvane::testing
