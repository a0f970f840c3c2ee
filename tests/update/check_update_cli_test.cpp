// check_update_cli_test.cpp -- trelvane-cli check-update against a site on 127.0.0.1: texts, brakes, statuses.
#include <gtest/gtest.h>

#include <QProcess>
#include <QStringList>
#include <QSysInfo>

#include <string>
#include <vector>

#include "update/update_check.h"
#include "update_site.h"

namespace trelvane::update {
namespace {

using test::runUntil;
using test::UpdateSite;

struct CliRun {
  int status = -1;
  std::string out;
  std::string err;
};

// Runs the program while this process's loop keeps the site answering.
CliRun runCli(const std::vector<std::string>& args) {
  QStringList list{QStringLiteral("check-update")};
  for (const std::string& a : args) list << QString::fromStdString(a);
  QProcess p;
  p.start(QStringLiteral(TRELVANE_CLI), list);
  CliRun r;
  if (!p.waitForStarted(10000)) return r;
  if (!runUntil([&] { return p.state() == QProcess::NotRunning; }, 60000)) {
    p.kill();
    p.waitForFinished(5000);
    return r;
  }
  r.status = p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
  r.out = p.readAllStandardOutput().toStdString();
  r.err = p.readAllStandardError().toStdString();
  return r;
}

// App.version of this build on this machine.
std::string appVersion() {
  return std::string(TRELVANE_PROJECT_VERSION) + " Trelvane for " + QSysInfo::prettyProductName().toStdString();
}

std::string line(const std::string& message) { return "Your version is " + appVersion() + "\n" + message + "\n"; }

// A chain of redirects /hop/1 -> /hop/2 -> ...; /hop/<last> is the page.
void chain(UpdateSite& site, int last) {
  site.on("/update/version.html", UpdateSite::redirect(site.root() + "/hop/1"));
  site.otherwise([&site, last](QTcpSocket* conn, const std::string& path) {
    const int n = std::stoi(path.substr(5));
    if (n >= last) UpdateSite::page(TRELVANE_PROJECT_VERSION "\n")(conn, path);
    else UpdateSite::redirect(site.root() + "/hop/" + std::to_string(n + 1))(conn, path);
  });
}

TEST(CheckUpdateCli, UpToDatePrintsTheWindowsTextAndSucceeds) {
  UpdateSite site;
  site.on("/update/version.html", UpdateSite::page(TRELVANE_PROJECT_VERSION " is the latest\nold news\n"));
  CliRun r = runCli({"--site", site.base()});
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.out, "Your version is " + appVersion() + "\nUp-to-date version is " TRELVANE_PROJECT_VERSION
                   " is the latest\nYou're up-to-date !");
  EXPECT_EQ(r.err, "");
}

TEST(CheckUpdateCli, UpgradeIsStillSuccess) {
  UpdateSite site;
  site.on("/update/version.html", UpdateSite::page("99.0.0\nline one\nline two"));
  CliRun r = runCli({"--site=" + site.base()});
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.out, "Your version is " + appVersion() +
                       "\nUp-to-date version is 99.0.0\nYou need to upgrade !\nline one\nline two");
}

TEST(CheckUpdateCli, SendsTheWindowsRequestByteForByte) {
  UpdateSite site;
  site.on("/update/version.html", UpdateSite::page("99.0.0\n"));
  UpdateCheck window(appVersion(), site.base());
  window.start();
  ASSERT_TRUE(runUntil([&] { return window.finished(); }));
  // the site's folder without its '/': the program adds it
  std::string base = site.base();
  base.pop_back();
  CliRun r = runCli({"--site", base});
  EXPECT_EQ(r.status, 0);
  ASSERT_EQ(site.requests().size(), 2u);
  EXPECT_EQ(site.requests()[0], test::versionRequest());
  EXPECT_EQ(site.requests()[1], site.requests()[0]);
}

TEST(CheckUpdateCli, NoServerFailsWithTheWindowsLine) {
  CliRun r = runCli({"--site", "http://127.0.0.1:" + std::to_string(test::closedPort()) + "/update/"});
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.out, line("No internet connection is available"));
  EXPECT_NE(r.err.find("trelvane-cli: cannot reach http://127.0.0.1:"), std::string::npos) << r.err;
  EXPECT_NE(r.err.find("refused or closed"), std::string::npos) << r.err;
}

TEST(CheckUpdateCli, NotFoundFailsAsProtocolError) {
  UpdateSite site;
  CliRun r = runCli({"--site", site.base()});
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.out, line("Protocol error"));
  EXPECT_EQ(r.err, "trelvane-cli: " + site.base() + "version.html answered with status 404\n");
}

TEST(CheckUpdateCli, BadURLFailsAsOperationError) {
  CliRun r = runCli({"--site", "http://localhost/update/"});
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.out, line("Operation error"));
  EXPECT_NE(r.err.find("is not an http:// URL"), std::string::npos) << r.err;
}

TEST(CheckUpdateCli, TenRedirectsAreFollowedTheEleventhGivesUp) {
  for (int last : {10, 1000}) {
    UpdateSite site;
    chain(site, last);
    CliRun r = runCli({"--site", site.base()});
    EXPECT_EQ(site.requests().size(), 11u) << last;
    if (last == 10) {
      EXPECT_EQ(r.status, 0) << r.err;
      EXPECT_NE(r.out.find("You're up-to-date !"), std::string::npos);
    } else {
      EXPECT_EQ(r.status, 1);
      EXPECT_EQ(r.out, line("Connected..."));
      EXPECT_EQ(r.err, "trelvane-cli: gave up after 10 redirects; the next one led to " + site.root() + "/hop/11\n");
    }
  }
}

TEST(CheckUpdateCli, SilentSiteTimesOut) {
  UpdateSite site;
  site.on("/update/version.html", UpdateSite::silent());
  CliRun r = runCli({"--site", site.base(), "--timeout", "0.5"});
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.out, line("Connected..."));
  EXPECT_EQ(r.err, "trelvane-cli: no answer from " + site.base() + "version.html within 0.5 seconds\n");
}

TEST(CheckUpdateCli, PageOfOneMebibyteIsTakenOneByteMoreIsRefused) {
  const std::string head = TRELVANE_PROJECT_VERSION "\n";
  UpdateSite site;
  site.on("/update/version.html", UpdateSite::page(head + std::string(1024 * 1024 - head.size(), 'x')));
  // without a length, so that the bytes as they come are counted
  site.on("/big/version.html",
          UpdateSite::raw("HTTP/1.1 200 OK\r\n\r\n" + head + std::string(1024 * 1024 + 1 - head.size(), 'x')));

  CliRun fits = runCli({"--site", site.base()});
  EXPECT_EQ(fits.status, 0) << fits.err;
  EXPECT_NE(fits.out.find("You're up-to-date !"), std::string::npos);

  CliRun big = runCli({"--site", site.root() + "/big/"});
  EXPECT_EQ(big.status, 1);
  EXPECT_EQ(big.out, line("Connected..."));
  EXPECT_EQ(big.err, "trelvane-cli: " + site.root() + "/big/version.html is larger than 1 MiB, which no version page is\n");
}

TEST(CheckUpdateCli, UsageErrorsExitTwoAndAskNothing) {
  const std::vector<std::vector<std::string>> cases = {
      {"--timeout", "soon"}, {"--timeout", "0"}, {"--timeout", "-3"}, {"--timeout", "1e3"},
      {"--site"},            {"--site="},        {"--verbose"},       {"extra"},
      {"--help=yes"},
  };
  for (const auto& args : cases) {
    CliRun r = runCli(args);
    EXPECT_EQ(r.status, 2) << args[0];
    EXPECT_EQ(r.out, "") << args[0];
    EXPECT_NE(r.err.find("Try 'trelvane-cli check-update --help'"), std::string::npos) << r.err;
  }
}

TEST(CheckUpdateCli, HelpNamesTheOptions) {
  CliRun r = runCli({"--help"});
  EXPECT_EQ(r.status, 0);
  EXPECT_NE(r.out.find("--site URL"), std::string::npos);
  EXPECT_NE(r.out.find("--timeout S"), std::string::npos);
  EXPECT_EQ(r.err, "");
}

}  // namespace
}  // namespace trelvane::update
