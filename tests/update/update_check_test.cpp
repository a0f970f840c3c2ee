// update_check_test.cpp -- the update check's texts, against pages and failures of a site on 127.0.0.1.
#include <gtest/gtest.h>

#include <QCoreApplication>

#include <memory>
#include <string>
#include <vector>

#include "update/update_check.h"
#include "update_site.h"

namespace trelvane::update {
namespace {

using test::runFor;
using test::runUntil;
using test::UpdateSite;

[[maybe_unused]] ::testing::Environment* const qtEnvironment =
    ::testing::AddGlobalTestEnvironment(new testsupport::CoreApplicationEnvironment);

const char kVersion[] = "1.0.0 Trelvane for Test";

// pageText, row by row

struct PageCase {
  const char* name;
  const char* version;
  std::string content;
  std::string text;  // behind the version line
  bool upgrade;
};

class PageTextTest : public ::testing::TestWithParam<PageCase> {};

TEST_P(PageTextTest, ShowsFirstLineAndVerdict) {
  const PageCase& c = GetParam();
  bool upgrade = !c.upgrade;
  EXPECT_EQ(pageText(c.version, c.content, &upgrade), "Your version is " + std::string(c.version) + "\n" + c.text);
  EXPECT_EQ(upgrade, c.upgrade);
}

INSTANTIATE_TEST_SUITE_P(
    Pages, PageTextTest,
    ::testing::Values(
        PageCase{"equal_first_word_more_text", kVersion, "1.0.0 released in spring\nnotes",
                 "Up-to-date version is 1.0.0 released in spring\nYou're up-to-date !", false},
        PageCase{"letter_case_ignored", "1.0.0b Trelvane", "1.0.0B\n", "Up-to-date version is 1.0.0B\nYou're up-to-date !",
                 false},
        PageCase{"newer_with_two_lines", kVersion, "1.1.0\nFaster scans\nA PDF writer",
                 "Up-to-date version is 1.1.0\nYou need to upgrade !\nFaster scans\nA PDF writer", true},
        PageCase{"trailing_line_end_gives_empty_last_line", kVersion, "1.1.0\nFaster scans\n",
                 "Up-to-date version is 1.1.0\nYou need to upgrade !\nFaster scans\n", true},
        PageCase{"crlf_keeps_cr_in_the_word", kVersion, "1.0.0\r\nnotes\r\n",
                 "Up-to-date version is 1.0.0\r\nYou need to upgrade !\nnotes\r\n", true},
        PageCase{"no_lf_is_one_line", kVersion, "1.0.0 and\rmore", "Up-to-date version is 1.0.0 and\rmore\nYou're up-to-date !",
                 false},
        PageCase{"empty_page", kVersion, "", "Up-to-date version is \nYou need to upgrade !", true},
        PageCase{"local_newer_than_site_still_upgrades", "2.0.0 Trelvane", "1.9.9\n",
                 "Up-to-date version is 1.9.9\nYou need to upgrade !\n", true},
        PageCase{"not_a_version_page", kVersion, "<html>\n<body>Hello</body>\n</html>",
                 "Up-to-date version is <html>\nYou need to upgrade !\n<body>Hello</body>\n</html>", true},
        PageCase{"leading_blank_is_an_empty_word", kVersion, " 1.0.0\n",
                 "Up-to-date version is  1.0.0\nYou need to upgrade !\n", true}),
    [](const ::testing::TestParamInfo<PageCase>& info) { return std::string(info.param.name); });

// The check on a live site

class UpdateCheckTest : public ::testing::Test {
 protected:
  // A check of the site's update folder that records every text it shows.
  std::unique_ptr<UpdateCheck> startCheck(const std::string& base, const std::string& version = kVersion) {
    auto check = std::make_unique<UpdateCheck>(version, base);
    check->changed = [this](const UpdateCheck& c) { texts_.push_back(c.text()); };
    check->start();
    return check;
  }
  static std::string line(const std::string& message) { return "Your version is " + std::string(kVersion) + "\n" + message + "\n"; }

  UpdateSite site_;
  std::vector<std::string> texts_;
};

TEST_F(UpdateCheckTest, PagesOfTheSiteGiveTheirVerdict) {
  using Stage = UpdateCheck::Stage;
  struct Row { const char* name; UpdateSite::Answer answer; Stage stage; std::string verdict; };
  const Row rows[] = {
      {"EqualVersionIsUpToDate", UpdateSite::page("1.0.0\nThe first release\n"), Stage::UpToDate,
       "Up-to-date version is 1.0.0\nYou're up-to-date !"},
      {"DifferentVersionShowsFurtherLinesAndDL", UpdateSite::page("1.2.0 (spring)\nFaster scans\nA PDF writer"),
       Stage::Upgrade, "Up-to-date version is 1.2.0 (spring)\nYou need to upgrade !\nFaster scans\nA PDF writer"},
      {"EmptyPageEndedByCloseAsksToUpgrade", UpdateSite::raw("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n"),
       Stage::Upgrade, "Up-to-date version is \nYou need to upgrade !"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    UpdateSite site;
    texts_.clear();
    site.on("/update/version.html", row.answer);
    auto check = startCheck(site.base());
    ASSERT_TRUE(runUntil([&] { return check->finished(); }));
    EXPECT_EQ(check->stage(), row.stage);
    EXPECT_EQ(check->text(), "Your version is 1.0.0 Trelvane for Test\n" + row.verdict);
    EXPECT_EQ(check->DLVisible(), row.stage == Stage::Upgrade);
    EXPECT_EQ(check->downloadURL(), site.base() + "Trelvane_Mac.zip");
    ASSERT_EQ(site.requests().size(), 1u);
    EXPECT_EQ(site.requests()[0], test::versionRequest());
    // every stage replaced the one before
    EXPECT_EQ(texts_, (std::vector<std::string>{line("Initialization..."), line("Connected..."), check->text()}));
  }
}

TEST_F(UpdateCheckTest, NotFoundIsAProtocolErrorAndCancelledChangesNothing) {
  auto check = startCheck(site_.base());  // the site has no version.html
  ASSERT_TRUE(runUntil([&] { return check->finished(); }));
  EXPECT_EQ(check->stage(), UpdateCheck::Stage::ProtocolError);
  EXPECT_EQ(check->failedStatus(), 404);
  EXPECT_EQ(check->text(), line("Protocol error"));
  EXPECT_FALSE(check->DLVisible());
  runFor(100);
  EXPECT_EQ(texts_.back(), line("Protocol error"));
  EXPECT_EQ(texts_.size(), 3u);
}

TEST_F(UpdateCheckTest, RedirectIsFollowed) {
  site_.on("/update/version.html", UpdateSite::redirect(site_.root() + "/mirror/version.html"));
  site_.on("/mirror/version.html", UpdateSite::page("1.0.0\n"));
  auto check = startCheck(site_.base());
  ASSERT_TRUE(runUntil([&] { return check->finished(); }));
  EXPECT_EQ(check->stage(), UpdateCheck::Stage::UpToDate);
  EXPECT_EQ(site_.paths(), (std::vector<std::string>{"/update/version.html", "/mirror/version.html"}));
  // each hop connects anew and says so
  EXPECT_EQ(texts_, (std::vector<std::string>{line("Initialization..."), line("Connected..."), line("Connected..."),
                                              check->text()}));
}

TEST_F(UpdateCheckTest, NoServerMeansNoConnectionAndNothingAfter) {
  const std::string base = "http://127.0.0.1:" + std::to_string(test::closedPort()) + "/update/";
  auto check = startCheck(base);
  ASSERT_TRUE(runUntil([&] { return check->finished(); }));
  EXPECT_EQ(check->stage(), UpdateCheck::Stage::NoConnection);
  EXPECT_EQ(check->text(), line("No internet connection is available"));
  EXPECT_FALSE(check->DLVisible());
  runFor(100);
  // the Cancelled behind TCPError left the message standing
  EXPECT_EQ(texts_, (std::vector<std::string>{line("Initialization..."), line("No internet connection is available")}));
}

TEST_F(UpdateCheckTest, BadBaseURLIsAnOperationErrorAtOnce) {
  auto check = startCheck("http://localhost/update/");  // a host without a dot
  EXPECT_TRUE(check->finished());
  EXPECT_EQ(check->stage(), UpdateCheck::Stage::OperationError);
  EXPECT_EQ(check->operationMessage(), "Bad URL!");
  EXPECT_EQ(check->text(), line("Operation error"));
}

TEST_F(UpdateCheckTest, SilentSiteLeavesConnected) {
  site_.on("/update/version.html", UpdateSite::silent());
  auto check = startCheck(site_.base());
  ASSERT_TRUE(runUntil([&] { return site_.requests().size() == 1 && texts_.size() == 2; }));
  EXPECT_FALSE(check->finished());
  EXPECT_EQ(check->text(), line("Connected..."));
}

TEST_F(UpdateCheckTest, AbandonedCheckIgnoresThePage) {
  site_.on("/update/version.html", UpdateSite::page("2.0.0\nnews"));
  auto check = startCheck(site_.base());
  check->abandon();
  bool delivered = false;
  check->BasicHTTP1().ProgressChange = [&](const std::string& m) { delivered |= m == "Download Complete!"; };
  ASSERT_TRUE(runUntil([&] { return delivered; }));
  EXPECT_EQ(check->text(), line("Initialization..."));
  EXPECT_FALSE(check->DLVisible());
  EXPECT_FALSE(check->finished());
}

}  // namespace
}  // namespace trelvane::update
