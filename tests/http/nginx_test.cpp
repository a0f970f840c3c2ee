// nginx_test.cpp -- BasicHTTP on QtTCPSocket against a real nginx on 127.0.0.1.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "eventlog.h"
#include "http/basichttp.h"
#include "http/qttcpsocket.h"
#include "loopback.h"

using namespace trelvane::http;
using namespace trelvane::http::testing;

namespace {

class NginxTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { server = new Nginx; }
  static void TearDownTestSuite() {
    delete server;
    server = nullptr;
  }
  void SetUp() override { ASSERT_EQ(server->error(), ""); }

  static Nginx* server;
  QtTCPSocket* socket = new QtTCPSocket;
  BasicHTTP http{std::unique_ptr<TCPSocket>(socket)};
  EventLog log{http};

  bool ended() const { return !log.only({"Page", "File", "Cancelled"}).empty(); }
  void run() { ASSERT_TRUE(runUntil([this] { return ended(); })); }
  static std::string read(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  }
  static void write(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
  }
};

Nginx* NginxTest::server = nullptr;

std::string replaceAll(std::string s, char a, char b) {
  for (char& c : s)
    if (c == a) c = b;
  return s;
}

}  // namespace

TEST_F(NginxTest, PagesErrorsRedirectsAndCredentials) {
  const std::string page = "Page text/html|<html>Trelvane</html>\n|false";
  const std::string ftp = "ftp://" + server->url("/page.html").substr(7);
  const struct {
    const char* path;
    std::vector<std::string> prefixes;
    Lines want;
  } rows[] = {
      {"/page.html", {"Progress", "Headers", "Page", "Cancelled", "TCPError"},
       {"Progress Looking Up Host...", "Progress Waiting For Reply...", "Progress Receiving Data...",
        "Headers 200|false|false", "Progress Download Complete!", page}},
      {"/missing.html", {"ProtocolError", "Cancelled", "Page"}, {"ProtocolError 404", "Cancelled"}},
      {"/moved", {"Redirection", "BadRedirection", "Page", "Cancelled"},
       {"Redirection " + server->url("/page.html"), page}},
      {"/ftp-moved", {"Redirection", "BadRedirection", "Page", "Cancelled"},
       {"BadRedirection " + ftp, "Cancelled", "Redirection " + ftp, page}},
      {"/private/secret.txt", {"NeedAuthorization", "Headers", "Page", "Cancelled"},
       {"NeedAuthorization", "Headers 401|false|false", "Headers 200|false|false", "Page text/plain|secret page\n|false"}},
  };
  log.credentials = std::make_pair(std::string("user"), std::string("secret"));
  for (const auto& r : rows) {
    log.clear();
    http.Get(server->url(r.path));
    ASSERT_TRUE(runUntil([this] { return !log.only({"Page", "File", "ProtocolError"}).empty(); })) << r.path;
    Lines got;
    for (const std::string& line : log.lines)
      for (const std::string& p : r.prefixes)
        if (line.rfind(p, 0) == 0) {
          got.push_back(line);
          break;
        }
    EXPECT_EQ(got, r.want) << r.path;
  }
}

TEST_F(NginxTest, WrongPasswordEndsWithThe401Page) {
  int asked = 0;
  http.NeedAuthorization = [&asked](std::string& user, std::string& password) {
    user = "user";
    password = "wrong";
    return ++asked == 1;  // once only
  };
  http.Get(server->url("/private/secret.txt"));
  run();
  EXPECT_EQ(asked, 2);
  ASSERT_EQ(log.pages.size(), 1u);
  EXPECT_NE(log.pages[0].find("401 Authorization Required"), std::string::npos);
}

TEST_F(NginxTest, ChunkedPageIsDecoded) {
  http.Get(server->url("/chunk/text.txt"));
  run();
  EXPECT_TRUE(http.IsChunked);
  ASSERT_EQ(log.pages.size(), 1u);
  EXPECT_EQ(log.pages[0], replaceAll(Nginx::chunkText(), 'x', 'y'));
}

TEST_F(NginxTest, DownloadWritesTheExactBytesInFlushes) {
  std::string file = server->path("data.out");
  write(file, "stale");
  http.BufferSize = 8192;
  http.Download(server->url("/data.bin"), std::make_shared<FolderItem>(file));
  run();
  EXPECT_EQ(log.only({"File", "Cancelled", "TCPError"}), (Lines{"File application/octet-stream|false"}));
  EXPECT_EQ(read(file), Nginx::dataBin());
  EXPECT_FALSE(log.only({"Updated false"}).empty());
  EXPECT_EQ(log.only({"Data"}).back().substr(0, 19), "Data 300000/300000/");
}

TEST_F(NginxTest, ResumeContinuesToTheExactBytes) {
  std::string file = server->path("resume.out");
  write(file, Nginx::dataBin().substr(0, 123457));
  http.Resume(server->url("/data.bin"), std::make_shared<FolderItem>(file));
  run();
  EXPECT_EQ(log.only({"Headers", "File", "Cancelled", "OperationError"}),
            (Lines{"Headers 206|false|false", "File application/octet-stream|false"}));
  EXPECT_EQ(http.Size, 300000);
  EXPECT_EQ(read(file), Nginx::dataBin());

  // the Range stays on the instance; nginx answers the echo with it
  log.clear();
  http.Get(server->url("/echo"));
  run();
  ASSERT_EQ(log.pages.size(), 1u);
  EXPECT_NE(log.pages[0].find("[bytes=123457-]"), std::string::npos);
}

TEST_F(NginxTest, FormsGoAsBodyOrQuery) {
  http.Init();
  http.SetForm({"", "q", "n"}, {"", "a b", "1"}, true);
  http.Get(server->url("/echo"));
  run();
  EXPECT_EQ(log.pages, (std::vector<std::string>{"POST /echo [application/x-www-form-urlencoded] [9] [] []"}));

  log.clear();
  http.SetForm({"", "q"}, {"", "a&b"}, false);
  http.Get(server->url("/echo"));
  run();
  EXPECT_EQ(log.pages, (std::vector<std::string>{"GET /echo?q=a%26b [] [] [] []"}));
}

TEST_F(NginxTest, CookiesComeAndGoBack) {
  HTTPCookieList jar;
  http.CookieReceived = [&jar](const HTTPCookie& cookie, bool) { jar.Add(cookie); };
  http.AddCookies = [&jar](const std::string&, const std::string&) { return std::optional<HTTPCookieList>(jar); };
  http.Get(server->url("/cookie"));
  run();
  ASSERT_EQ(jar.Count(), 1);
  EXPECT_EQ(jar.Cookies()[0].Domain, ".127.0.0.1");
  EXPECT_EQ(jar.Cookies()[0].Path, "/");
  log.clear();
  http.Get(server->url("/echo"));
  run();
  ASSERT_EQ(log.pages.size(), 1u);
  EXPECT_EQ(log.pages[0], "GET /echo [] [] [session=abc] []");
}
