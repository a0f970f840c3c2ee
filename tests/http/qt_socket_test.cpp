// qt_socket_test.cpp -- BasicHTTP on QtTCPSocket against scripted and hostile peers, and a real nginx, on 127.0.0.1.
#include <gtest/gtest.h>
#include <unistd.h>

#include <QTimer>
#include <QProcess>
#include <QTemporaryDir>

#include <cstring>
#include <filesystem>
#include <fstream>

#include "event_log.h"
#include "http/qttcpsocket.h"
#include "support/files.h"
#include "support/local_server.h"

namespace trelvane::http {
namespace {

using namespace testsupport;
using trelvane::testing::readBytes;
using Lines = std::vector<std::string>;

[[maybe_unused]] ::testing::Environment* const qtEnvironment =
    ::testing::AddGlobalTestEnvironment(new CoreApplicationEnvironment);

// A client on the Qt socket and its events, as lines.
struct Client : testing::EventLog {
  QtTCPSocket* socket = new QtTCPSocket;
  BasicHTTP http{std::unique_ptr<TCPSocket>(socket)};
  Client() { attach(http); }
  bool run() { return runUntil([this] { return !only({"Page", "File", "Cancelled"}).empty(); }); }
};

// Peers that answer with pieces at once (then closing in the same turn) or one every few milliseconds.
TEST(QtTCPSocket, ScriptedPeers) {
  std::vector<std::string> endless{"HTTP/1.1 200 OK\r\nX-Filler: "};
  for (int i = 0; i < 64; ++i) endless.emplace_back(16384, 'a');
  const struct {
    const char* name;
    LocalServer::Answer answer;
    int idleMs, pendingLimit;
    Lines want;  // the Page, Headers, TCPError and Cancelled events
  } rows[] = {
      {"page, then the peer's close", LocalServer::raw("HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\n\r\nall of the body"), 0, 0,
       {"Headers 200|false|false", "Page text/plain|all of the body|false"}},
      // behind a 100 the rest of the read stays unread; the close hands it over as the body
      {"bytes left unread handed over at the close", LocalServer::raw("HTTP/1.1 100 Continue\r\n\r\nHTTP/1.1 200 OK\r\n\r\nfinal"), 0, 0,
       {"Headers 100|true|false", "Page |HTTP/1.1 200 OK\r\n\r\nfinal|false"}},
      {"dripping body", LocalServer::drip({"HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\n", "h", "e", "l", "l", "o"}, 30, false), 0, 0,
       {"Headers 200|false|false", "Page |hello|false"}},
      {"silent peer cut off", LocalServer::raw("HTTP/1.1 200 OK\r\n", false), 300, 0, {"TCPError 110", "Cancelled"}},
      {"header that never ends cut off", LocalServer::drip(endless, 5, true), 0, 64 * 1024, {"TCPError 111", "Cancelled"}},
  };
  for (const auto& r : rows) {
    LocalServer peer(r.answer);
    Client c;
    if (r.idleMs) c.socket->setIdleLimitMs(r.idleMs);
    if (r.pendingLimit) c.socket->setPendingLimit(r.pendingLimit);
    c.http.Get(peer.root() + "/v.html");
    ASSERT_TRUE(c.run()) << r.name;
    EXPECT_EQ(c.only({"Page", "Headers", "TCPError", "Cancelled"}), r.want) << r.name;
    EXPECT_EQ(peer.requests(), Lines{"GET /v.html HTTP/1.1\r\nUser-Agent: BasicHTTP/1.0\r\nHost: 127.0.0.1\r\nConnection: close\r\n\r\n"});
  }
}

TEST(QtTCPSocket, RedirectReconnectsFromInsideTheDataEvent) {
  LocalServer target(LocalServer::status(200, "OK", "target", ""));
  LocalServer first(LocalServer::status(302, "Found", "skip", "Location: " + target.root() + "/t\r\n"));
  Client c;
  c.http.Get(first.root() + "/f");
  ASSERT_TRUE(c.run());
  EXPECT_EQ(c.only({"Redirection", "Page", "Cancelled"}), (Lines{"Redirection " + target.root() + "/t", "Page |target|false"}));
  EXPECT_EQ(target.requests().size(), 1u);
}

TEST(QtTCPSocket, RefusedConnectionAndBadPortAreSocketErrorsNeverFromInsideConnect) {
  for (auto [port, code] : {std::pair{std::to_string(freePort()), "TCPError 102"}, {std::string("70000"), "TCPError 107"}}) {
    Client c;
    c.http.Get("http://127.0.0.1:" + port + "/");
    EXPECT_TRUE(c.only({"TCPError"}).empty());
    ASSERT_TRUE(c.run());
    EXPECT_EQ(c.only({"TCPError", "Cancelled"}), (Lines{code, "Cancelled"}));
  }
}

TEST(QtTCPSocket, StalledDownloadKeepsWhatCameAndStopEndsWithoutAnEvent) {
  LocalServer peer(LocalServer::raw("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nabc", false));
  const std::string file = std::filesystem::temp_directory_path() / ("trelvane-stalled-" + std::to_string(::getpid()));
  Client c;
  c.socket->setIdleLimitMs(300);
  c.http.Download(peer.root() + "/f.bin", std::make_shared<FolderItem>(file));
  ASSERT_TRUE(c.run());
  EXPECT_EQ(c.only({"Updated", "TCPError", "Cancelled", "File"}), (Lines{"Updated true", "TCPError 110", "Cancelled"}));
  EXPECT_EQ(readBytes(file), "abc");
  std::filesystem::remove(file);
  Client s;
  s.http.Get(peer.root() + "/");
  ASSERT_TRUE(runUntil([&] { return !s.only({"Data"}).empty(); }));
  s.http.Stop();
  runFor(200);
  EXPECT_EQ(s.only({"TCPError", "Cancelled", "Page", "Progress Download"}), Lines{"Progress Download Cancelled"});
}

// nginx, started as a child process on a free port with the configuration of
// tests/data/http/nginx.conf and its pages, and stopped at the end.
class Nginx : public ::testing::Test {
 protected:
  static std::string dataBin() {
    std::string bytes(300000, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>((i * 7 + i / 256) & 0xFF);
    return bytes;
  }
  static void SetUpTestSuite() {
    dir = new QTemporaryDir;
    const std::string d = dir->path().toStdString();
    std::string conf = readBytes(TRELVANE_TEST_DATA "/http/nginx.conf");
    for (auto [mark, value] : {std::pair{"@TMP@", d}, {"@PORT@", std::to_string(port = freePort())}, {"@WWW@", std::string(TRELVANE_TEST_DATA "/http/www")}})
      for (std::size_t at; (at = conf.find(mark)) != std::string::npos;) conf.replace(at, std::strlen(mark), value);
    std::ofstream(d + "/nginx.conf") << conf;
    std::ofstream(d + "/data.bin", std::ios::binary) << dataBin();
    process = new QProcess;
    process->setStandardErrorFile(dir->filePath("stderr.log"));
    process->start("/usr/sbin/nginx", {"-p", dir->path(), "-c", dir->filePath("nginx.conf"), "-g", "daemon off;"});
    QTcpSocket probe;  // ready once it accepts a connection
    for (QDeadlineTimer deadline(10000); !deadline.hasExpired() && process->state() != QProcess::NotRunning;) {
      probe.connectToHost(QHostAddress::LocalHost, port);
      if (probe.waitForConnected(200)) return;
      process->waitForFinished(50);
    }
    error = "nginx is not answering: " + readBytes(d + "/error.log") + readBytes(d + "/stderr.log");
  }
  static void TearDownTestSuite() {
    process->terminate();
    if (!process->waitForFinished(5000)) process->kill(), process->waitForFinished(5000);
    delete process;
    delete dir;
  }
  void SetUp() override { ASSERT_EQ(error, ""); }
  static std::string url(const std::string& path) { return "http://127.0.0.1:" + std::to_string(port) + path; }

  static inline QTemporaryDir* dir;
  static inline QProcess* process;
  static inline quint16 port;
  static inline std::string error;
  Client c;
};

TEST_F(Nginx, PagesErrorsRedirectsAndCredentials) {
  const std::string page = "Page text/html|<html>Trelvane</html>\n|false", ftp = "ftp://" + url("/page.html").substr(7);
  const Lines redirects{"Redirection", "BadRedirection", "Page", "Cancelled"};
  const struct { const char* path; Lines prefixes, want; } rows[] = {
      {"/page.html", {"Progress", "Headers", "Page", "Cancelled", "TCPError"},
       {"Progress Looking Up Host...", "Progress Waiting For Reply...", "Progress Receiving Data...",
        "Headers 200|false|false", "Progress Download Complete!", page}},
      {"/missing.html", {"ProtocolError", "Cancelled", "Page"}, {"ProtocolError 404", "Cancelled"}},
      {"/moved", redirects, {"Redirection " + url("/page.html"), page}},
      {"/ftp-moved", redirects, {"BadRedirection " + ftp, "Cancelled", "Redirection " + ftp, page}},
      {"/private/secret.txt", {"NeedAuthorization", "Headers", "Page", "Cancelled"},
       {"NeedAuthorization", "Headers 401|false|false", "Headers 200|false|false", "Page text/plain|secret page\n|false"}},
  };
  c.credentials = std::pair("user", "secret");
  for (const auto& r : rows) {
    c.lines.clear();
    c.http.Get(url(r.path));
    ASSERT_TRUE(runUntil([this] { return !c.only({"Page", "File", "ProtocolError"}).empty(); })) << r.path;
    EXPECT_EQ(c.only(r.prefixes), r.want) << r.path;
  }
  int asked = 0;  // a wrong password once: the 401 page ends it
  c.http.NeedAuthorization = [&](std::string& u, std::string& p) { return u = "user", p = "wrong", ++asked == 1; };
  c.pages.clear(), c.lines.clear();
  c.http.Get(url("/private/secret.txt"));
  ASSERT_TRUE(c.run());
  EXPECT_EQ(asked, 2);
  ASSERT_EQ(c.pages.size(), 1u);
  EXPECT_NE(c.pages[0].find("401 Authorization Required"), std::string::npos);
}

TEST_F(Nginx, ChunkedPageDownloadAndResumeGiveTheExactBytes) {
  c.http.Get(url("/chunk/text.txt"));
  ASSERT_TRUE(c.run());
  EXPECT_TRUE(c.http.IsChunked);
  std::string text = readBytes(TRELVANE_TEST_DATA "/http/www/chunk/text.txt");
  std::replace(text.begin(), text.end(), 'x', 'y');
  EXPECT_EQ(c.pages, Lines{text});
  const std::string file = dir->filePath("data.out").toStdString();
  std::ofstream(file) << "stale";
  c.lines.clear();
  c.http.BufferSize = 8192;
  c.http.Download(url("/data.bin"), std::make_shared<FolderItem>(file));
  ASSERT_TRUE(c.run());
  EXPECT_EQ(c.only({"File", "Cancelled", "TCPError"}), Lines{"File application/octet-stream|false"});
  EXPECT_EQ(readBytes(file), dataBin());
  EXPECT_FALSE(c.only({"Updated false"}).empty());  // flushed in pieces
  EXPECT_EQ(c.only({"Data"}).back().rfind("Data 300000/300000/", 0), 0u);
  std::ofstream(file) << dataBin().substr(0, 123457);
  c.lines.clear();
  c.http.Resume(url("/data.bin"), std::make_shared<FolderItem>(file));
  ASSERT_TRUE(c.run());
  EXPECT_EQ(c.only({"Headers", "File", "Cancelled", "OperationError"}),
            (Lines{"Headers 206|false|false", "File application/octet-stream|false"}));
  EXPECT_EQ(c.http.Size, 300000);
  EXPECT_EQ(readBytes(file), dataBin());
  c.http.Get(url("/echo"));  // the Range stays on the instance
  ASSERT_TRUE(runUntil([this] { return c.pages.size() == 2; }));
  EXPECT_EQ(c.pages.back(), "GET /echo [] [] [] [bytes=123457-]");
}

TEST_F(Nginx, RangeFormsAndCookiesReachTheServer) {
  HTTPCookieList jar;
  c.http.CookieReceived = [&jar](const HTTPCookie& cookie, bool) { jar.Add(cookie); };
  c.http.AddCookies = [&jar](const std::string&, const std::string&) { return std::optional<HTTPCookieList>(jar); };
  c.http.Get(url("/cookie"));
  ASSERT_TRUE(c.run());
  ASSERT_EQ(jar.Count(), 1);
  EXPECT_EQ(jar.Cookies()[0].Domain + " " + jar.Cookies()[0].Path, ".127.0.0.1 /");
  c.http.Init();
  c.http.SetForm({"", "q", "n"}, {"", "a b", "1"}, true);
  c.http.Get(url("/echo"));
  ASSERT_TRUE(runUntil([this] { return c.pages.size() == 2; }));
  c.http.SetForm({"", "q"}, {"", "a&b"}, false);
  c.http.Get(url("/echo"));
  ASSERT_TRUE(runUntil([this] { return c.pages.size() == 3; }));
  EXPECT_EQ(c.pages, (Lines{"set", "POST /echo [application/x-www-form-urlencoded] [9] [session=abc] []",
                            "GET /echo?q=a%26b [] [] [session=abc] []"}));
}

// Hostile update servers, against an owner that guards as the program's do.
TEST(HostileServer, HeaderThatNeverEndsIsCutAtTheDefaultLimit) {
  auto sent = std::make_shared<std::size_t>(0);
  LocalServer peer([sent](QTcpSocket* conn, const std::string&) {
    write(conn, "HTTP/1.1 200 OK\r\nX-Filler: ");
    QObject::connect(conn, &QTcpSocket::bytesWritten, conn, [conn, sent] {  // as fast as the connection takes them
      if (conn->bytesToWrite() < 65536 && *sent < (64u << 20)) write(conn, std::string(65536, 'a')), *sent += 65536;
    });
  });
  Client c;
  c.http.Get(peer.root() + "/version.html");
  ASSERT_TRUE(c.run());
  EXPECT_EQ(c.only({"TCPError", "Page"}), Lines{"TCPError 111"});
  EXPECT_FALSE(c.http.HeaderReceived);
  EXPECT_LT(*sent, 64u << 20) << "the client read on to the end of the stream";
}

// A byte at a time keeps the window's loop turning; the owner's stop ends the exchange with nothing delivered.
TEST(HostileServer, DrippingServerLeavesTheLoopFreeAndIsStopped) {
  std::vector<std::string> bytes;
  for (char b : "HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n" + std::string(1000, 'v')) bytes.push_back(std::string(1, b));
  LocalServer peer(LocalServer::drip(bytes, 20, false));
  Client c;
  int turns = 0;
  QTimer other;
  QObject::connect(&other, &QTimer::timeout, [&turns] { ++turns; });
  other.start(5);
  c.http.Get(peer.root() + "/version.html");
  const auto received = [&](std::size_t n) { return c.http.HeaderReceived && c.only({"Data"}).size() >= n; };
  ASSERT_TRUE(runUntil([&] { return received(5); }));
  const int turnsAtFive = turns;
  ASSERT_TRUE(runUntil([&] { return received(10); }));
  EXPECT_GT(turns, turnsAtFive) << "other events waited for the server";
  c.http.Stop();
  const std::size_t atStop = c.only({"Data"}).size();
  runFor(200);
  EXPECT_TRUE(c.pages.empty() && !c.http.Connected);
  EXPECT_EQ(c.only({"Data"}).size(), atStop);
}

// 2 GB announced and streamed as fast as the loopback goes: the owner stops
// above 1 MiB, as the update check does; the client holds no more than came.
TEST(HostileServer, TwoGigabyteBodyIsStoppedByTheOwnersBound) {
  auto sent = std::make_shared<uint64_t>(0);
  auto closed = std::make_shared<bool>(false);
  LocalServer peer([sent, closed](QTcpSocket* conn, const std::string&) {
    write(conn, "HTTP/1.1 200 OK\r\nContent-Type: text/html\r\nContent-Length: 2147483648\r\n\r\n");
    QObject::connect(conn, &QTcpSocket::disconnected, [closed] { *closed = true; });
    const auto more = [conn, sent] {
      while (conn->bytesToWrite() < (1 << 20) && *sent < (2ull << 30)) write(conn, std::string(1 << 16, 'x')), *sent += 1 << 16;
    };
    QObject::connect(conn, &QTcpSocket::bytesWritten, conn, more);
    more();
  });
  Client c;
  double received = 0;
  c.http.DataProgress = [&](double r, double, double) {
    if ((received = r) > 1024 * 1024 && c.http.Connected) c.http.Stop();
  };
  c.http.Get(peer.root() + "/version.html");
  ASSERT_TRUE(runUntil([&] { return *closed; }));
  EXPECT_TRUE(c.pages.empty());
  EXPECT_LT(received, 64.0 * 1024 * 1024);
  EXPECT_LT(c.http.Buffer.size(), 64u << 20);
  EXPECT_LT(*sent, 2ull << 30) << "the server was read to the end";
}

// A bad chunk size ends the page there; cookies with an unknown month, no
// date or a year far out never stop the page: one that reads as past has
// expired and is dropped.
TEST(HostileServer, BadChunksAndBadCookieDatesNeverStopThePage) {
  LocalServer peer;
  peer.on("/chunked", LocalServer::raw("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nhello\r\nzz\r\nworld\r\n0\r\n\r\n"));
  peer.on("/cookies", LocalServer::raw("HTTP/1.1 200 OK\r\nSet-Cookie: a=1; expires=Tue, 15-Foo-2030 01:02:03 GMT; path=/\r\n"
                                       "Set-Cookie: b=2; expires=yesterday; path=/\r\n"
                                       "Set-Cookie: c=3; expires=Wed, 99-Dec-99999999999 99:99:99 GMT; path=/\r\n"
                                       "Content-Length: 4\r\n\r\n1.20", false));
  Client c;
  c.http.Get(peer.root() + "/chunked");
  ASSERT_TRUE(c.run());
  c.http.Get(peer.root() + "/cookies");
  ASSERT_TRUE(runUntil([&] { return c.pages.size() == 2; }));
  EXPECT_EQ(c.pages, (Lines{"hello", "1.20"}));
  EXPECT_TRUE(c.only({"TCPError"}).empty());
  // b expired; c clamped far ahead, not wrapped into the past
  EXPECT_EQ(c.only({"Cookie"}), (Lines{"Cookie a=1|.127.0.0.1|/|false", "Cookie c=3|.127.0.0.1|/|false"}));
}

}  // namespace
}  // namespace trelvane::http
