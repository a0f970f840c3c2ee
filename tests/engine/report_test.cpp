// report_test.cpp -- statistics, the result block, its three destinations and the scale limit.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <random>

#include "engine/profile.h"
#include "engine_test_util.h"
#include "platform/numtext.h"

namespace trelvane {
namespace {

using testing::linesOf;
using testing::RecordingHost;
using testing::rowsOf;

std::string valueOf(const std::string& report, const std::string& key) {
  for (const std::string& l : linesOf(report))
    if (l.rfind(key, 0) == 0) return l.substr(key.size());
  return "(missing)";
}

TEST(Report, CompositionTakesTheNCountOffEveryBase) {
  ComparisonState st;
  testing::openWith(st, "NNAAATTCGG", "AATTN");
  RunSettings s;
  s.EFWS = "4";
  s.EFSD = "1";
  RecordingHost host(st);
  RunOutcome out = rumcompute(st, s, host);
  // (count - N) / (length - N): the four fractions do not add up to 1.
  EXPECT_NE(out.report.find("Longest sequence\nN\t2\t0.2\nA\t3\t0.125\nT\t2\t0\nC\t1\t-0.125\nG\t2\t0\n"
                            "Shortest sequence\nN\t1\t0.2\nA\t2\t0.25\nT\t2\t0.25\nC\t0\t-0.25\nG\t0\t-0.25\n"),
            std::string::npos);
}

TEST(Report, SplitSdComesFromTheProfileBytes) {
  std::mt19937 gen(5);
  std::string sh, lg;
  for (int k = 0; k < 90; ++k) sh += "ACGT"[gen() % 4];
  for (int k = 0; k < 400; ++k) lg += (gen() % 3 == 0) ? "ACGT"[gen() % 4] : sh[k % 90];
  ComparisonState st;
  testing::openWith(st, lg, sh);
  RunSettings s;
  s.EFWS = "30";
  s.EFSD = "5";
  s.EFIdentities = "100";
  s.CBClipboard = true;
  RecordingHost host(st);
  RunOutcome out = rumcompute(st, s, host);

  // The exact scores of the rows, and the scores their bytes stand for.
  std::vector<double> exact, decoded;
  for (const std::string& row : linesOf(rowsOf(host.clipboard))) {
    std::vector<std::string> f;
    std::size_t start = 0;
    for (std::size_t tab; (tab = row.find('\t', start)) != std::string::npos; start = tab + 1)
      f.push_back(row.substr(start, tab - start));
    f.push_back(row.substr(start));
    if (f.size() < 4 || f[3].empty()) continue;
    double score = std::stod(f[2]);
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

TEST(Report, ScoresEqualToTheMeanCountOnTheUpperSide) {
  // Every window matches in full: all scores are 10, the mean too.
  ComparisonState st;
  testing::openWith(st, std::string(30, 'A'), std::string(12, 'A'));
  RunSettings s;
  s.EFWS = "10";
  s.EFSD = "1";
  s.EFIdentities = "100";
  RecordingHost host(st);
  RunOutcome out = rumcompute(st, s, host);
  EXPECT_NE(out.report.find("Max=10\nMean=10\nSD=0\n"), std::string::npos);
  EXPECT_NE(out.report.find("SD low=NaN\nSD up=0\n"), std::string::npos);
}

TEST(Report, AllWindowsWithAnNGiveNotANumberTexts) {
  ComparisonState st;
  testing::openWith(st, "ANAANAANAANAANA", "ACGTA");
  RunSettings s;
  s.EFWS = "4";
  s.EFSD = "2";
  RecordingHost host(st);
  RunOutcome out = rumcompute(st, s, host);
  EXPECT_NE(out.report.find("Max=0\nMean=NaN\nSD=NaN\n"), std::string::npos);
  EXPECT_NE(out.report.find("SD low=NaN\nSD up=NaN\n"), std::string::npos);
  EXPECT_NE(out.report.find("Average identity:NaN\nSD:NaN\n\n"), std::string::npos);
  for (int i = 0; i <= 11; ++i) EXPECT_EQ(st.m2.get(i), 1) << i;
  EXPECT_TRUE(std::isnan(out.meangraph));
}

TEST(Report, ScaleLimitIsOneTheNextTenthOrTheMaximum) {
  EXPECT_EQ(scaleLimit(30.0f, 30, true), "1");
  EXPECT_EQ(scaleLimit(24.0f, 30, true), "0.9");
  EXPECT_EQ(scaleLimit(27.0f, 30, true), "1");
  EXPECT_EQ(scaleLimit(29.5f, 30, true), "1");
  EXPECT_EQ(scaleLimit(0.0f, 30, true), "0.1");
  EXPECT_EQ(scaleLimit(14.0f, 20, true), "0.8");
  EXPECT_EQ(scaleLimit(24.0f, 30, false), "24");
  EXPECT_EQ(scaleLimit(17.5f, 100, false), "17.5");
  EXPECT_EQ(scaleLimit(0.0f, 0, true), "1");  // 0 equals W = 0
  EXPECT_EQ(scaleLimit(3.0f, 0, true), "Infinity");
}

TEST(Report, DestinationsShareTheHeadAndDifferBehindIt) {
  ComparisonState st;
  testing::openWith(st, "TTGACGTACGATCGATGGCA", "ACGTACGATC");
  RunSettings s;
  s.EFWS = "6";
  s.EFSD = "4";
  s.EFIdentities = "100";
  s.CBClipboard = true;
  s.CBFile = true;
  std::filesystem::path path = std::filesystem::temp_directory_path() / "trelvane_engine_destinations.txt";
  s.resultPath = path.string();
  RecordingHost host(st);
  RunOutcome out = rumcompute(st, s, host);
  ASSERT_TRUE(out.resultWritten);
  std::string file = testing::readBytes(path.string());
  std::filesystem::remove(path);

  std::size_t hash = file.find("\n#\n");
  ASSERT_NE(hash, std::string::npos);
  std::string block = file.substr(0, hash + 1);
  EXPECT_EQ(block.substr(0, 35), "Trelvane comparison\nWindow size=6\nM");
  EXPECT_EQ(host.clipboard.substr(0, hash + 3), file.substr(0, hash + 3));
  // The report: the same block without "#", then the averages and the notes.
  EXPECT_EQ(out.report.substr(0, block.size()), block);
  EXPECT_EQ(out.report.substr(block.size()),
            "Average identity:" + Format(out.meangraph, "###.###") + "\nSD:" + Format(out.sdgraph, "###.###") +
                "\n\nResult is copied into the clipboard\nResult is saved\n");
  // The file: exactly nbbases profile bytes, as the last tail write ends them.
  std::string bytes = file.substr(hash + 3);
  ASSERT_EQ(bytes.size(), 20u);
  for (int i = 0; i < 20; ++i) EXPECT_EQ(static_cast<uint8_t>(bytes[i]), st.m2.get(i)) << i;
  EXPECT_EQ(st.m2.get(15), 2);
  // The clipboard: rows, 15 scored and 5 tail rows.
  EXPECT_EQ(linesOf(rowsOf(host.clipboard)).size(), 20u);
}

TEST(Report, WindowOfOneLeavesTheFilledStartInTheFile) {
  ComparisonState st;
  testing::openWith(st, "ACGTACGTAC", "GTA");
  RunSettings s;
  s.EFWS = "1";
  s.EFSD = "2";
  s.CBFile = true;
  std::filesystem::path path = std::filesystem::temp_directory_path() / "trelvane_engine_w1.txt";
  s.resultPath = path.string();
  RecordingHost host(st);
  rumcompute(st, s, host);
  std::string file = testing::readBytes(path.string());
  std::filesystem::remove(path);
  // No tail sets the zero at nbbases: the bytes run to the end of the filling.
  std::string bytes = file.substr(file.find("\n#\n") + 3);
  EXPECT_EQ(bytes.size(), 400u);
  EXPECT_EQ(bytes[10], '\x02');
}

TEST(Report, CancelledSaveDialogStillSaysSaved) {
  ComparisonState st;
  testing::openWith(st, "ACGTACGTAC", "GTAC");
  RunSettings s;
  s.EFWS = "4";
  s.EFSD = "2";
  s.CBFile = true;  // no resultPath: the dialog was cancelled
  RecordingHost host(st);
  RunOutcome out = rumcompute(st, s, host);
  EXPECT_FALSE(out.resultWritten);
  EXPECT_EQ(out.report.substr(out.report.size() - 17), "\nResult is saved\n");
  EXPECT_EQ(host.clipboardCalls, 0);
}

TEST(Report, SequenceTextShowsThe1000FirstBasesIn31LetterLines) {
  std::string lg;
  for (int k = 0; k < 1001; ++k) lg += "ACGT"[k % 4];
  ComparisonState st;
  testing::openWith(st, lg, "GTACGT");
  RunSettings s;
  s.EFWS = "6";
  s.EFSD = "1";
  s.EFIdentities = "100";
  s.display0 = true;
  s.Display1 = true;
  RecordingHost host(st);
  RunOutcome out = rumcompute(st, s, host);
  std::vector<std::string> lines = linesOf(out.report);
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
