// report_test.cpp -- statistics, the result block, its three destinations and the scale limit.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <random>

#include "state/profile.h"
#include "engine_test_util.h"
#include "platform/numtext.h"

namespace trelvane {
namespace {

using testing::linesOf;
using testing::RowCase;
using testing::TestRun;
using testing::valueOf;

const RowCase kCases[] = {
    // (count - N) / (length - N): the four fractions do not add up to 1.
    {"CompositionTakesTheNCountOffEveryBase", "NNAAATTCGG", "AATTN", {.EFWS = "4", .EFSD = "1"}, {}, -1, {},
     {"Longest sequence\nN\t2\t0.2\nA\t3\t0.125\nT\t2\t0\nC\t1\t-0.125\nG\t2\t0\n"
      "Shortest sequence\nN\t1\t0.2\nA\t2\t0.25\nT\t2\t0.25\nC\t0\t-0.25\nG\t0\t-0.25\n"}},
    // Every window matches in full: all scores are 10, the mean too.
    {"ScoresEqualToTheMeanCountOnTheUpperSide", std::string(30, 'A'), std::string(12, 'A'),
     {.EFWS = "10", .EFIdentities = "100", .EFSD = "1"}, {}, -1, {}, {"Max=10\nMean=10\nSD=0\n", "SD low=NaN\nSD up=0\n"}},
    {"AllWindowsWithAnNGiveNotANumberTexts", "ANAANAANAANAANA", "ACGTA", {.EFWS = "4", .EFSD = "2"}, {}, -1,
     {{0, 1}, {1, 1}, {2, 1}, {3, 1}, {4, 1}, {5, 1}, {6, 1}, {7, 1}, {8, 1}, {9, 1}, {10, 1}, {11, 1}},
     {"Max=0\nMean=NaN\nSD=NaN\n", "SD low=NaN\nSD up=NaN\n", "Average identity:NaN\nSD:NaN\n\n"}},
};

TEST(Report, HandCheckedStatistics) {
  for (const RowCase& c : kCases) testing::expectCase(c);
}

TEST(Report, SplitSdComesFromTheProfileBytes) {
  std::mt19937 gen(5);
  std::string sh, lg;
  for (int k = 0; k < 90; ++k) sh += "ACGT"[gen() % 4];
  for (int k = 0; k < 400; ++k) lg += (gen() % 3 == 0) ? "ACGT"[gen() % 4] : sh[k % 90];
  TestRun r(lg, sh);
  const RunOutcome& out = r.run({.EFWS = "30", .EFIdentities = "100", .EFSD = "5", .CBClipboard = true}).out;

  // The exact scores of the rows, and the scores their bytes stand for.
  std::vector<double> exact, decoded;
  for (const std::string& row : r.rows) {
    std::size_t t2 = row.find('\t', row.find('\t') + 1), t3 = row.find('\t', t2 + 1);
    if (t3 == std::string::npos || t3 + 1 == row.size()) continue;  // tail rows
    double score = std::stod(row.substr(t2 + 1, t3 - t2 - 1));
    exact.push_back(score);
    int byte = static_cast<int>(255.0 - score * (250.0 / 30.0));
    decoded.push_back((255 - byte) * 30 / 250.0);
  }
  ASSERT_GT(exact.size(), 300u);
  double mean = 0;
  for (double v : exact) mean += v;
  mean /= exact.size();
  auto split = [&](const std::vector<double>& v, bool lowSide) {
    double sum = 0;
    int n = 0;
    for (double x : v)
      if ((mean > x) == lowSide) sum += (x - mean) * (x - mean), ++n;
    return std::sqrt(sum / n);
  };
  EXPECT_NEAR(out.meangraph, mean, 1e-4);
  EXPECT_NEAR(out.sumu2bas, split(decoded, true), 1e-4);
  EXPECT_NEAR(out.sumu2up, split(decoded, false), 1e-4);
  // From the exact scores the values would differ visibly.
  EXPECT_GT(std::fabs(split(exact, true) - split(decoded, true)) +
                std::fabs(split(exact, false) - split(decoded, false)),
            1e-3);
  EXPECT_EQ(valueOf(out.report, "SD low="), CStr(out.sumu2bas));
  EXPECT_EQ(valueOf(out.report, "SD up="), CStr(out.sumu2up));
}

TEST(Report, ScaleLimitIsOneTheNextTenthOrTheMaximum) {
  struct Row { float max; int32_t W; bool freq; const char* limit; };
  for (const Row& r : {Row{30, 30, true, "1"}, Row{24, 30, true, "0.9"}, Row{27, 30, true, "1"},
                       Row{29.5f, 30, true, "1"}, Row{0, 30, true, "0.1"}, Row{14, 20, true, "0.8"},
                       Row{24, 30, false, "24"}, Row{17.5f, 100, false, "17.5"},
                       Row{0, 0, true, "1"},  // 0 equals W = 0
                       Row{3, 0, true, "Infinity"}})
    EXPECT_EQ(scaleLimit(r.max, r.W, r.freq), r.limit) << r.max << " of " << r.W;
}

TEST(Report, WindowOfOneLeavesTheFilledStartInTheFile) {
  std::filesystem::path path = std::filesystem::temp_directory_path() / "trelvane_engine_w1.txt";
  TestRun("ACGTACGTAC", "GTA").run({.EFWS = "1", .EFSD = "2", .CBFile = true, .resultPath = path.string()});
  std::string file = testing::readBytes(path.string());
  std::filesystem::remove(path);
  // No tail sets the zero at nbbases: the bytes run to the end of the filling.
  std::string bytes = file.substr(file.find("\n#\n") + 3);
  EXPECT_EQ(bytes.size(), 400u);
  EXPECT_EQ(bytes[10], '\x02');
}

TEST(Report, ResultFileReplacesTheOldOneWholeAndADeviceIsWrittenInPlace) {
  std::filesystem::path path = std::filesystem::temp_directory_path() /
                               ("trelvane_engine_replace_" + std::to_string(::getpid()) + ".txt");
  { std::ofstream(path) << "the result of before"; }
  TestRun r("ACGTACGTAC", "GTAC");
  r.run({.EFWS = "4", .EFSD = "2", .CBFile = true, .resultPath = path.string()});
  EXPECT_TRUE(r.out.resultWritten);
  EXPECT_EQ(testing::readBytes(path.string()).rfind("Trelvane comparison\n", 0), 0u);
  EXPECT_FALSE(std::filesystem::exists(path.string() + ".part"));
  std::filesystem::remove(path);
  // A device takes the bytes where it stands; no file is made beside it.
  TestRun d("ACGTACGTAC", "GTAC");
  d.run({.EFWS = "4", .EFSD = "2", .CBFile = true, .resultPath = "/dev/null"});
  EXPECT_TRUE(d.out.resultWritten);
  EXPECT_FALSE(std::filesystem::exists("/dev/null.part"));
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

TEST(Report, CancelledSaveDialogStillSaysSaved) {
  TestRun r("ACGTACGTAC", "GTAC");
  r.run({.EFWS = "4", .EFSD = "2", .CBFile = true});  // no resultPath: the dialog was cancelled
  EXPECT_FALSE(r.out.resultWritten);
  EXPECT_EQ(r.out.report.substr(r.out.report.size() - 17), "\nResult is saved\n");
  EXPECT_EQ(r.host.clipboardCalls, 0);
}

TEST(Report, SequenceTextShowsThe1000FirstBasesIn31LetterLines) {
  std::string lg;
  for (int k = 0; k < 1001; ++k) lg += "ACGT"[k % 4];
  TestRun r(lg, "GTACGT");
  r.run({.EFWS = "6", .EFIdentities = "100", .EFSD = "1", .display0 = true, .Display1 = true});
  std::vector<std::string> lines = linesOf(r.out.report);
  EXPECT_EQ(lines[0], "First sequence");
  EXPECT_EQ(lines[1], "1001");
  for (int k = 2; k < 34; ++k) EXPECT_EQ(lines[k].size(), 31u) << k;
  // 32 lines of 31 letters, then the last 8 with the note right behind them.
  EXPECT_EQ(lines[34], lg.substr(992, 8) + "Only the first 1000 bases are shown...");
  EXPECT_EQ(lines[35], "");
  EXPECT_EQ(lines[36], "Second sequence");
  EXPECT_EQ(lines[37], "6");
  // Fewer than 31 letters end without a line end of their own: the one
  // closing EOL follows them, and no empty line.
  EXPECT_EQ(lines[38], "GTACGT");
  EXPECT_EQ(lines[39], "Trelvane comparison");
}

}  // namespace
}  // namespace trelvane
