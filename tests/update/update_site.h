// update_site.h -- an update site on 127.0.0.1 for the update check's tests, and the event loop around it.
#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QObject>
#include <QTcpServer>
#include <QTcpSocket>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "support/qt_event_loop.h"

namespace trelvane::update::test {

using testsupport::runFor;
using testsupport::runUntil;

// A web server on 127.0.0.1: it reads each request up to its blank line and
// answers it by its path; a path it does not know gets a 404.
class UpdateSite {
 public:
  using Answer = std::function<void(QTcpSocket* connection, const std::string& path)>;

  UpdateSite() {
    server_.listen(QHostAddress::LocalHost, 0);
    QObject::connect(&server_, &QTcpServer::newConnection, &server_, [this] {
      while (QTcpSocket* conn = server_.nextPendingConnection()) {
        ++open_;
        auto received = std::make_shared<std::string>();
        QObject::connect(conn, &QTcpSocket::readyRead, conn, [this, conn, received] {
          const bool before = received->find("\r\n\r\n") != std::string::npos;
          const QByteArray bytes = conn->readAll();
          received->append(bytes.constData(), static_cast<std::size_t>(bytes.size()));
          if (before || received->find("\r\n\r\n") == std::string::npos) return;
          requests_.push_back(*received);
          const std::string line = received->substr(0, received->find("\r\n"));
          const auto a = line.find(' '), b = line.rfind(' ');
          const std::string path = (a != std::string::npos && b > a) ? line.substr(a + 1, b - a - 1) : "";
          auto it = answers_.find(path);
          if (it != answers_.end()) it->second(conn, path);
          else if (fallback_) fallback_(conn, path);
          else status(404, "Not Found", "<html>not here</html>")(conn, path);
        });
        QObject::connect(conn, &QTcpSocket::disconnected, conn, [this, conn] {
          --open_;
          conn->deleteLater();
        });
      }
    });
  }

  quint16 port() const { return server_.serverPort(); }
  std::string root() const { return "http://127.0.0.1:" + std::to_string(port()); }
  // The update site's base URL: a folder on this server.
  std::string base() const { return root() + "/update/"; }

  void on(const std::string& path, Answer answer) { answers_[path] = std::move(answer); }
  void otherwise(Answer answer) { fallback_ = std::move(answer); }

  const std::vector<std::string>& requests() const { return requests_; }
  std::vector<std::string> paths() const {
    std::vector<std::string> out;
    for (const std::string& r : requests_) {
      const std::string line = r.substr(0, r.find("\r\n"));
      out.push_back(line.substr(line.find(' ') + 1, line.rfind(' ') - line.find(' ') - 1));
    }
    return out;
  }
  // Connections that the client has not closed yet.
  int openConnections() const { return open_; }

  // The bytes given, then the server's close.
  static Answer raw(std::string bytes) {
    return [bytes](QTcpSocket* conn, const std::string&) {
      conn->write(bytes.data(), static_cast<qint64>(bytes.size()));
      conn->disconnectFromHost();
    };
  }
  // A status with a body of known length.
  static Answer status(int code, const std::string& reason, const std::string& body,
                       const std::string& headers = "Content-Type: text/html\r\n") {
    return raw("HTTP/1.1 " + std::to_string(code) + " " + reason + "\r\n" + headers +
               "Content-Length: " + std::to_string(body.size()) + "\r\nConnection: close\r\n\r\n" + body);
  }
  static Answer page(const std::string& body) { return status(200, "OK", body); }
  static Answer redirect(const std::string& location, int code = 302) {
    return status(code, "Found", "moved", "Location: " + location + "\r\n");
  }
  // Takes the request and never answers.
  static Answer silent() {
    return [](QTcpSocket*, const std::string&) {};
  }

 private:
  QTcpServer server_;
  std::map<std::string, Answer> answers_;
  Answer fallback_;
  std::vector<std::string> requests_;
  int open_ = 0;
};

// A port on 127.0.0.1 where nothing listens.
inline quint16 closedPort() {
  QTcpServer probe;
  probe.listen(QHostAddress::LocalHost, 0);
  return probe.serverPort();
}

// The request that the about window sends for the page, byte for byte.
inline std::string versionRequest() {
  return "GET /update/version.html HTTP/1.1\r\n"
         "User-Agent: BasicHTTP/1.0\r\n"
         "Host: 127.0.0.1\r\n"
         "Connection: close\r\n"
         "\r\n";
}

}  // namespace trelvane::update::test
