// update_check.cpp -- the update check: the texts of each stage, and the version comparison of a page.
#include "update/update_check.h"

#include "http/httptext.h"
#include "http/qttcpsocket.h"
#include "platform/numtext.h"

namespace trelvane::update {
namespace {

constexpr std::string_view kEOL = "\n";  // the platform's line end

}  // namespace

std::string versionLine(std::string_view version) {
  std::string line = "Your version is ";
  line += version;
  line += kEOL;
  return line;
}

std::string pageText(std::string_view version, std::string_view content, bool* upgrade) {
  // The page's lines end in LF alone: a CR stays in the line, and in the
  // word when the version is the only word of its line.
  const std::string first = http::NthField(content, "\n", 1);
  std::string text = versionLine(version) + "Up-to-date version is " + first;

  const bool differ = !equalsNoCase(http::NthField(version, " ", 1), http::NthField(first, " ", 1));
  if (differ) {
    text += kEOL;
    text += "You need to upgrade !";
    const int32_t lines = http::CountFields(content, "\n");
    for (int32_t i = 2; i <= lines; ++i) {
      text += kEOL;
      text += http::NthField(content, "\n", i);
    }
  } else {
    text += kEOL;
    text += "You're up-to-date !";
  }
  if (upgrade) *upgrade = differ;
  return text;
}

UpdateCheck::UpdateCheck(std::string version, std::string baseURL, std::unique_ptr<http::TCPSocket> socket)
    : version_(std::move(version)),
      baseURL_(std::move(baseURL)),
      http_(socket ? std::move(socket) : std::make_unique<http::QtTCPSocket>()) {
  // Only these events are handled: a redirect is followed, progress shows
  // nothing, and Cancelled leaves the previous message.
  http_.SockConnected = [this] { stageMessage(Stage::Connected, "Connected..."); };
  http_.TCPError = [this](int32_t code) {
    if (abandoned_) return;
    errorCode_ = code;
    stageMessage(Stage::NoConnection, "No internet connection is available");
  };
  http_.OperationError = [this](const std::string& message, bool) {
    if (abandoned_) return;
    operationMessage_ = message;
    stageMessage(Stage::OperationError, "Operation error");
  };
  http_.ProtocolError = [this](int32_t status, const http::HTTPHeaders&) {
    if (abandoned_) return;
    failedStatus_ = status;
    stageMessage(Stage::ProtocolError, "Protocol error");
  };
  http_.PageReceived = [this](const std::string&, const std::string& content, bool) {
    if (abandoned_) return;
    bool upgrade = false;
    std::string text = pageText(version_, content, &upgrade);
    // DL, once shown, stays: nothing in the window hides it again.
    if (upgrade) dlVisible_ = true;
    show(upgrade ? Stage::Upgrade : Stage::UpToDate, text);
  };
  http_.Cancelled = [] {};
}

void UpdateCheck::start() {
  stageMessage(Stage::Initialization, "Initialization...");
  http_.Get(versionURL());
}

bool UpdateCheck::finished() const {
  return stage_ != Stage::Idle && stage_ != Stage::Initialization && stage_ != Stage::Connected;
}

// Each stage's text replaces the previous one: the version line, the message
// and a line end.
void UpdateCheck::stageMessage(Stage stage, std::string_view message) {
  if (abandoned_) return;
  std::string text = versionLine(version_);
  text += message;
  text += kEOL;
  show(stage, text);
}

void UpdateCheck::show(Stage stage, const std::string& text) {
  stage_ = stage;
  text_ = text;
  if (auto f = changed) f(*this);
}

}  // namespace trelvane::update
