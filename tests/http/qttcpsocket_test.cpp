// qttcpsocket_test.cpp -- QtTCPSocket under BasicHTTP against scripted peers on 127.0.0.1, hostile ones included.
#include "http/qttcpsocket.h"

#include <gtest/gtest.h>

#include <QTimer>

#include <filesystem>
#include <fstream>
#include <iterator>

#include <unistd.h>

#include "eventlog.h"
#include "http/basichttp.h"
#include "loopback.h"

using namespace trelvane::http;
using namespace trelvane::http::testing;

namespace {

struct QtClient {
  QtTCPSocket* socket = new QtTCPSocket;
  BasicHTTP http{std::unique_ptr<TCPSocket>(socket)};
  EventLog log{http};
  bool ended() const { return !log.only({"Page", "File", "Cancelled"}).empty(); }
};

void write(QTcpSocket* conn, const std::string& bytes) {
  conn->write(bytes.data(), static_cast<qint64>(bytes.size()));
}

// Sends pieces one by one, every intervalMs, on that connection; then closes
// it if asked. The timer dies with the connection.
void drip(QTcpSocket* conn, std::vector<std::string> pieces, int intervalMs, bool closeAfter) {
  auto* timer = new QTimer(conn);
  auto next = std::make_shared<std::size_t>(0);
  QObject::connect(timer, &QTimer::timeout, conn, [conn, timer, next, pieces, closeAfter] {
    if (*next < pieces.size()) {
      write(conn, pieces[(*next)++]);
    } else {
      timer->stop();
      if (closeAfter) conn->disconnectFromHost();
    }
  });
  timer->start(intervalMs);
}

}  // namespace

// Peers that answer every request with pieces: at once (then closing, if
// asked, in the same turn) or one every dripMs.
TEST(QtTCPSocket, ScriptedPeers) {
  std::vector<std::string> endless{"HTTP/1.1 200 OK\r\nX-Filler: "};
  for (int i = 0; i < 64; ++i) endless.emplace_back(16384, 'a');
  const struct {
    const char* name;
    std::vector<std::string> pieces;
    int dripMs;
    bool close;
    int idleMs, pendingLimit;
    Lines want;  // the Page, Headers, TCPError and Cancelled events
  } rows[] = {
      {"page, then the peer's close", {"HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\n\r\nall of the body"}, 0,
       true, 0, 0, {"Headers 200|false|false", "Page text/plain|all of the body|false"}},
      // behind a 100 the rest of the read stays unread; the close hands it over as the body
      {"bytes left unread handed over at the close", {"HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 200 OK\r\n\r\nfinal"}, 0,
       true, 0, 0, {"Headers 100|true|false", "Page |HTTP/1.1 200 OK\r\n\r\nfinal|false"}},
      {"dripping body", {"HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\n", "h", "e", "l", "l", "o"}, 30, false, 0, 0,
       {"Headers 200|false|false", "Page |hello|false"}},
      {"silent peer cut off", {"HTTP/1.1 200 OK\r\n"}, 0, false, 300, 0, {"TCPError 110", "Cancelled"}},
      {"header that never ends cut off", endless, 5, true, 0, 64 * 1024, {"TCPError 111", "Cancelled"}},
  };
  for (const auto& r : rows) {
    ScriptedPeer peer([&r](QTcpSocket* conn, const std::string&) {
      if (r.dripMs) return drip(conn, r.pieces, r.dripMs, r.close);
      for (const std::string& piece : r.pieces) write(conn, piece);
      if (r.close) conn->disconnectFromHost();
    });
    QtClient c;
    if (r.idleMs) c.socket->setIdleLimitMs(r.idleMs);
    if (r.pendingLimit) c.socket->setPendingLimit(r.pendingLimit);
    c.http.Get(peer.url("/v.html"));
    ASSERT_TRUE(runUntil([&] { return c.ended(); })) << r.name;
    EXPECT_EQ(c.log.only({"Page", "Headers", "TCPError", "Cancelled"}), r.want) << r.name;
    ASSERT_EQ(peer.requests().size(), 1u);
    EXPECT_EQ(peer.requests()[0],
              "GET /v.html HTTP/1.1\r\nUser-Agent: BasicHTTP/1.0\r\nHost: 127.0.0.1\r\nConnection: close\r\n\r\n");
  }
}

TEST(QtTCPSocket, RedirectReconnectsFromInsideTheDataEvent) {
  ScriptedPeer target([](QTcpSocket* conn, const std::string&) {
    write(conn, "HTTP/1.1 200 OK\r\nContent-Length: 6\r\n\r\ntarget");
  });
  ScriptedPeer first([&target](QTcpSocket* conn, const std::string&) {
    write(conn, "HTTP/1.1 302 Found\r\nLocation: " + target.url("/t") + "\r\nContent-Length: 4\r\n\r\nskip");
  });
  QtClient c;
  c.http.Get(first.url("/f"));
  ASSERT_TRUE(runUntil([&] { return c.ended(); }));
  EXPECT_EQ(c.log.only({"Redirection", "Page", "Cancelled"}),
            (Lines{"Redirection " + target.url("/t"), "Page |target|false"}));
  EXPECT_EQ(target.requests().size(), 1u);
}

TEST(QtTCPSocket, RefusedConnectionAndBadPortAreSocketErrors) {
  QtClient c;
  c.http.Get("http://127.0.0.1:" + std::to_string(freePort()) + "/");
  ASSERT_TRUE(runUntil([&] { return c.ended(); }));
  EXPECT_EQ(c.log.only({"TCPError", "Cancelled"}), (Lines{"TCPError 102", "Cancelled"}));

  QtClient p;
  p.http.Get("http://127.0.0.1:70000/");
  EXPECT_TRUE(p.log.only({"TCPError"}).empty());  // never from inside Connect
  ASSERT_TRUE(runUntil([&] { return p.ended(); }));
  EXPECT_EQ(p.log.only({"TCPError", "Cancelled"}), (Lines{"TCPError 107", "Cancelled"}));
}

TEST(QtTCPSocket, StalledDownloadKeepsWhatCame) {
  ScriptedPeer peer([](QTcpSocket* conn, const std::string&) {
    write(conn, "HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nabc");
  });
  std::filesystem::path file =
      std::filesystem::temp_directory_path() / ("trelvane-http-stalled-" + std::to_string(::getpid()) + ".bin");
  std::filesystem::remove(file);
  QtClient c;
  c.socket->setIdleLimitMs(300);
  c.http.Download(peer.url("/f.bin"), std::make_shared<FolderItem>(file));
  ASSERT_TRUE(runUntil([&] { return c.ended(); }));
  EXPECT_EQ(c.log.only({"Updated", "TCPError", "Cancelled", "File"}),
            (Lines{"Updated true", "TCPError 110", "Cancelled"}));
  std::ifstream in(file, std::ios::binary);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), "abc");
  in.close();
  std::filesystem::remove(file);
}

TEST(QtTCPSocket, StopEndsTheConnectionWithoutAnEvent) {
  ScriptedPeer peer([](QTcpSocket* conn, const std::string&) {
    write(conn, "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nab");
  });
  QtClient c;
  c.http.Get(peer.url("/"));
  ASSERT_TRUE(runUntil([&] { return !c.log.only({"Data"}).empty(); }));
  c.http.Stop();
  runFor(200);
  EXPECT_EQ(c.log.only({"TCPError", "Cancelled", "Page", "Progress Download"}), (Lines{"Progress Download Cancelled"}));
}
