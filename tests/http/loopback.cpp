// loopback.cpp -- helpers of the integration tests: the event loop, a scripted peer, nginx on 127.0.0.1.
#include "loopback.h"

#include "support/qt_event_loop.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

namespace trelvane::http::testing {
namespace {

[[maybe_unused]] ::testing::Environment* const qtEnvironment =
    ::testing::AddGlobalTestEnvironment(new testsupport::CoreApplicationEnvironment);

bool writeFile(const QString& path, const std::string& bytes) {
  QFile f(path);
  if (!f.open(QIODevice::WriteOnly)) return false;
  return f.write(bytes.data(), static_cast<qint64>(bytes.size())) == static_cast<qint64>(bytes.size());
}

}  // namespace

quint16 freePort() {
  QTcpServer probe;
  probe.listen(QHostAddress::LocalHost, 0);
  return probe.serverPort();
}

ScriptedPeer::ScriptedPeer(Script script) : script_(std::move(script)) {
  server_.listen(QHostAddress::LocalHost, 0);
  QObject::connect(&server_, &QTcpServer::newConnection, &server_, [this] {
    while (QTcpSocket* conn = server_.nextPendingConnection()) {
      conn->setSocketOption(QAbstractSocket::LowDelayOption, 1);
      auto received = std::make_shared<std::string>();
      QObject::connect(conn, &QTcpSocket::readyRead, conn, [this, conn, received] {
        bool before = received->find("\r\n\r\n") != std::string::npos;
        QByteArray bytes = conn->readAll();
        received->append(bytes.constData(), static_cast<std::size_t>(bytes.size()));
        if (before || received->find("\r\n\r\n") == std::string::npos) return;
        requests_.push_back(*received);
        script_(conn, *received);
      });
      QObject::connect(conn, &QTcpSocket::disconnected, conn, &QObject::deleteLater);
    }
  });
}

std::string ScriptedPeer::url(const std::string& path) const {
  return "http://127.0.0.1:" + std::to_string(port()) + path;
}

std::string Nginx::dataBin() {
  std::string bytes(300000, '\0');
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>((i * 7 + i / 256) & 0xFF);
  return bytes;
}

std::string Nginx::chunkText() {
  std::string text;
  for (int i = 0; i < 2000; ++i) text += "line " + std::to_string(i) + " x\r\n";
  return text;
}

Nginx::Nginx() {
  const QString nginx = "/usr/sbin/nginx";
  if (!QFile::exists(nginx)) {
    error_ = "no /usr/sbin/nginx: run scripts/setup";
    return;
  }
  if (!dir_.isValid()) {
    error_ = "no temporary folder";
    return;
  }
  const std::string d = dir_.path().toStdString();
  QDir root(dir_.path());
  for (const char* sub : {"www/private", "www/chunk", "tmp/body", "tmp/proxy", "tmp/fastcgi", "tmp/uwsgi", "tmp/scgi"})
    root.mkpath(sub);
  port_ = freePort();
  const std::string p = std::to_string(port_);
  const std::string here = "http://127.0.0.1:" + p;

  std::string conf =
      "master_process off;\n"
      "worker_processes 1;\n"
      "events { worker_connections 64; }\n"
      "http {\n"
      "  access_log off;\n"
      "  client_body_temp_path " + d + "/tmp/body;\n"
      "  proxy_temp_path " + d + "/tmp/proxy;\n"
      "  fastcgi_temp_path " + d + "/tmp/fastcgi;\n"
      "  uwsgi_temp_path " + d + "/tmp/uwsgi;\n"
      "  scgi_temp_path " + d + "/tmp/scgi;\n"
      "  types { text/html html; text/plain txt; application/octet-stream bin; }\n"
      "  default_type application/octet-stream;\n"
      "  server {\n"
      "    listen 127.0.0.1:" + p + ";\n"
      "    root " + d + "/www;\n"
      "    location = /moved { return 302 " + here + "/page.html; }\n"
      "    location = /ftp-moved { return 302 ftp://127.0.0.1:" + p + "/page.html; }\n"
      "    location = /https-moved { return 301 https://127.0.0.1:" + p + "/page.html; }\n"
      "    location = /echo { default_type text/plain;\n"
      "      return 200 \"$request_method $request_uri [$http_content_type] [$http_content_length] "
      "[$http_cookie] [$http_range]\"; }\n"
      "    location = /cookie { default_type text/plain; add_header Set-Cookie \"session=abc; path=/\";\n"
      "      return 200 \"cookie set\"; }\n"
      "    location /private/ { auth_basic \"Trelvane\"; auth_basic_user_file " + d + "/htpasswd; }\n"
      "    location /chunk/ { sub_filter 'x' 'y'; sub_filter_once off; sub_filter_types text/plain; }\n"
      "  }\n"
      "}\n";
  bool ok = writeFile(dir_.filePath("nginx.conf"), conf) && writeFile(dir_.filePath("htpasswd"), "user:{PLAIN}secret\n") &&
            writeFile(dir_.filePath("www/page.html"), "<html>Trelvane</html>\n") &&
            writeFile(dir_.filePath("www/data.bin"), dataBin()) &&
            writeFile(dir_.filePath("www/chunk/text.txt"), chunkText()) &&
            writeFile(dir_.filePath("www/private/secret.txt"), "secret page\n");
  if (!ok) {
    error_ = "cannot write the server's files";
    return;
  }

  process_.setStandardOutputFile(dir_.filePath("stdout.log"));
  process_.setStandardErrorFile(dir_.filePath("stderr.log"));
  process_.start(nginx, {"-p", dir_.path(), "-c", dir_.filePath("nginx.conf"), "-g",
                         QString::fromStdString("daemon off; pid " + d + "/nginx.pid; error_log " + d + "/error.log;")});
  if (!process_.waitForStarted(5000)) {
    error_ = "nginx did not start";
    return;
  }
  // ready once it accepts a connection
  QDeadlineTimer deadline(10000);
  while (!deadline.hasExpired()) {
    if (process_.state() == QProcess::NotRunning) break;
    QTcpSocket probe;
    probe.connectToHost(QHostAddress::LocalHost, port_);
    if (probe.waitForConnected(200)) return;
    process_.waitForFinished(50);
  }
  QFile log(dir_.filePath("error.log")), err(dir_.filePath("stderr.log"));
  log.open(QIODevice::ReadOnly);
  err.open(QIODevice::ReadOnly);
  error_ = "nginx is not answering: " + log.readAll().toStdString() + err.readAll().toStdString();
}

Nginx::~Nginx() {
  if (process_.state() == QProcess::NotRunning) return;
  process_.terminate();
  if (!process_.waitForFinished(5000)) {
    process_.kill();
    process_.waitForFinished(5000);
  }
}

std::string Nginx::url(const std::string& path) const { return "http://127.0.0.1:" + std::to_string(port_) + path; }

std::string Nginx::path(const std::string& name) const { return dir_.filePath(QString::fromStdString(name)).toStdString(); }

}  // namespace trelvane::http::testing
