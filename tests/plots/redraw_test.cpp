// redraw_test.cpp -- trelvane-cli redraw in-process: the golden drawings and its exit statuses.
#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "cli/commands.h"
#include "plots/shapes_text.h"
#include "test_state.h"

namespace trelvane {
namespace {

namespace fs = std::filesystem;
using testing::readFile;

const std::string kGolden = std::string(TRELVANE_TEST_DATA) + "/golden/";

class Redraw : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = fs::temp_directory_path() / ("plots_redraw_" + std::to_string(::getpid()) + "_" +
                                        ::testing::UnitTest::GetInstance()->current_test_info()->name());
    fs::create_directories(dir_);
  }
  void TearDown() override { fs::remove_all(dir_); }
  std::string out(const std::string& name) const { return (dir_ / name).string(); }

  fs::path dir_;
};

// D1: a CpG result at the defaults; D2: number unit, observed mean and SD,
// a range (its options in any order); D3: default format, symmetric SD, a large window.
TEST_F(Redraw, GoldenDrawings) {
  const std::string s = out("d.shapes");
  const std::pair<const char*, std::vector<std::string>> rows[] = {
      {"D1", {kGolden + "S2.result", "--shapes", s}},
      {"D2", {kGolden + "S3.result", "--unit", "number", "--mean-sd", "observed", "--from", "100", "--to", "350",
              "--shapes", s}},
      {"D2", {"--shapes", s, "--to", "350", "--from=100", "--mean-sd", "observed", kGolden + "S3.result", "--unit",
              "number"}},
      {"D3", {kGolden + "S3.result", "--default-format", "--mean-sd", "symmetric", "--size", "1000x700", "--shapes", s}},
  };
  for (const auto& [golden, args] : rows) {
    ASSERT_EQ(cli::runRedraw(args), 0) << golden;
    const std::string want = readFile(kGolden + golden + ".shapes");
    ASSERT_FALSE(want.empty());
    EXPECT_EQ(readFile(s), want) << golden;
  }
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(cli::runRedraw({kGolden + "S2.result", "--shapes", "-"}), 0);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), readFile(kGolden + "D1.shapes"));
}

// A result file written by hand: window 10, 60 positions, every byte a
// score of 5 but position 25, an N window.
std::string handResult(const std::string& path, int window = 10) {
  std::string text = "Trelvane comparison\nWindow size=" + std::to_string(window) +
                     "\nMean H0=4\nSD H0=0.5\nMax H0=6\nBases=60\nBases1=0\n#\n";
  std::string bytes(60, static_cast<char>(130));
  bytes[25] = 1;
  std::FILE* f = std::fopen(path.c_str(), "wb");
  std::fwrite(text.data(), 1, text.size(), f);
  std::fwrite(bytes.data(), 1, bytes.size(), f);
  std::fclose(f);
  return path;
}

TEST_F(Redraw, LongSequenceGivesTheNBarsOfItsRuns) {
  std::string result = handResult(out("r.result"));
  std::string longest = out("long.fa");
  std::FILE* f = std::fopen(longest.c_str(), "wb");
  std::fputs(">x\nACGTACGTACGTACGTACGTANNNNACGTACGTACGTACGTACGTACGTACGTACGTAC\n", f);
  std::fclose(f);
  std::string shapes = out("n.shapes");
  ASSERT_EQ(cli::runRedraw({result, "--long", longest, "--shapes", shapes}), 0);
  // positions 21 to 24 are N: the bar runs from the pixel column of 21 to that of 25
  double xfactor = static_cast<float>(292.0 / 50.0);
  std::string bar = "line " + plots::coordinateText(xfactor * 21 + 30) + " 17 " +
                    plots::coordinateText(xfactor * 25 + 30) + " 17 0 0 0\n";
  std::string text = readFile(shapes);
  auto at = text.find(bar);
  ASSERT_NE(at, std::string::npos) << text;
  EXPECT_EQ(text.find(" 17 0 0 0\n", at + bar.size()), std::string::npos);  // one bar only
  // without the sequence, m0 is empty and no bar is drawn
  ASSERT_EQ(cli::runRedraw({result, "--shapes", shapes}), 0);
  EXPECT_EQ(readFile(shapes).find(" 17 0 0 0\n"), std::string::npos);
}

TEST_F(Redraw, HandlersFollowTheFixedOrder) {
  std::string result = handResult(out("r.result"));
  std::string shapes = out("s.shapes");
  // the unit converts the default scale through the window size field: 0..1 -> 0..12
  ASSERT_EQ(cli::runRedraw({result, "--ymax", "9", "--unit", "number", "--window", "12", "--shapes", shapes}), 0);
  std::string text = readFile(shapes);
  // --ymax came after the unit: Y labels 0 to 9
  auto last = text.rfind("\ntext 10 ");
  ASSERT_NE(last, std::string::npos);
  EXPECT_EQ(text.substr(last, text.find('\n', last + 1) - last), "\ntext 10 24.999994277954102 14 0 Times 9");
  std::size_t yLabels = 0;
  for (auto at = text.find("\ntext 10 "); at != std::string::npos; at = text.find("\ntext 10 ", at + 1)) ++yLabels;
  EXPECT_EQ(yLabels, 10u);
}

TEST_F(Redraw, SizeBelowTheMinimumAndPreferenceSwitches) {
  std::string result = handResult(out("r.result"));
  std::string shapes = out("m.shapes");
  ASSERT_EQ(cli::runRedraw({result, "--size", "300x300", "--no-maxmin", "--no-max-h0", "--shapes", shapes}), 0);
  std::string text = readFile(shapes);
  EXPECT_EQ(text.rfind("line 29 20 29 230 0 0 0\n", 0), 0u);  // held to 400 x 450: Canvas1 352 x 250
  EXPECT_EQ(text.find(" 0 0 255\n"), std::string::npos);
}

TEST_F(Redraw, ResultWithWindowZeroWritesOnlyTheFields) {
  std::string result = handResult(out("r.result"), 0);
  std::string shapes = out("z.shapes");
  ASSERT_EQ(cli::runRedraw({result, "--from", "7", "--shapes", shapes}), 0);
  EXPECT_EQ(readFile(shapes), "field ST_messGraph \nfield EFFrom 7\nfield EFTo max\n");
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(cli::runRedraw({result, "--svg", out("z.svg")}), 1);
  EXPECT_NE(::testing::internal::GetCapturedStderr().find("was not written"), std::string::npos);
}

TEST_F(Redraw, DrawingFilesInEachFormat) {
  std::string svg = out("d.svg"), pdf = out("d.pdf"), png = out("d.png");
  ASSERT_EQ(cli::runRedraw({kGolden + "S3.result", "--svg", svg, "--pdf", pdf, "--png", png}), 0);
  EXPECT_NE(readFile(svg).find("<svg"), std::string::npos);
  EXPECT_EQ(readFile(pdf).rfind("%PDF-", 0), 0u);
  EXPECT_EQ(readFile(png).substr(1, 3), "PNG");
}

TEST_F(Redraw, ExitStatuses) {
  std::string notResult = out("plain.fa");
  std::FILE* f = std::fopen(notResult.c_str(), "wb");
  std::fputs(">x\nACGT\n", f);
  std::fclose(f);
  const struct {
    std::vector<std::string> args;
    int status;
    const char* message;
  } cases[] = {
      {{out("missing.result")}, 1, "cannot read"},
      {{notResult}, 1, "is not a Trelvane result file"},
      {{kGolden + "S2.result", "--long", out("missing.fa")}, 1, "cannot read"},
      {{}, 2, "missing operand: RESULT"},
      {{kGolden + "S2.result", kGolden + "S3.result"}, 2, "extra operand"},
      {{kGolden + "S2.result", "--bogus"}, 2, "unrecognized option '--bogus'"},
      {{kGolden + "S2.result", "--from"}, 2, "requires an argument"},
      {{kGolden + "S2.result", "--mean-sd", "median"}, 2, "--mean-sd takes"},
      {{kGolden + "S2.result", "--unit", "percent"}, 2, "--unit takes"},
      {{kGolden + "S2.result", "--size", "800"}, 2, "--size needs"},
      {{kGolden + "S2.result", "--svg", out("x.gif")}, 2, ".svg, .pdf or .png"},
      {{kGolden + "S2.result", "--cpg=1"}, 2, "doesn't allow an argument"},
  };
  for (const auto& c : cases) {
    ::testing::internal::CaptureStderr();
    int status = cli::runRedraw(c.args);
    std::string err = ::testing::internal::GetCapturedStderr();
    EXPECT_EQ(status, c.status) << c.message;
    EXPECT_NE(err.find(c.message), std::string::npos) << err;
    EXPECT_EQ(err.find("trelvane-cli: "), 0u) << err;
  }
}

}  // namespace
}  // namespace trelvane
