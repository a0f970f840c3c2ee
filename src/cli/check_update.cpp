// check_update.cpp -- trelvane-cli check-update: the about window's update check, told on the console.
#include <QCoreApplication>
#include <QEventLoop>
#include <QSysInfo>
#include <QTimer>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/args.h"
#include "cli/commands.h"
#include "cli/console.h"
#include "platform/numtext.h"
#include "shell/update_check.h"

#ifndef TRELVANE_VERSION
#error "TRELVANE_VERSION comes from the CMake project version"
#endif

namespace trelvane::cli {
namespace {

// Brakes of our own, which the window does without.
constexpr int kMaxRedirects = 10;
constexpr double kDefaultTimeoutSeconds = 20;
constexpr double kMaxTimeoutSeconds = 86400;
constexpr double kMaxPageBytes = 1024 * 1024;  // a version page is a few lines

const char kCheckUpdateHelp[] =
    "Usage: trelvane-cli check-update [OPTION]...\n"
    "Ask the update site for the newest version, as the about window does at\n"
    "every start, and print the text that the window shows.\n"
    "\n"
    "  --site URL            the update site: the folder that holds version.html\n"
    "                        (a '/' is added where URL does not end in one)\n"
    "  --timeout S           give up after S seconds (20)\n"
    "  --help                display this help and exit\n"
    "\n"
    "Redirects are followed up to 10 times, and a version page above 1 MiB is\n"
    "refused.\n"
    "\n"
    "Exit status: 0 when the site sent its version page (up to date or not),\n"
    "1 when it could not be reached or understood, 2 on a usage error.\n";

struct CheckOptions {
  std::string site = shell::kUpdateSiteBaseURL;
  double timeout = kDefaultTimeoutSeconds;
  bool help = false;
};

int usage(std::string_view text) {
  std::fprintf(stderr, "%s: %.*s\nTry '%s check-update --help' for more information.\n", kProgram,
               static_cast<int>(text.size()), text.data(), kProgram);
  std::fflush(stderr);
  return kExitUsage;
}

// A plain decimal number of seconds, above 0 and at most a day.
std::optional<double> seconds(const std::string& text) {
  double v = 0;
  const char* end = text.data() + text.size();
  auto [at, ec] = std::from_chars(text.data(), end, v, std::chars_format::fixed);
  if (ec != std::errc() || at != end || !std::isfinite(v) || v <= 0 || v > kMaxTimeoutSeconds) return std::nullopt;
  return v;
}

// Fills o from args; false with a sentence in *error on a usage error.
bool parse(const std::vector<std::string>& args, CheckOptions& o, std::string* error) {
  for (OptionWalker walk(args); walk.next();) {
    const std::string& name = walk.name();
    const std::optional<std::string>& inlineValue = walk.inlineValue();
    auto value = [&](std::string* out) { return walk.value(out, error); };
    if (name == "--help") {
      if (inlineValue) {
        *error = "option '--help' doesn't allow an argument";
        return false;
      }
      o.help = true;
    } else if (name == "--site") {
      if (!value(&o.site)) return false;
      if (o.site.empty()) {
        *error = "--site needs the URL of the update site";
        return false;
      }
      if (o.site.back() != '/') o.site += '/';
    } else if (name == "--timeout") {
      std::string v;
      if (!value(&v)) return false;
      std::optional<double> s = seconds(v);
      if (!s) {
        *error = "--timeout takes a number of seconds above 0 and at most 86400, not '" + v + "'";
        return false;
      }
      o.timeout = *s;
    } else if (name.size() > 1 && name[0] == '-') {
      *error = "unrecognized option '" + walk.arg() + "'";
      return false;
    } else {
      *error = "extra operand '" + name + "'";
      return false;
    }
  }
  return true;
}

// App.version as the window builds it: the dotted number, a blank, the
// package information.
std::string appVersion() {
  return std::string(TRELVANE_VERSION) + " Trelvane for " + QSysInfo::prettyProductName().toStdString();
}

std::string socketError(int32_t code) {
  switch (code) {
    case http::kLostConnection: return "the connection was refused or closed";
    case http::kNameResolutionError: return "the host name did not resolve";
    case http::kInvalidPortError: return "the port is outside 1 to 65535";
    case http::kTimedOutError: return "the connection was silent too long";
    case http::kHeaderTooLargeError: return "the answer's header did not end";
    default: return "socket error " + Str(code);
  }
}

// The line that tells why the check failed, or empty for a page.
std::string failureLine(const shell::UpdateCheck& check) {
  using Stage = shell::UpdateCheck::Stage;
  switch (check.stage()) {
    case Stage::NoConnection: return "cannot reach " + check.versionURL() + ": " + socketError(check.errorCode());
    case Stage::ProtocolError:
      return check.versionURL() + " answered with status " + Str(check.failedStatus());
    case Stage::OperationError:
      if (check.operationMessage() == "Bad URL!")
        return "'" + check.versionURL() + "' is not an http:// URL with a host name and a valid port";
      return check.operationMessage() + " (" + check.versionURL() + ")";
    default: return {};
  }
}

}  // namespace

int runCheckUpdate(const std::vector<std::string>& args) {
  CheckOptions o;
  std::string error;
  if (!parse(args, o, &error)) return usage(error);
  if (o.help) {
    std::fputs(kCheckUpdateHelp, stdout);
    std::fflush(stdout);
    return kExitOk;
  }

  // the event loop that the socket's events come through
  static int argc = 1;
  static char arg0[] = "trelvane-cli";
  static char* argv[] = {arg0, nullptr};
  std::unique_ptr<QCoreApplication> ownApp;
  if (QCoreApplication::instance() == nullptr) ownApp = std::make_unique<QCoreApplication>(argc, argv);

  std::string gaveUp;
  {
    shell::UpdateCheck check(appVersion(), o.site);
    http::BasicHTTP& http = check.BasicHTTP1();
    QEventLoop loop;
    QTimer timer;
    timer.setSingleShot(true);

    // Gives up the exchange where it stands; its text stays as it was.
    auto giveUp = [&](const std::string& why) {
      if (!gaveUp.empty()) return;
      gaveUp = why;
      check.abandon();
      http.Stop();
      loop.quit();
    };

    int redirects = 0;
    http.HandleRedirection = [&](const std::string& target) {
      if (++redirects <= kMaxRedirects) return false;  // followed by the client
      giveUp("gave up after " + Str(int32_t{kMaxRedirects}) + " redirects; the next one led to " + target);
      return true;
    };
    http.DataProgress = [&](double received, double total, double) {
      if (received > kMaxPageBytes || total > kMaxPageBytes)
        giveUp(check.versionURL() + " is larger than 1 MiB, which no version page is");
    };
    check.changed = [&](const shell::UpdateCheck& c) {
      if (c.finished()) loop.quit();
    };
    QObject::connect(&timer, &QTimer::timeout, &loop, [&] {
      giveUp("no answer from " + check.versionURL() + " within " + Str(o.timeout) + " seconds");
    });

    check.start();
    if (!check.finished() && gaveUp.empty()) {
      timer.start(static_cast<int>(std::ceil(o.timeout * 1000)));
      loop.exec();
    }
    timer.stop();

    std::fwrite(check.text().data(), 1, check.text().size(), stdout);
    std::fflush(stdout);
    if (gaveUp.empty()) gaveUp = failureLine(check);
    // the client goes here, outside all of its events
  }
  if (gaveUp.empty()) return kExitOk;
  std::fprintf(stderr, "%s: %s\n", kProgram, gaveUp.c_str());
  std::fflush(stderr);
  return kExitBadInput;
}

}  // namespace trelvane::cli
