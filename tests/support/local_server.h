// local_server.h -- the Qt event loop in tests, and a web server on 127.0.0.1 that answers each request by its path.
#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace trelvane::testsupport {

// Runs the event loop until done() holds or maxMs have passed; true if done.
// The limit only bounds a broken exchange: no test measures time.
inline bool runUntil(const std::function<bool()>& done, int maxMs = 15000) {
  for (QDeadlineTimer deadline(maxMs); !done();) {
    if (deadline.hasExpired()) return false;
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }
  return true;
}

// Lets the loop run for a while, to show that nothing more happens.
inline void runFor(int ms) {
  for (QDeadlineTimer deadline(ms); !deadline.hasExpired();)
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 10);
}

// A QCoreApplication for a test program that has none before its first test.
class CoreApplicationEnvironment : public ::testing::Environment {
 public:
  void SetUp() override {
    static int argc = 1;
    static char arg0[] = "trelvane_tests", *argv[] = {arg0, nullptr};
    if (!QCoreApplication::instance()) app_ = std::make_unique<QCoreApplication>(argc, argv);
  }
  void TearDown() override { app_.reset(); }

 private:
  std::unique_ptr<QCoreApplication> app_;
};

// A port on 127.0.0.1 where nothing listens.
inline quint16 freePort() {
  QTcpServer probe;
  probe.listen(QHostAddress::LocalHost, 0);
  return probe.serverPort();
}

inline void write(QTcpSocket* conn, const std::string& bytes) { conn->write(bytes.data(), static_cast<qint64>(bytes.size())); }

// Reads each request up to its blank line and answers it by its path; a
// path it does not know gets the fallback, or a 404.
class LocalServer {
 public:
  using Answer = std::function<void(QTcpSocket* connection, const std::string& path)>;

  explicit LocalServer(Answer fallback = nullptr) : fallback_(fallback) {
    if (!fallback_) fallback_ = status(404, "Not Found", "<html>not here</html>");
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
          const std::string path = paths().back();
          (answers_.count(path) ? answers_[path] : fallback_)(conn, path);
        });
        QObject::connect(conn, &QTcpSocket::disconnected, conn, [this, conn] { --open_, conn->deleteLater(); });
      }
    });
  }

  std::string root() const { return "http://127.0.0.1:" + std::to_string(server_.serverPort()); }
  std::string base() const { return root() + "/update/"; }  // an update site's folder
  void on(const std::string& path, Answer answer) { answers_[path] = std::move(answer); }
  const std::vector<std::string>& requests() const { return requests_; }
  std::vector<std::string> paths() const {
    std::vector<std::string> out;
    for (const std::string& r : requests_) {
      const std::size_t a = r.find(' '), b = r.find(' ', a + 1);
      out.push_back(r.substr(a + 1, b - a - 1));
    }
    return out;
  }
  int openConnections() const { return open_; }  // not yet closed by the client

  // The bytes given, then the server's close.
  static Answer raw(std::string bytes, bool close = true) {
    return [bytes, close](QTcpSocket* conn, const std::string&) {
      write(conn, bytes);
      if (close) conn->disconnectFromHost();
    };
  }
  static Answer status(int code, const std::string& reason, const std::string& body,
                       const std::string& headers = "Content-Type: text/html\r\n") {
    return raw("HTTP/1.1 " + std::to_string(code) + " " + reason + "\r\n" + headers + "Content-Length: " +
               std::to_string(body.size()) + "\r\nConnection: close\r\n\r\n" + body);
  }
  static Answer page(const std::string& body) { return status(200, "OK", body); }
  static Answer redirect(const std::string& location) { return status(302, "Found", "moved", "Location: " + location + "\r\n"); }
  static Answer silent() { return [](QTcpSocket*, const std::string&) {}; }
  // Pieces one by one, every intervalMs, then the close if asked; the timer dies with the connection.
  static Answer drip(std::vector<std::string> pieces, int intervalMs, bool close) {
    return [pieces, intervalMs, close](QTcpSocket* conn, const std::string&) {
      auto* timer = new QTimer(conn);
      auto next = std::make_shared<std::size_t>(0);
      QObject::connect(timer, &QTimer::timeout, conn, [conn, timer, next, pieces, close] {
        if (*next < pieces.size()) return write(conn, pieces[(*next)++]);
        timer->stop();
        if (close) conn->disconnectFromHost();
      });
      timer->start(intervalMs);
    };
  }

 private:
  QTcpServer server_;
  std::map<std::string, Answer> answers_;
  Answer fallback_;
  std::vector<std::string> requests_;
  int open_ = 0;
};

}  // namespace trelvane::testsupport
