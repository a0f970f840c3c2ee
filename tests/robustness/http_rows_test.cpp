// http_rows_test.cpp -- hostile update servers on 127.0.0.1 against BasicHTTP on the Qt socket, with an owner that guards as the program's do.
#include <gtest/gtest.h>

#include <QTcpSocket>
#include <QTimer>

#include <memory>
#include <string>
#include <vector>

#include "http/basichttp.h"
#include "http/qttcpsocket.h"
#include "loopback.h"

namespace trelvane::robustness {
namespace {

using namespace trelvane::http;
using trelvane::http::testing::runFor;
using trelvane::http::testing::runUntil;
using trelvane::http::testing::ScriptedPeer;

void write(QTcpSocket* conn, const std::string& bytes) {
  conn->write(bytes.data(), static_cast<qint64>(bytes.size()));
}

// The client and an owner that keeps what it needs to see: the end of the
// exchange, its pages, socket errors and cookies.
struct Owner {
  QtTCPSocket* socket = new QtTCPSocket;
  BasicHTTP http{std::unique_ptr<TCPSocket>(socket)};
  std::vector<std::string> pages;
  std::vector<int32_t> socketErrors;
  std::vector<std::pair<HTTPCookie, bool>> cookies;
  int cancelled = 0;
  double received = 0;

  Owner() {
    http.PageReceived = [this](const std::string&, const std::string& content, bool) { pages.push_back(content); };
    http.TCPError = [this](int32_t code) { socketErrors.push_back(code); };
    http.Cancelled = [this] { ++cancelled; };
    http.CookieReceived = [this](const HTTPCookie& c, bool expired) { cookies.emplace_back(c, expired); };
  }
  bool ended() const { return !pages.empty() || cancelled > 0; }
};

TEST(HostileServer, HeaderThatNeverEndsIsCutAtTheDefaultLimit) {
  auto sent = std::make_shared<std::size_t>(0);
  ScriptedPeer peer([sent](QTcpSocket* conn, const std::string&) {
    write(conn, "HTTP/1.1 200 OK\r\nX-Filler: ");
    // Header bytes without end, as fast as the connection takes them.
    QObject::connect(conn, &QTcpSocket::bytesWritten, conn, [conn, sent] {
      if (conn->bytesToWrite() < 65536 && *sent < (64u << 20)) {
        write(conn, std::string(65536, 'a'));
        *sent += 65536;
      }
    });
  });
  Owner o;
  o.http.Get(peer.url("/version.html"));
  ASSERT_TRUE(runUntil([&] { return o.ended(); }));
  EXPECT_EQ(o.socketErrors, std::vector<int32_t>{kHeaderTooLargeError});
  EXPECT_TRUE(o.pages.empty());
  EXPECT_FALSE(o.http.HeaderReceived);
  EXPECT_LT(*sent, 64u << 20) << "the client read on to the end of the stream";
}

// A server that sends a byte at a time keeps the window's loop turning, and
// the owner's stop ends the exchange with nothing delivered.
TEST(HostileServer, DrippingServerLeavesTheLoopFreeAndIsStopped) {
  auto dripped = std::make_shared<int>(0);
  ScriptedPeer peer([dripped](QTcpSocket* conn, const std::string&) {
    const std::string response = "HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n" + std::string(1000, 'v');
    auto* timer = new QTimer(conn);
    QObject::connect(timer, &QTimer::timeout, conn, [conn, response, dripped] {
      if (*dripped < static_cast<int>(response.size())) write(conn, response.substr((*dripped)++, 1));
    });
    timer->start(20);
  });
  Owner o;
  o.http.DataProgress = [&o](double received, double, double) { o.received = received; };
  int turns = 0;
  QTimer other;
  QObject::connect(&other, &QTimer::timeout, [&turns] { ++turns; });
  other.start(5);
  o.http.Get(peer.url("/version.html"));
  ASSERT_TRUE(runUntil([&] { return o.http.HeaderReceived && o.received >= 5; }));
  const int turnsAtFive = turns;
  ASSERT_TRUE(runUntil([&] { return o.received >= 10; }));
  EXPECT_GT(turns, turnsAtFive) << "other events waited for the server";
  o.http.Stop();
  const int drippedAtStop = *dripped;
  runFor(200);
  EXPECT_TRUE(o.pages.empty());
  EXPECT_FALSE(o.http.Connected);
  EXPECT_LE(o.received, drippedAtStop);
}

// 2 GB announced and streamed as fast as the loopback goes: the owner stops
// above 1 MiB, as the update check does, and the client holds no more than
// what came before the stop.
TEST(HostileServer, TwoGigabyteBodyIsStoppedByTheOwnersBound) {
  auto sent = std::make_shared<uint64_t>(0);
  auto closed = std::make_shared<bool>(false);
  ScriptedPeer peer([sent, closed](QTcpSocket* conn, const std::string&) {
    write(conn, "HTTP/1.1 200 OK\r\nContent-Type: text/html\r\nContent-Length: 2147483648\r\n\r\n");
    QObject::connect(conn, &QTcpSocket::disconnected, [closed] { *closed = true; });
    auto more = [conn, sent] {
      while (conn->bytesToWrite() < (1 << 20) && *sent < (2ull << 30)) {
        write(conn, std::string(1 << 16, 'x'));
        *sent += 1 << 16;
      }
    };
    QObject::connect(conn, &QTcpSocket::bytesWritten, conn, more);
    more();
  });
  Owner o;
  bool stopped = false;
  o.http.DataProgress = [&](double received, double, double) {
    o.received = received;
    if (received > 1024 * 1024 && !stopped) {
      stopped = true;
      o.http.Stop();
    }
  };
  o.http.Get(peer.url("/version.html"));
  ASSERT_TRUE(runUntil([&] { return stopped; }));
  ASSERT_TRUE(runUntil([&] { return *closed; }));
  EXPECT_TRUE(o.pages.empty());
  EXPECT_LT(o.received, 64.0 * 1024 * 1024);
  EXPECT_LT(o.http.Buffer.size(), 64u << 20);
  EXPECT_LT(*sent, 2ull << 30) << "the server was read to the end";
}

// A server that redirects to itself: the owner brakes after ten redirects.
TEST(HostileServer, RedirectLoopIsBrakedByTheOwner) {
  std::string self;
  ScriptedPeer peer([&self](QTcpSocket* conn, const std::string&) {
    write(conn, "HTTP/1.1 302 Found\r\nLocation: " + self + "\r\nContent-Length: 0\r\n\r\n");
  });
  self = peer.url("/version.html");
  Owner o;
  int redirects = 0;
  o.http.HandleRedirection = [&](const std::string& target) {
    EXPECT_EQ(target, self);
    if (++redirects <= 10) return false;
    o.http.Stop();
    return true;
  };
  o.http.Get(self);
  ASSERT_TRUE(runUntil([&] { return redirects > 10; }));
  runFor(100);
  EXPECT_EQ(peer.requests().size(), 11u);
  EXPECT_TRUE(o.pages.empty());
}

TEST(HostileServer, ChunkedBodyWithABadSizeLineEndsThePageThere) {
  ScriptedPeer peer([](QTcpSocket* conn, const std::string&) {
    write(conn, "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nhello\r\nzz\r\nworld\r\n0\r\n\r\n");
    conn->disconnectFromHost();
  });
  Owner o;
  o.http.Get(peer.url("/version.html"));
  ASSERT_TRUE(runUntil([&] { return o.ended(); }));
  EXPECT_EQ(o.pages, std::vector<std::string>{"hello"});
  EXPECT_TRUE(o.socketErrors.empty());
}

// An unknown month, an unreadable date and a year far out: the page comes,
// and each cookie is judged by a date of some calendar. One that reads as
// past has expired and is dropped, as Parse answers.
TEST(HostileServer, CookiesWithBadDatesNeverStopThePage) {
  ScriptedPeer peer([](QTcpSocket* conn, const std::string&) {
    write(conn,
          "HTTP/1.1 200 OK\r\n"
          "Set-Cookie: a=1; expires=Tue, 15-Foo-2030 01:02:03 GMT; path=/\r\n"
          "Set-Cookie: b=2; expires=yesterday; path=/\r\n"
          "Set-Cookie: c=3; expires=Wed, 99-Dec-99999999999 99:99:99 GMT; path=/\r\n"
          "Content-Length: 4\r\n\r\n1.20");
  });
  Owner o;
  o.http.Get(peer.url("/version.html"));
  ASSERT_TRUE(runUntil([&] { return o.ended(); }));
  EXPECT_EQ(o.pages, std::vector<std::string>{"1.20"});
  ASSERT_EQ(o.cookies.size(), 2u);
  const HTTPCookie& a = o.cookies[0].first;
  EXPECT_EQ(a.Name, "a");
  ASSERT_TRUE(a.Expires.has_value());
  EXPECT_EQ(a.Expires->Year(), 2030);
  EXPECT_EQ(a.Expires->Month(), 12);  // the unknown month reads as December
  EXPECT_FALSE(o.cookies[0].second);
  EXPECT_EQ(o.cookies[1].first.Name, "c");  // clamped far ahead, not wrapped into the past
  EXPECT_FALSE(o.cookies[1].second);
}

}  // namespace
}  // namespace trelvane::robustness
