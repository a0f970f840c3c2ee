// update_check_test.cpp -- the update check and trelvane-cli check-update against a site on 127.0.0.1, by scripts.
#include <gtest/gtest.h>

#include <QProcess>
#include <QSysInfo>

#include <cstring>

#include "update/update_check.h"
#include "support/desk.h"
#include "support/local_server.h"

namespace trelvane::update {
namespace {

using namespace testsupport;
using trelvane::testing::Desk;
using trelvane::testing::show;

[[maybe_unused]] ::testing::Environment* const qtEnvironment =
    ::testing::AddGlobalTestEnvironment(new CoreApplicationEnvironment);

class UpdateSite : public ::testing::TestWithParam<cases::Case> {};

// Steps: page PATH BODY, raw PATH BYTES, redirect PATH TARGET ("/..." on the
// site), silent PATH, mib PATH 0|1: how the site answers; pagetext VERSION|CONTENT;
// check VERSION[|BASE]: the texts a check shows, one a line, until it ends
// (BASE "closed": a port where nothing listens; by default the site's
// /update/); cli ARGS: trelvane-cli check-update, while this loop serves.
TEST_P(UpdateSite, GivesItsTranscript) {
  Desk d;
  LocalServer site;
  const std::string closed = "http://127.0.0.1:" + std::to_string(freePort()) + "/update/";
  const auto path = [](const std::string& v) { return v.substr(0, v.find(' ')); };
  const auto rest = [](std::string v) {
    v = v.substr(std::min(v.size(), v.find(' ') + 1));
    for (std::size_t at; (at = v.find("$VERSION")) != std::string::npos;) v.replace(at, 8, TRELVANE_PROJECT_VERSION);
    return v;
  };
  d.more = [&](std::vector<std::pair<std::string, std::string>>& f) {
    std::string paths;
    for (const std::string& p : site.paths()) paths += p + " ";
    f.emplace_back("asked", paths);
    f.emplace_back("first request", site.requests().empty() ? "" : site.requests()[0]);
  };
  const std::map<std::string, trelvane::testing::Step> steps = {
      {"page", [&](Desk&, const std::string& v, std::ostream&) { site.on(path(v), LocalServer::page(rest(v))); }},
      {"raw", [&](Desk&, const std::string& v, std::ostream&) { site.on(path(v), LocalServer::raw(rest(v))); }},
      {"silent", [&](Desk&, const std::string& v, std::ostream&) { site.on(v, LocalServer::silent()); }},
      // a version page of 1 MiB with its length, or of one byte more without one
      {"mib", [&](Desk&, const std::string& v, std::ostream&) {
         const std::string page = TRELVANE_PROJECT_VERSION "\n" + std::string(1024 * 1024 - sizeof TRELVANE_PROJECT_VERSION, 'x');
         site.on(path(v), rest(v) == "0" ? LocalServer::page(page) : LocalServer::raw("HTTP/1.1 200 OK\r\n\r\n" + page + "x"));
       }},
      {"redirect", [&](Desk&, const std::string& v, std::ostream&) { site.on(path(v), LocalServer::redirect(site.root() + rest(v))); }},
      {"pagetext", [&](Desk&, const std::string& v, std::ostream& out) {
         bool upgrade = false;
         const std::string text = pageText(v.substr(0, v.find('|')), v.substr(v.find('|') + 1), &upgrade);
         show(out, text + (upgrade ? " [upgrade]" : " [no upgrade]"));
       }},
      {"check", [&](Desk&, const std::string& v, std::ostream& out) {
         const std::string base = v.find('|') == std::string::npos ? site.base() : v.substr(v.find('|') + 1);
         UpdateCheck check(v.substr(0, v.find('|')), base == "closed" ? closed : base);
         check.changed = [&out](const UpdateCheck& c) { show(out, c.text()); };
         check.start();
         ASSERT_TRUE(runUntil([&] { return check.finished(); }));
         runFor(100);  // nothing more comes
         const char* stages[] = {"Idle", "Initialization", "Connected", "UpToDate", "Upgrade", "NoConnection", "OperationError", "ProtocolError"};
         show(out, std::string(stages[static_cast<int>(check.stage())]) + (check.DLVisible() ? " DL " + check.downloadURL() : "") +
                       " status " + std::to_string(check.failedStatus()) + " message " + check.operationMessage());
       }},
      {"cli", [&](Desk&, const std::string& v, std::ostream& out) {
         QStringList args{"check-update"};
         std::istringstream words(v);
         for (std::string w; words >> w; args << QString::fromStdString(w))
           for (auto [mark, real] : {std::pair{"$SITE", site.root()}, {"$CLOSED", closed}})
             if (w.find(mark) != std::string::npos) w.replace(w.find(mark), std::strlen(mark), real);
         QProcess p;
         p.start(TRELVANE_CLI, args);
         ASSERT_TRUE(p.waitForStarted(10000) && runUntil([&] { return p.state() == QProcess::NotRunning; }, 60000));
         show(out, "status " + std::to_string(p.exitCode()));
         show(out, p.readAllStandardOutput().toStdString());
         show(out, p.readAllStandardError().toStdString());
       }},
  };
  std::string t = trelvane::testing::runDesk(GetParam(), steps, &d);
  for (auto [shown, real] : {std::pair{"$SITE", site.root()}, {"$CLOSED", closed}, {"$SYSTEM", QSysInfo::prettyProductName().toStdString()},
                             {"$VERSION", std::string(TRELVANE_PROJECT_VERSION)}})
    for (std::size_t at; (at = t.find(real)) != std::string::npos;) t.replace(at, real.size(), shown);
  cases::expectTranscript(GetParam(), t, false);
}

INSTANTIATE_TEST_SUITE_P(, UpdateSite, ::testing::ValuesIn(cases::readCases(TRELVANE_TEST_DATA "/shell/update.cases")),
                         cases::caseName);

TEST(UpdateCheck, SilentSiteLeavesConnectedAndAnAbandonedCheckIgnoresThePage) {
  LocalServer site;
  site.on("/update/version.html", LocalServer::silent());
  UpdateCheck silent("1.0.0 T", site.base());
  silent.start();
  ASSERT_TRUE(runUntil([&] { return site.requests().size() == 1 && silent.text() == "Your version is 1.0.0 T\nConnected...\n"; }));
  runFor(100);
  EXPECT_FALSE(silent.finished());
  site.on("/update/version.html", LocalServer::page("2.0.0\nnews"));
  UpdateCheck abandoned("1.0.0 T", site.base());
  abandoned.start();
  abandoned.abandon();
  bool delivered = false;
  abandoned.BasicHTTP1().ProgressChange = [&](const std::string& m) { delivered |= m == "Download Complete!"; };
  ASSERT_TRUE(runUntil([&] { return delivered; }));
  EXPECT_EQ(abandoned.text(), "Your version is 1.0.0 T\nInitialization...\n");
  EXPECT_FALSE(abandoned.DLVisible() || abandoned.finished());
}

}  // namespace
}  // namespace trelvane::update
