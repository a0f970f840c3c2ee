// runs_test.cpp -- whole runs against their transcripts, the scores against the recurrence written out anew,
// and the profile bytes, the scale limit and the result file.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "state/profile.h"
#include "platform/numtext.h"
#include "platform/rnd.h"
#include "run_transcript.h"

namespace trelvane::testing {
namespace {

RunInput inputOf(const cases::Case& c) {
  RunInput in;
  for (const auto& [key, value] : c.in) {
    std::istringstream v(value);
    std::string word;
    float x = 0;
    int side = 0, at = 0, b = 0;
    if (key == "long") in.lg = cases::pieces(value);
    if (key == "short") in.sh = cases::pieces(value, in.lg);
    if (key == "nbbases1") in.nbbases1 = std::stoi(value);
    if (key == "m1" && value == "nil") in.m1nil = true;
    if (key == "save" && value == "cancelled") in.noResultPath = true;
    if (key == "stop") in.stopAfter = std::stoi(value);
    if (key == "poke" && std::sscanf(value.c_str(), "%d %d %d", &side, &at, &b) == 3) in.pokes.emplace_back(side, at, b);
    if (key == "matrix" && (v >> word) && word == "model") {
      // cells that are no binary fractions, so that sums round
      const float model[4][4] = {{0.91f, 0.03f, 0.05f, 0.01f}, {0.07f, 0.83f, 0.01f, 0.09f},
                                 {0.02f, 0.11f, 0.77f, 0.1f}, {0.013f, 0.047f, 0.19f, 0.75f}};
      for (int s = 1; s <= 4; ++s)
        for (int l = 1; l <= 4; ++l) in.matrice[s][l] = model[s - 1][l - 1];
    } else if (key == "matrix" && (v >> x)) {
      for (int s = 1; s <= 4; ++s)
        for (int l = 1; l <= 4; ++l)
          if ((word == "diag") == (s == l)) in.matrice[s][l] = x;
    }
    if (key != "run") continue;
    RunSettings& s = in.s;
    while (v >> word) {
      const std::string k = word.substr(0, word.find('=')), f = word.substr(word.find('=') + 1);
      for (auto [name, field] : {std::pair{"EFWS", &s.EFWS}, {"EFAnaFrom", &s.EFAnaFrom}, {"EFAnaTo", &s.EFAnaTo},
                                 {"EFIdentities", &s.EFIdentities}, {"EFSD", &s.EFSD}, {"kernel", &s.kernel}})
        if (k == name) *field = f;
      for (auto [name, flag] : {std::pair{"display0", &s.display0}, {"Display1", &s.Display1}, {"CBCPG", &s.CBCPG},
                                {"CBFile", &s.CBFile}, {"CBClipboard", &s.CBClipboard}, {"CBFreqIB", &s.CBFreqIB}})
        if (k == name) *flag = f == "1";
      if (k == "seed") s.seed = std::stoull(f);
      if (k == "progressWidth") s.progressWidth = std::stoi(f);
      if (k == "threads") s.threads = std::stoi(f);
    }
  }
  return in;
}

class EngineRun : public ::testing::TestWithParam<cases::Case> {};

TEST_P(EngineRun, GivesItsTranscript) { cases::expectTranscript(GetParam(), runTranscript(inputOf(GetParam()))); }

INSTANTIATE_TEST_SUITE_P(, EngineRun, ::testing::ValuesIn(cases::readCases(TRELVANE_TEST_DATA "/engine/runs.cases")),
                         cases::caseName);

// The scores of every start j against the windows at first..last, by the
// definition: the first row and every start 0 summed in full, every other
// score from its diagonal predecessor one row up, each step rounded to Single.
std::vector<std::vector<float>> scoreTable(const float (&m)[5][5], const std::string& sh, const std::string& lg, int W,
                                           int first, int last) {
  auto cell = [&](int j, int i) { return m[codeOf(sh[j])][codeOf(lg[i])]; };
  std::vector<std::vector<float>> table;
  for (int i = first; i <= last; ++i) {
    std::vector<float> row(sh.size() - W + 1);
    for (int j = 0; j < static_cast<int>(row.size()); ++j) {
      if (i == first || j == 0) {
        row[j] = cell(j, i);
        for (int k = 1; k < W; ++k) row[j] += cell(j + k, i + k);
      } else {
        row[j] = (table.back()[j - 1] - cell(j - 1, i - 1)) + cell(j + W - 1, i + W - 1);
      }
    }
    table.push_back(std::move(row));
  }
  return table;
}

std::string randomBases(std::mt19937& gen, int n) {
  std::string out;
  while (n-- > 0) out += "ACGT"[gen() % 4];
  return out;
}

// Every row of a run with a matrix whose sums round: the best score of each
// position along its diagonals, ties ascending at the first position, then
// descending with start 1 last, an N row for a window holding an N.
TEST(Scan, RowsFollowTheRecurrenceInSingle) {
  std::mt19937 gen(11);
  const std::string sh = randomBases(gen, 60), W = "25";
  RunInput in = inputOf({"", "", {{"matrix", "model"}}, ""});
  in.lg = randomBases(gen, 150) + sh.substr(10, 30) + randomBases(gen, 10) + "NNN" + randomBases(gen, 100);
  in.sh = sh;
  in.s = {.EFWS = W, .EFIdentities = "100", .EFSD = "3", .CBClipboard = true};
  const std::string t = runTranscript(in);
  const int lastlong = static_cast<int>(in.lg.size()) - 25;
  const auto table = scoreTable(in.matrice, sh, in.lg, 25, 0, lastlong);
  std::string want;
  int differing = 0;
  for (int i = 0; i <= lastlong; ++i) {
    want += Str(int32_t{i + 1}) + "\t" + in.lg[i] + "\t";
    if (in.lg.substr(i, 25).find('N') != std::string::npos) {
      want += "0\t0\n";
      continue;
    }
    const float best = std::max(0.0f, *std::max_element(table[i].begin(), table[i].end()));
    std::string ties;
    for (int k = 0; k < static_cast<int>(table[i].size()); ++k) {
      const int j = i == 0 ? k : static_cast<int>(table[i].size()) - 1 - k;
      if (table[i][j] == best) ties += "\t" + std::to_string(j + 1);
    }
    want += Str(best) + ties + "\n";
    // the rounding along the diagonals shows: a full sum gives another best
    const auto full = scoreTable(in.matrice, sh, in.lg, 25, i, i)[0];
    differing += std::max(0.0f, *std::max_element(full.begin(), full.end())) != best;
  }
  EXPECT_NE(t.find("#\n" + want), std::string::npos) << t;
  EXPECT_GT(differing, 0);
}

// The random expectation: bases of the longest sequence drawn with
// replacement by the seeded Rnd, its windows scored as the longest side's.
TEST(H0, MatchesARecomputationWithTheSameSeed) {
  RunInput in = inputOf({"", "", {{"matrix", "model"}}, ""});
  in.lg = "ACGTTGCANNACGGGCTTAACGTACCGTAGGCTANNNNTTGCAACGTAGCTAGCTTAGGCAT";
  in.sh = "TTGCAACGTAGCTAGGATCCA";
  in.s = {.EFWS = "8", .EFIdentities = "100", .EFSD = "41", .seed = 77};
  const std::string t = runTranscript(in);
  Rnd rnd(77);
  std::string drawn;
  while (drawn.size() < 49)
    if (char b = in.lg[static_cast<std::size_t>(rnd() * in.lg.size())]; b != 'N') drawn += b;
  std::map<int, int> bins;
  double sum = 0, sumsq = 0;
  float top = 0;
  for (const auto& row : scoreTable(in.matrice, in.sh, drawn, 8, 0, 40)) {
    const float m = std::max(0.0f, *std::max_element(row.begin(), row.end()));
    ++bins[static_cast<int>(m)], sum += m, sumsq += double(m) * m, top = std::max(top, m);
  }
  std::string histogram;
  for (int b = 0; b <= 8; ++b) histogram += std::to_string(b) + "\t" + std::to_string(bins[b]) + "\n";
  EXPECT_NE(t.find("Bases1=21\n" + histogram + "Longest"), std::string::npos) << t;
  const auto value = [&](const std::string& key) { return CDbl(t.substr(t.find("\n" + key) + key.size() + 1)); };
  EXPECT_EQ(value("Max H0="), CDbl(CStr(top)));
  EXPECT_NEAR(value("Mean H0="), sum / 41, 1e-5);
  EXPECT_NEAR(value("SD H0="), std::sqrt(sumsq / 41 - (sum / 41) * (sum / 41)), 1e-4);
}

TEST(Profile, BytesScoresAndTheFilledStart) {
  // 250 / 30 rounds up in Double: a perfect 30 gives 4, 24 rounds back to 55;
  // above W the product truncates below 0; 250 / 0 is no number: byte 0.
  const std::tuple<float, int32_t, int> bytes[] = {{0, 30, 255},  {20, 20, 5},   {1, 30, 246},    {14, 20, 80},
                                                   {2.5f, 10, 192}, {30, 30, 4}, {24, 30, 55},    {31, 30, 253},
                                                   {30.5f, 30, 0}, {0, 0, 0},     {3, 0, 0}};
  for (auto [s, W, b] : bytes) EXPECT_EQ(profileByte(s, W), b) << s << " of " << W;
  EXPECT_DOUBLE_EQ(profileScore(4, 30), 30.12);
  EXPECT_DOUBLE_EQ(profileScore(54, 30), 201 * 30 / 250.0);
  for (int32_t W : {5, 20, 30, 255})
    for (int32_t s = 0; s <= W; ++s) {
      const double back = profileScore(profileByte(static_cast<float>(s), W), W);
      EXPECT_TRUE(back >= s - 1e-9 && back <= s + W / 250.0 + 1e-9) << s << " of " << W;
    }
  // 200-byte writes while the offset is not above Floor(nbbases / 200 + 300)
  const std::tuple<int32_t, uint8_t, int> fills[] = {
      {100000, kProfileNoScore, 1000}, {0, kProfileN, 400}, {39999, 2, 600}, {60000, 2, 800}, {59999, 2, 600}};
  for (auto [nbbases, code, end] : fills) {
    MemoryBlock m2(nbbases + 410);
    fillProfileStart(m2, nbbases, code);
    EXPECT_EQ(cases::bytesText(m2.data(), static_cast<std::size_t>(m2.size())),
              std::to_string(code) + "*" + std::to_string(end) + " 0*" + std::to_string(nbbases + 410 - end));
  }
}

TEST(Report, ScaleLimitIsOneTheNextTenthOrTheMaximum) {
  const std::tuple<float, int32_t, bool, const char*> rows[] = {
      {30, 30, true, "1"},   {24, 30, true, "0.9"},   {27, 30, true, "1"},     {29.5f, 30, true, "1"},
      {0, 30, true, "0.1"},  {14, 20, true, "0.8"},   {24, 30, false, "24"},   {17.5f, 100, false, "17.5"},
      {0, 0, true, "1"},     {3, 0, true, "Infinity"}};
  for (auto [max, W, freq, limit] : rows) EXPECT_EQ(scaleLimit(max, W, freq), limit) << max << " of " << W;
}

TEST(Report, ResultFileReplacesTheOldOneWholeAndADeviceIsWrittenInPlace) {
  const std::string path = std::filesystem::temp_directory_path() / ("trelvane_old_" + std::to_string(::getpid()));
  std::ofstream(path) << std::string(5000, '~');
  for (const std::string& target : {path, std::string("/dev/null")}) {
    ComparisonState st;
    st.open();
    st.m0 = blockOf("ACGTACGTAC"), st.nbbases = 10, st.m1 = blockOf("GTAC"), st.nbbases1 = 4;
    RecordingHost host(st, -1);
    EXPECT_TRUE(rumcompute(st, {.EFWS = "4", .EFSD = "2", .CBFile = true, .resultPath = target}, host).resultWritten);
    EXPECT_FALSE(std::filesystem::exists(target + ".part"));
  }
  EXPECT_EQ(readBytes(path).rfind("Trelvane comparison\n", 0), 0u);
  EXPECT_EQ(readBytes(path).find('~'), std::string::npos);
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
  std::filesystem::remove(path);
}

}  // namespace
}  // namespace trelvane::testing
