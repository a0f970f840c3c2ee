// loopback.h -- helpers of the integration tests: the event loop, a scripted peer, nginx on 127.0.0.1.
#pragma once

#include <QProcess>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "support/qt_event_loop.h"

namespace trelvane::http::testing {

using testsupport::runFor;
using testsupport::runUntil;

// A free TCP port on 127.0.0.1 (nothing listens on it when this returns).
quint16 freePort();

// A peer on 127.0.0.1 that reads each request up to its blank line and then
// plays a script on that connection.
class ScriptedPeer {
 public:
  using Script = std::function<void(QTcpSocket* connection, const std::string& request)>;
  explicit ScriptedPeer(Script script);
  quint16 port() const { return server_.serverPort(); }
  std::string url(const std::string& path) const;
  const std::vector<std::string>& requests() const { return requests_; }

 private:
  QTcpServer server_;
  Script script_;
  std::vector<std::string> requests_;
};

// nginx, started as a child process on a free port with a generated
// configuration in a temporary folder, and stopped at the end.
class Nginx {
 public:
  Nginx();
  ~Nginx();
  // Empty when it runs; otherwise what went wrong.
  const std::string& error() const { return error_; }
  std::string url(const std::string& path) const;
  std::string path(const std::string& name) const;  // a file under the folder
  static std::string dataBin();                      // the bytes of /data.bin
  static std::string chunkText();                    // the bytes of /chunk/text.txt

 private:
  QTemporaryDir dir_;
  QProcess process_;
  quint16 port_ = 0;
  std::string error_;
};

}  // namespace trelvane::http::testing
