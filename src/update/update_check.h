// update_check.h -- the update check: one page of the update site, told as the text of reponseupdate.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "http/basichttp.h"

namespace trelvane::update {

// The update site: version.html and Trelvane_Mac.zip lie right under it.
// The about window asks it; tests and trelvane-cli name another one.
inline constexpr char kUpdateSiteBaseURL[] = "http://update.trelvane.example.org/";
inline constexpr char kVersionPage[] = "version.html";
inline constexpr char kArchive[] = "Trelvane_Mac.zip";

// "Your version is " + version + EOL: the head of every text of the check.
std::string versionLine(std::string_view version);

// What PageReceived shows for content, and in *upgrade whether DL appears:
// the first line of the page against the first word of version, compared
// without regard to case and only for inequality, so that a local version
// newer than the site's is told to upgrade as well.
std::string pageText(std::string_view version, std::string_view content, bool* upgrade);

// One check of the update site through its own BasicHTTP1. The owner reads
// text() and DLVisible() whenever changed fires. Nothing here blocks: the
// socket's events arrive through the event loop of the thread that made it.
class UpdateCheck {
 public:
  enum class Stage {
    Idle,
    Initialization,  // the request is on its way
    Connected,       // the request has been written
    UpToDate,
    Upgrade,
    NoConnection,    // TCPError
    OperationError,  // a bad URL
    ProtocolError,   // a status that the client refuses
  };

  // Without a socket, the check runs on a QtTCPSocket.
  UpdateCheck(std::string version, std::string baseURL, std::unique_ptr<http::TCPSocket> socket = nullptr);
  UpdateCheck(const UpdateCheck&) = delete;
  UpdateCheck& operator=(const UpdateCheck&) = delete;

  // The client itself, for an owner that handles more of its events.
  http::BasicHTTP& BasicHTTP1() { return http_; }

  // The window's Event_Open: "Initialization...", then the request.
  void start();
  // From now on no event of the client changes anything. The owner that
  // gives up stops the client itself.
  void abandon() { abandoned_ = true; }

  const std::string& text() const { return text_; }
  bool DLVisible() const { return dlVisible_; }
  Stage stage() const { return stage_; }
  // A page came or a failure was reported: nothing more is under way.
  bool finished() const;

  const std::string& version() const { return version_; }
  std::string versionURL() const { return baseURL_ + kVersionPage; }
  std::string downloadURL() const { return baseURL_ + kArchive; }

  // What the last failure said: the refused status, the socket's error code,
  // the client's message.
  int32_t failedStatus() const { return failedStatus_; }
  int32_t errorCode() const { return errorCode_; }
  const std::string& operationMessage() const { return operationMessage_; }

  // Fires after every change of the text or of DL.
  std::function<void(const UpdateCheck&)> changed;

 private:
  void show(Stage stage, const std::string& text);
  void stageMessage(Stage stage, std::string_view message);

  std::string version_;
  std::string baseURL_;
  http::BasicHTTP http_;
  std::string text_;
  bool dlVisible_ = false;
  Stage stage_ = Stage::Idle;
  bool abandoned_ = false;
  int32_t failedStatus_ = 0;
  int32_t errorCode_ = 0;
  std::string operationMessage_;
};

}  // namespace trelvane::update
