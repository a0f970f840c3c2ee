// update_check_test.cpp -- the update check's texts, against pages and failures of a site on 127.0.0.1;
// trelvane-cli check-update against the same site: texts, brakes, statuses.
#include <gtest/gtest.h>

#include <QProcess>
#include <QSysInfo>

#include "shell/update_check.h"
#include "support/local_server.h"

namespace trelvane::shell {
namespace {

using testsupport::LocalServer;
using testsupport::runFor;
using testsupport::runUntil;
using Texts = std::vector<std::string>;

[[maybe_unused]] ::testing::Environment* const qtEnvironment =
    ::testing::AddGlobalTestEnvironment(new testsupport::CoreApplicationEnvironment);

const std::string kVersion = "1.0.0 Trelvane for Test";
// The request of the version page, byte for byte.
const std::string kRequest = "GET /update/version.html HTTP/1.1\r\nUser-Agent: BasicHTTP/1.0\r\nHost: 127.0.0.1\r\nConnection: close\r\n\r\n";

std::string line(const std::string& version, const std::string& message) { return "Your version is " + version + "\n" + message + "\n"; }

// The first word of the first line against the version's; the further lines shown with an upgrade.
TEST(PageText, ShowsTheFirstLineAndTheVerdict) {
  const std::tuple<const char*, std::string, std::string, bool> rows[] = {
      {"1.0.0 Trelvane", "1.0.0 released in spring\nnotes", "Up-to-date version is 1.0.0 released in spring\nYou're up-to-date !", false},
      {"1.0.0b Trelvane", "1.0.0B\n", "Up-to-date version is 1.0.0B\nYou're up-to-date !", false},  // letter case ignored
      {"1.0.0 Trelvane", "1.1.0\nFaster scans\nA PDF writer", "Up-to-date version is 1.1.0\nYou need to upgrade !\nFaster scans\nA PDF writer", true},
      {"1.0.0 Trelvane", "1.1.0\nFaster scans\n", "Up-to-date version is 1.1.0\nYou need to upgrade !\nFaster scans\n", true},
      {"1.0.0 Trelvane", "1.0.0\r\nnotes\r\n", "Up-to-date version is 1.0.0\r\nYou need to upgrade !\nnotes\r\n", true},  // CR in the word
      {"1.0.0 Trelvane", "1.0.0 and\rmore", "Up-to-date version is 1.0.0 and\rmore\nYou're up-to-date !", false},  // no LF: one line
      {"1.0.0 Trelvane", "", "Up-to-date version is \nYou need to upgrade !", true},
      {"2.0.0 Trelvane", "1.9.9\n", "Up-to-date version is 1.9.9\nYou need to upgrade !\n", true},  // a newer local one too
      {"1.0.0 Trelvane", "<html>\n<body>Hello</body>\n</html>", "Up-to-date version is <html>\nYou need to upgrade !\n<body>Hello</body>\n</html>", true},
      {"1.0.0 Trelvane", " 1.0.0\n", "Up-to-date version is  1.0.0\nYou need to upgrade !\n", true}};  // an empty first word
  for (const auto& [version, content, text, upgrade] : rows) {
    bool got = !upgrade;
    EXPECT_EQ(pageText(version, content, &got), "Your version is " + std::string(version) + "\n" + text) << content;
    EXPECT_EQ(got, upgrade) << content;
  }
}

// Every text the check shows on a site, the stage it ends in, and what the site was asked.
TEST(UpdateCheck, SitesGiveTheirStagesAndTexts) {
  using Stage = UpdateCheck::Stage;
  const std::string closed = "http://127.0.0.1:" + std::to_string(testsupport::freePort()) + "/update/";
  const struct {
    const char* name;
    std::map<std::string, LocalServer::Answer> answers;
    bool noServer;
    Stage stage;
    Texts texts, paths;
  } rows[] = {
      {"equal version", {{"/update/version.html", LocalServer::page("1.0.0\nThe first release\n")}}, false, Stage::UpToDate,
       {line(kVersion, "Initialization..."), line(kVersion, "Connected..."), "Your version is " + kVersion + "\nUp-to-date version is 1.0.0\nYou're up-to-date !"},
       {"/update/version.html"}},
      {"another version", {{"/update/version.html", LocalServer::page("1.2.0 (spring)\nFaster scans\nA PDF writer")}}, false, Stage::Upgrade,
       {line(kVersion, "Initialization..."), line(kVersion, "Connected..."),
        "Your version is " + kVersion + "\nUp-to-date version is 1.2.0 (spring)\nYou need to upgrade !\nFaster scans\nA PDF writer"},
       {"/update/version.html"}},
      {"empty page ended by the close", {{"/update/version.html", LocalServer::raw("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n")}}, false,
       Stage::Upgrade, {line(kVersion, "Initialization..."), line(kVersion, "Connected..."), "Your version is " + kVersion + "\nUp-to-date version is \nYou need to upgrade !"},
       {"/update/version.html"}},
      {"not found", {}, false, Stage::ProtocolError,
       {line(kVersion, "Initialization..."), line(kVersion, "Connected..."), line(kVersion, "Protocol error")}, {"/update/version.html"}},
      {"a redirect, each hop connecting anew", {{"/update/version.html", nullptr}, {"/mirror/version.html", LocalServer::page("1.0.0\n")}}, false,
       Stage::UpToDate, {line(kVersion, "Initialization..."), line(kVersion, "Connected..."), line(kVersion, "Connected..."),
                         "Your version is " + kVersion + "\nUp-to-date version is 1.0.0\nYou're up-to-date !"},
       {"/update/version.html", "/mirror/version.html"}},
      {"no server: the Cancelled behind TCPError leaves the message", {}, true, Stage::NoConnection,
       {line(kVersion, "Initialization..."), line(kVersion, "No internet connection is available")}, {}},
  };
  for (const auto& r : rows) {
    LocalServer site;
    for (const auto& [path, answer] : r.answers) site.on(path, answer ? answer : LocalServer::redirect(site.root() + "/mirror/version.html"));
    Texts texts;
    UpdateCheck check(kVersion, r.noServer ? closed : site.base());
    check.changed = [&texts](const UpdateCheck& c) { texts.push_back(c.text()); };
    check.start();
    ASSERT_TRUE(runUntil([&] { return check.finished(); })) << r.name;
    runFor(100);
    EXPECT_EQ(check.stage(), r.stage) << r.name;
    EXPECT_EQ(texts, r.texts) << r.name;
    EXPECT_EQ(check.DLVisible(), r.stage == Stage::Upgrade) << r.name;
    EXPECT_EQ(check.downloadURL(), (r.noServer ? closed : site.base()) + "Trelvane_Mac.zip");
    EXPECT_EQ(site.paths(), r.paths) << r.name;
    if (!r.paths.empty()) EXPECT_EQ(site.requests()[0], kRequest) << r.name;
    if (r.stage == Stage::ProtocolError) EXPECT_EQ(check.failedStatus(), 404);
  }
}

TEST(UpdateCheck, BadURLSilentSiteAndAbandonedCheck) {
  UpdateCheck bad(kVersion, "http://localhost/update/");  // a host without a dot
  bad.start();
  EXPECT_TRUE(bad.finished());
  EXPECT_EQ(bad.stage(), UpdateCheck::Stage::OperationError);
  EXPECT_EQ(bad.operationMessage() + "|" + bad.text(), "Bad URL!|" + line(kVersion, "Operation error"));
  LocalServer site;
  site.on("/update/version.html", LocalServer::silent());
  UpdateCheck silent(kVersion, site.base());
  silent.start();
  ASSERT_TRUE(runUntil([&] { return site.requests().size() == 1 && silent.text() == line(kVersion, "Connected..."); }));
  runFor(100);
  EXPECT_FALSE(silent.finished());
  site.on("/update/version.html", LocalServer::page("2.0.0\nnews"));
  UpdateCheck abandoned(kVersion, site.base());
  abandoned.start();
  abandoned.abandon();
  bool delivered = false;
  abandoned.BasicHTTP1().ProgressChange = [&](const std::string& m) { delivered |= m == "Download Complete!"; };
  ASSERT_TRUE(runUntil([&] { return delivered; }));
  EXPECT_EQ(abandoned.text(), line(kVersion, "Initialization..."));
  EXPECT_FALSE(abandoned.DLVisible() || abandoned.finished());
}

// The program runs while this process's loop keeps the site answering.
TEST(CheckUpdateCli, TextsBrakesAndStatuses) {
  const std::string app = std::string(TRELVANE_PROJECT_VERSION) + " Trelvane for " + QSysInfo::prettyProductName().toStdString();
  const std::string version = TRELVANE_PROJECT_VERSION, big(1024 * 1024 - version.size() - 1, 'x');
  LocalServer site;
  site.on("/update/version.html", LocalServer::page(version + " is the latest\nold news\n"));
  site.on("/new/version.html", LocalServer::page("99.0.0\nline one\nline two"));
  site.on("/fits/version.html", LocalServer::page(version + "\n" + big));
  site.on("/big/version.html", LocalServer::raw("HTTP/1.1 200 OK\r\n\r\n" + version + "\n" + big + "x"));  // no length: counted as it comes
  site.on("/silent/version.html", LocalServer::silent());
  site.on("/hops/version.html", LocalServer::redirect(site.root() + "/hop/1"));
  site.on("/loop/version.html", LocalServer::redirect(site.root() + "/loop/1"));
  for (int n = 1; n <= 11; ++n) {
    site.on("/hop/" + std::to_string(n), n == 10 ? LocalServer::page(version + "\n") : LocalServer::redirect(site.root() + "/hop/" + std::to_string(n + 1)));
    site.on("/loop/" + std::to_string(n), LocalServer::redirect(site.root() + "/loop/" + std::to_string(n + 1)));
  }
  const std::string closed = "http://127.0.0.1:" + std::to_string(testsupport::freePort()) + "/update/", r = site.root();
  const std::string usage = "Try 'trelvane-cli check-update --help'";
  const struct { Texts args; int status; std::string out, err; } rows[] = {
      {{"--site", site.base()}, 0, "Your version is " + app + "\nUp-to-date version is " + version + " is the latest\nYou're up-to-date !", ""},
      {{"--site=" + r + "/new/"}, 0, "Your version is " + app + "\nUp-to-date version is 99.0.0\nYou need to upgrade !\nline one\nline two", ""},
      {{"--site", r + "/update"}, 0, "Your version is " + app + "\nUp-to-date version is " + version + " is the latest\nYou're up-to-date !", ""},  // the '/' added
      {{"--site", closed}, 1, line(app, "No internet connection is available"),
       "trelvane-cli: cannot reach " + closed + "version.html: the connection was refused or closed\n"},
      {{"--site", r + "/none/"}, 1, line(app, "Protocol error"), "trelvane-cli: " + r + "/none/version.html answered with status 404\n"},
      {{"--site", "http://localhost/update/"}, 1, line(app, "Operation error"),
       "trelvane-cli: 'http://localhost/update/version.html' is not an http:// URL with a host name and a valid port\n"},
      {{"--site", r + "/hops/"}, 0, "Your version is " + app + "\nUp-to-date version is " + version + "\nYou're up-to-date !", ""},
      {{"--site", r + "/loop/"}, 1, line(app, "Connected..."), "trelvane-cli: gave up after 10 redirects; the next one led to " + r + "/loop/11\n"},
      {{"--site", r + "/silent/", "--timeout", "0.5"}, 1, line(app, "Connected..."), "trelvane-cli: no answer from " + r + "/silent/version.html within 0.5 seconds\n"},
      {{"--site", r + "/fits/"}, 0, "Your version is " + app + "\nUp-to-date version is " + version + "\nYou're up-to-date !", ""},
      {{"--site", r + "/big/"}, 1, line(app, "Connected..."), "trelvane-cli: " + r + "/big/version.html is larger than 1 MiB, which no version page is\n"},
      {{"--help"}, 0, "Usage: trelvane-cli check-update", ""},
  };
  for (const auto& row : rows) {
    QStringList list{"check-update"};
    for (const std::string& a : row.args) list << QString::fromStdString(a);
    QProcess p;
    p.start(TRELVANE_CLI, list);
    ASSERT_TRUE(p.waitForStarted(10000) && runUntil([&] { return p.state() == QProcess::NotRunning; }, 60000)) << row.args[0];
    const std::string out = p.readAllStandardOutput().toStdString(), err = p.readAllStandardError().toStdString();
    EXPECT_EQ(p.exitCode(), row.status) << row.args.back() << err;
    if (row.args[0] == "--help") {
      EXPECT_TRUE(out.rfind(row.out, 0) == 0 && out.find("--site URL") != std::string::npos && out.find("--timeout S") != std::string::npos) << out;
    } else {
      EXPECT_EQ(out, row.out) << row.args.back();
    }
    EXPECT_EQ(err, row.err) << row.args.back();
  }
  EXPECT_EQ(site.requests()[0], kRequest);  // the window's request, byte for byte
  for (const Texts& args : std::vector<Texts>{{"--timeout", "soon"}, {"--timeout", "0"}, {"--timeout", "-3"}, {"--timeout", "1e3"},
                                             {"--site"}, {"--site="}, {"--verbose"}, {"extra"}, {"--help=yes"}}) {
    QProcess p;
    QStringList list{"check-update"};
    for (const std::string& a : args) list << QString::fromStdString(a);
    p.start(TRELVANE_CLI, list);
    ASSERT_TRUE(p.waitForFinished(30000));
    EXPECT_EQ(p.exitCode(), 2) << args[0];
    EXPECT_EQ(p.readAllStandardOutput().toStdString(), "");
    EXPECT_NE(p.readAllStandardError().toStdString().find(usage), std::string::npos) << args[0];
  }
}

}  // namespace
}  // namespace trelvane::shell
