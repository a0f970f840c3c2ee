// blocking_check.cpp -- an update check run to its end on an event loop of its own, with redirects, size and time braked.
#include "update/blocking_check.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

#include <cmath>
#include <memory>

#include "platform/numtext.h"
#include "update/update_check.h"

namespace trelvane::update {
namespace {

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
std::string failureLine(const UpdateCheck& check) {
  using Stage = UpdateCheck::Stage;
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

CheckResult checkUntilAnswered(const std::string& version, const std::string& baseURL, const CheckLimits& limits) {
  // the event loop that the socket's events come through
  static int argc = 1;
  static char arg0[] = "trelvane";
  static char* argv[] = {arg0, nullptr};
  std::unique_ptr<QCoreApplication> ownApp;
  if (QCoreApplication::instance() == nullptr) ownApp = std::make_unique<QCoreApplication>(argc, argv);

  CheckResult result;
  std::string& gaveUp = result.failure;
  {
    UpdateCheck check(version, baseURL);
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
      if (++redirects <= limits.maxRedirects) return false;  // followed by the client
      giveUp("gave up after " + Str(int32_t{limits.maxRedirects}) + " redirects; the next one led to " + target);
      return true;
    };
    http.DataProgress = [&](double received, double total, double) {
      if (received > limits.maxPageBytes || total > limits.maxPageBytes)
        giveUp(check.versionURL() + " is larger than " + Str(limits.maxPageBytes / 1048576.0) +
               " MiB, which no version page is");
    };
    check.changed = [&](const UpdateCheck& c) {
      if (c.finished()) loop.quit();
    };
    QObject::connect(&timer, &QTimer::timeout, &loop, [&] {
      giveUp("no answer from " + check.versionURL() + " within " + Str(limits.timeoutSeconds) + " seconds");
    });

    check.start();
    if (!check.finished() && gaveUp.empty()) {
      timer.start(static_cast<int>(std::ceil(limits.timeoutSeconds * 1000)));
      loop.exec();
    }
    timer.stop();

    result.text = check.text();
    if (gaveUp.empty()) gaveUp = failureLine(check);
    // the client goes here, outside all of its events
  }
  return result;
}

}  // namespace trelvane::update
