// export_test.cpp -- File > Export against trelvane-cli on the same run, the profile's tooltip, the shaded segments.
#include <QAction>
#include <QHelpEvent>
#include <QMenuBar>
#include <QPushButton>
#include <QToolTip>

#include <algorithm>
#include <cstdio>
#include <regex>
#include <sstream>

#include "cli/cli.h"
#include "plots/picture.h"
#include "shell_fixture.h"

namespace trelvane::shell::test {
namespace {

class Export : public ShellTest {
 protected:
  // The bundled example run in the window, with the seed the CLI is given.
  void run() {
    w().runSeed = [] { return uint64_t{1}; };
    choose(0, examplePath("HUMHBB.fa"));
    choose(1, examplePath("V00508.fa"));
    w().PBRUN->click();
    ASSERT_TRUE(waitFor([&] { return !w().state().running && w().PBRUN->text() == "Run"; }));
    ASSERT_EQ(w().state().nbbases, 73308);
  }
  // File > Export's item into a file of the folder.
  std::string exported(const char* item, const char* name) {
    const std::string path = tempPath(name);
    w().saveDialog = [path] { return std::optional(path); };
    w().menuBar()->findChild<QAction*>(QString::fromLatin1(item))->trigger();
    EXPECT_EQ(w().form().Message, "Exported to " + path);
    return path;
  }
  // trelvane-cli compare on the same files; its status.
  int cli(std::vector<std::string> args) {
    args.insert(args.begin(), {"compare", examplePath("HUMHBB.fa"), examplePath("V00508.fa"), "--seed", "1", "--quiet"});
    for (std::string& a : args)
      if (a.rfind("$DIR/", 0) == 0) a = tempPath(a.c_str() + 5);
    cli::Console c{std::tmpfile(), std::tmpfile(), false};
    const int status = cli::cliMain(args, c);
    std::fclose(c.out);
    std::fclose(c.err);
    return status;
  }
  // The bands of shaded segments in the last drawing: their left edges.
  std::vector<double> bands() {
    std::vector<double> x;
    for (const plots::Shape& s : w().state().pct->Objects.items)
      if (const auto* r = std::get_if<plots::RectShape>(&s); r && r->FillColor == plots::RGB{255, 236, 179})
        x.push_back(r->X);
    return x;
  }
  static int lines(const std::string& path) {
    const std::string text = readBytes(path);
    return static_cast<int>(std::count(text.begin(), text.end(), '\n'));
  }
  std::string tip(int x) {
    QWidget* canvas = find("Canvas1");
    QHelpEvent event(QEvent::ToolTip, QPoint(x, 100), canvas->mapToGlobal(QPoint(x, 100)));
    QApplication::sendEvent(canvas, &event);
    return QToolTip::isVisible() ? QToolTip::text().toStdString() : "";
  }
};

TEST_F(Export, FilesAreThoseOfTheCliForTheSameRunAndRule) {
  run();
  const std::string bedGraph = exported("ExportBedGraph", "w.bedGraph"), bigWig = exported("ExportBigWig", "w.bw");
  const std::string bed = exported("ExportSegmentsBed", "w.bed"), tsv = exported("ExportSegmentsTsv", "w.tsv");
  exported("ExportRandom", "w");
  ASSERT_EQ(cli({"--bedgraph", "$DIR/c.bedGraph", "--bigwig", "$DIR/c.bw", "--segments", "$DIR/c.bed",
                 "--segments-tsv", "$DIR/c.tsv", "--h0-tracks", "$DIR/c"}), 0);
  EXPECT_EQ(readBytes(bedGraph), readBytes(tempPath("c.bedGraph")));
  EXPECT_EQ(readBytes(bigWig), readBytes(tempPath("c.bw")));
  EXPECT_EQ(readBytes(bed), readBytes(tempPath("c.bed")));
  EXPECT_EQ(readBytes(tsv), readBytes(tempPath("c.tsv")));
  EXPECT_EQ(lines(bed), 12);
  for (const char* line : {"mean", "upper", "lower", "max"})
    EXPECT_EQ(readBytes(tempPath("w.") + line + ".bedGraph"), readBytes(tempPath("c.") + line + ".bedGraph")) << line;

  // the Pref tab's rule is the CLI's --above and --min-length
  w().TabPanel1->setCurrentIndex(4);
  typeInto("EFSegThreshold", "mean+3sd");
  leave("EFSegThreshold");
  typeInto("EFSegLength", "40");
  leave("EFSegLength");
  const std::string above = exported("ExportSegmentsBed", "above.bed");
  ASSERT_EQ(cli({"--segments", "$DIR/c-above.bed", "--above", "mean+3sd", "--min-length", "40"}), 0);
  EXPECT_EQ(readBytes(above), readBytes(tempPath("c-above.bed")));
  EXPECT_NE(lines(above), 12);
}

TEST_F(Export, PrefRuleTakesWhatTheCliTakesAndFallsBackOnItsDefault) {
  w().TabPanel1->setCurrentIndex(4);
  for (const char* bad : {"0.7x", "1.5", "mean+sd", "maximum", "-0.1"}) {
    typeInto("EFSegThreshold", bad);
    leave("EFSegThreshold");
    EXPECT_EQ(w().form().EFSegThreshold, "0.70") << bad;
    EXPECT_EQ(w().form().Message, "invalid threshold '" + std::string(bad) +
                                      "': expected a fraction from 0 to 1 (such as 0.70), mean, mean+Ksd (such as "
                                      "mean+3sd) or max");
  }
  typeInto("EFSegLength", "0");
  leave("EFSegLength");
  EXPECT_EQ(w().form().EFSegLength, "100");
  EXPECT_EQ(w().form().Message, "invalid minimum length '0': expected a whole number of positions from 1");
  for (const char* good : {"max", "mean", "mean+2.5sd", "1", "0.9"}) {
    typeInto("EFSegThreshold", good);
    leave("EFSegThreshold");
    EXPECT_EQ(w().form().EFSegThreshold, good);
  }
}

TEST_F(Export, HoverTellsPositionScoreAndSdsAboveTheRandomMean) {
  run();
  w().TabPanel1->setCurrentIndex(3);
  const int width = find("Canvas1")->width();
  EXPECT_EQ(tip(5), "");  // left of the plot
  // the plot's two ends are the first and the last window
  EXPECT_EQ(tip(30).rfind("Position 1 (HUMHBB:1): score ", 0), 0u) << tip(30);
  EXPECT_EQ(tip(width - 30).rfind("Position 73279 (HUMHBB:73279): score ", 0), 0u) << tip(width - 30);

  // inside: the bedGraph's value and the result head's random mean and SD
  ASSERT_EQ(cli({"--bedgraph", "$DIR/c.bedGraph", "--result", "$DIR/c.txt"}), 0);
  const std::string text = tip(width / 2);
  std::smatch m;
  ASSERT_TRUE(std::regex_match(text, m, std::regex(R"(Position (\d+) \(HUMHBB:\1\): score (\d+) of 30, (-?\d+\.\d) SD from the random mean)")))
      << text;
  const long pos = std::stol(m[1]);
  double fraction = -1;
  std::istringstream bg(readBytes(tempPath("c.bedGraph")));
  for (std::string chrom; bg >> chrom;) {
    long start = 0, end = 0;
    double v = 0;
    bg >> start >> end >> v;
    if (start < pos && pos <= end) fraction = v;
  }
  EXPECT_NEAR(std::stod(m[2]) / 30, fraction, 1e-6);
  const std::string head = readBytes(tempPath("c.txt"));
  const double mean = std::stod(head.substr(head.find("Mean H0=") + 8)), sd = std::stod(head.substr(head.find("SD H0=") + 6));
  EXPECT_NEAR(std::stod(m[3]), (std::stod(m[2]) - mean) / sd, 0.05 + 1e-9);
}

TEST_F(Export, ShadingOnlyWithThePrefBoxAndFollowingTheThreshold) {
  run();
  w().TabPanel1->setCurrentIndex(3);
  EXPECT_TRUE(bands().empty());
  w().TabPanel1->setCurrentIndex(4);
  find<QAbstractButton>("CBShadeSegments")->click();
  w().TabPanel1->setCurrentIndex(3);
  const std::vector<double> at70 = bands();
  EXPECT_EQ(at70.size(), 12u);  // the CLI's segments of this run at 0.70 over 100

  w().TabPanel1->setCurrentIndex(4);
  typeInto("EFSegThreshold", "0.9");
  leave("EFSegThreshold");
  w().TabPanel1->setCurrentIndex(3);
  ASSERT_EQ(cli({"--segments", "$DIR/c90.bed", "--min-identity", "0.9"}), 0);
  const std::vector<double> at90 = bands();
  EXPECT_EQ(static_cast<int>(at90.size()), lines(tempPath("c90.bed")));
  EXPECT_NE(at90, at70);
  EXPECT_TRUE(std::is_sorted(at90.begin(), at90.end()));

  w().TabPanel1->setCurrentIndex(4);
  find<QAbstractButton>("CBShadeSegments")->click();
  w().TabPanel1->setCurrentIndex(3);
  EXPECT_TRUE(bands().empty());
}

}  // namespace
}  // namespace trelvane::shell::test
