// picture_option_test.cpp -- --svg, --pdf, --png and --dotplot: the pictures of the run.
#include <string>

#include "cli_harness.h"

namespace trelvane::cli::testing {
namespace {

class PictureOption : public CliTest {
 protected:
  void SetUp() override {
    CliTest::SetUp();
    std::string bases = pseudoBases(300, 5);
    longPath_ = fasta("long.fa", bases);
    shortPath_ = fasta("short.fa", bases.substr(100, 80));
  }
  std::vector<std::string> args(std::vector<std::string> extra) const {
    std::vector<std::string> a = {"compare", longPath_, shortPath_, "--seed", "1"};
    a.insert(a.end(), extra.begin(), extra.end());
    return a;
  }
  std::string longPath_, shortPath_;
};

// The option, not the extension, chooses the format.
TEST_F(PictureOption, EachFormatHasItsOwnSignature) {
  Captured r = runCli(args({"--svg", path("p.png"), "--pdf", path("p.pdf"), "--png", path("p.svg"), "--dotplot",
                            path("d.svg")}));
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out, "");
  std::string svg = readFile(path("p.png"));
  EXPECT_NE(svg.find("<svg"), std::string::npos);
  EXPECT_NE(svg.find("</svg>"), std::string::npos);
  EXPECT_EQ(readFile(path("p.pdf")).rfind("%PDF-", 0), 0u);
  EXPECT_EQ(readFile(path("p.svg")).rfind("\x89PNG\r\n\x1a\n", 0), 0u);
  EXPECT_NE(readFile(path("d.svg")).find("<svg"), std::string::npos);
}

TEST_F(PictureOption, NoProfileAtWindowZeroIsBadInputAfterTheOtherOutputs) {
  // An empty window size runs (250 / W is infinite) but Graph draws nothing.
  Captured r = runCli(args({"--window", "", "--report", path("r.txt"), "--svg", path("p.svg")}));
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.err, "trelvane-cli: no profile was drawn (window size 0): " + path("p.svg") +
                       " was not written\n");
  EXPECT_NE(readFile(path("r.txt")).find("Window size=0\n"), std::string::npos);
  EXPECT_FALSE(fs::exists(path("p.svg")));
}

TEST_F(PictureOption, ProfileToStandardOutputIsTheFileBytes) {
  Captured f = runCli(args({"--svg", path("p.svg"), "--result", path("o.txt")}));
  Captured o = runCli(args({"--svg", "-"}));
  Captured both = runCli(args({"--svg", "-", "--result", "-"}));
  ASSERT_EQ(f.status, 0) << f.err;
  ASSERT_EQ(o.status, 0) << o.err;
  ASSERT_EQ(both.status, 0) << both.err;
  EXPECT_EQ(o.out, readFile(path("p.svg")));
  // The result file first, then the drawing.
  EXPECT_EQ(both.out, readFile(path("o.txt")) + readFile(path("p.svg")));
}

TEST_F(PictureOption, TheDrawingFollowsTheAnalysedRange) {
  // --to goes into EFTo through EFAnaTo's change handler: the X axis ends there.
  Captured wide = runCli(args({"--svg", path("wide.svg")}));
  Captured narrow = runCli(args({"--to", "100", "--svg", path("narrow.svg")}));
  ASSERT_EQ(wide.status, 0) << wide.err;
  ASSERT_EQ(narrow.status, 0) << narrow.err;
  std::string w = readFile(path("wide.svg")), n = readFile(path("narrow.svg"));
  EXPECT_NE(w, n);
  EXPECT_NE(n.find(">100<"), std::string::npos);
}

}  // namespace
}  // namespace trelvane::cli::testing
