// basichttp_response_test.cpp -- BasicHTTP: header end, status test, header walk, redirects, credentials, chunks, errors.
#include "http/basichttp.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "client.h"

using namespace trelvane::http;
using namespace trelvane::http::testing;

namespace {

const std::string kOK = "HTTP/1.1 200 OK\r\n";

// One exchange: the pieces the server sends after the request, whether it
// then closes, and the events of the lines that start with the prefixes
// given (all events where none).
struct Exchange {
  const char* name;
  std::vector<std::string> pieces;
  bool close;
  std::vector<std::string> prefixes;
  Lines want;
};

const Exchange kExchanges[] = {
    {"page ends at its Content-Length",
     {kOK + "Content-Type: text/html; charset=utf-8\r\nContent-Length: 5\r\n\r\nhe", "llo"}, false, {},
     {"Progress Receiving Data...", "Headers 200|false|false", "Data 2/5/2", "Data 5/5/3", "Progress Download Complete!",
      "Page text/html|hello|false"}},
    {"LF-only header", {"HTTP/1.0 200 OK\nContent-Type: text/plain\nContent-Length: 4\n\nab\r\n"}, false, {"Page"},
     {"Page text/plain|ab\r\n|false"}},
    {"header end searched until it comes", {kOK + "Content-Le", "ngth: 2\r\n\r", "\nok"}, false, {"Page"},
     {"Page |ok|false"}},
    // the line ends are tried in a fixed order, not by position
    {"CR LF CR LF before an earlier LF LF", {"HTTP/1.1 200 OK\nX: 1\n\nbody\r\n\r\nrest"}, true, {"Page"},
     {"Page |rest|false"}},
    {"CR-only header", {"HTTP/1.1 200 OK\rContent-Length: 1\r\rz"}, false, {"Page"}, {"Page |z|false"}},
    // whatever follows a 1xx is body, the final header included: kept on purpose
    {"100 takes the final response as body", {"HTTP/1.1 100 Continue\r\n\r\n", kOK + "Content-Length: 2\r\n\r\nok"},
     true, {}, {"Progress Receiving Data...", "Headers 100|true|false", "Data 40/0/40", "Progress Download Complete!",
                "Page |HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok|false"}},
    {"Content-Length 0 waits for the close", {kOK + "Content-Length: 0\r\n\r\n"}, true,
     {"Progress Download", "Page", "TCPError", "Cancelled"}, {"Progress Download Complete!", "Page ||false"}},
    {"short Content-Length delivers the whole piece", {kOK + "Content-Length: 3\r\n\r\nab", "cdef"}, false, {"Page"},
     {"Page |abcdef|false"}},
    {"short Content-Length, one read", {kOK + "Content-Length: 3\r\n\r\nabcdef"}, false, {"Page"},
     {"Page |abcdef|false"}},
    {"body cut short is never delivered", {kOK + "Content-Length: 10\r\n\r\nabcd"}, true,
     {"Page", "TCPError", "Cancelled"}, {"TCPError 102", "Cancelled"}},
    {"close before any header", {}, true, {}, {"TCPError 102", "Cancelled"}},
    {"chunked page decoded at the close",
     {"HTTP/1.1 200 OK\nTransfer-Encoding: chunked\nContent-Type: text/plain\n\n5\r\nhel",
      "lo\r\n6; name=v\r\n world\r\n0\r\nTrailer: x\r\n\r\n"}, true, {"Page"}, {"Page text/plain|hello world|false"}},
    {"Location ignored on a 200", {kOK + "Location: http://www.example.com/x\r\nContent-Length: 1\r\n\r\n."}, false,
     {"Redirection", "Page"}, {"Page |.|false"}},
    {"Location followed on a 201", {"HTTP/1.1 201 Created\r\nLocation: http://www.example.com/x\r\n\r\n"}, false,
     {"Redirection"}, {"Redirection http://www.example.com/x"}},
    {"3xx without Location is a page", {"HTTP/1.1 304 Not Modified\r\nContent-Length: 2\r\n\r\nhi"}, false, {"Page"},
     {"Page |hi|false"}},
    // a refused scheme is reported, then still followed: ftp:// is stripped by ParseURL
    {"ftp target fetched over HTTP", {"HTTP/1.1 302 Found\r\nLocation: ftp://files.example.com/f.zip\r\n\r\n"},
     false, {}, {"Progress Receiving Data...", "Headers 302|false|false", "BadRedirection ftp://files.example.com/f.zip",
                 "Cancelled", "Redirection ftp://files.example.com/f.zip", "Progress Looking Up Host..."}},
    {"https target is a bad URL", {"HTTP/1.1 302 Found\r\nLocation: https://secure.example.com/\r\n\r\n"}, false, {},
     {"Progress Receiving Data...", "Headers 302|false|false", "BadRedirection https://secure.example.com/",
      "Cancelled", "Redirection https://secure.example.com/", "OperationError Bad URL!|true", "Cancelled"}},
    {"relative target is a bad URL", {"HTTP/1.1 302 Found\r\nLocation: /b\r\n\r\n"}, false, {"OperationError"},
     {"OperationError Bad URL!|true"}},
    {"401 without credentials delivers its body",
     {"HTTP/1.1 401 Unauthorized\r\nWWW-Authenticate: Basic\r\nContent-Length: 6\r\n\r\ndenied"}, false,
     {"NeedAuthorization", "Page"}, {"NeedAuthorization", "Page |denied|false"}},
};

TEST(Response, Exchanges) {
  for (const Exchange& e : kExchanges) {
    SCOPED_TRACE(e.name);
    Client c;
    c.get("http://www.example.com/a/b.html");
    for (const std::string& piece : e.pieces) c.socket->send(piece);
    if (e.close) c.socket->peerClose();
    Lines got;
    for (const std::string& line : c.log.lines)
      for (const std::string& p : e.prefixes.empty() ? std::vector<std::string>{""} : e.prefixes)
        if (line.rfind(p, 0) == 0) {
          got.push_back(line);
          break;
        }
    EXPECT_EQ(got, e.want);
  }
}

TEST(Response, StatusesOutside100To399But401EndWithProtocolError) {
  const std::pair<const char*, int> refused[] = {{"HTTP/1.1 404 Not Found", 404}, {"HTTP/1.1 400 Bad", 400},
                                                 {"HTTP/1.1 402 x", 402}, {"HTTP/1.1 407 Proxy", 407},
                                                 {"HTTP/1.1 500 x", 500}, {"HTTP/1.1 99 x", 99},
                                                 {"garbage", 0}, {"HTTP/1.1  200 OK", 0}};
  for (const auto& [line, status] : refused) {
    Client c;
    c.get("http://www.example.com/");
    c.socket->send(std::string(line) + "\r\nContent-Length: 9\r\n\r\nnot found");
    EXPECT_EQ(c.log.lines, (Lines{"Progress Receiving Data...", "ProtocolError " + std::to_string(status), "Cancelled"}))
        << line;
    EXPECT_FALSE(c.socket->open);
    EXPECT_EQ(c.http.Buffer, "");
  }
  for (int status : {100, 199, 200, 399, 401}) {
    Client c;
    c.get("http://www.example.com/");
    c.socket->send("HTTP/1.1 " + std::to_string(status) + " x\r\n\r\n");
    EXPECT_TRUE(c.log.has("Headers " + std::to_string(status) + "|" + (status < 200 ? "true" : "false") + "|false"))
        << status;
  }
}

TEST(Response, StateAroundAPage) {
  Client c;
  c.get("http://www.example.com/");
  c.socket->send(kOK + "Content-Le");
  c.socket->send("ngth: 5\r\n\r");
  EXPECT_FALSE(c.http.HeaderReceived);  // the bytes wait with the socket until the header end
  EXPECT_EQ(c.socket->unread, kOK + "Content-Length: 5\r\n\r");
  c.socket->send("\nhello");
  EXPECT_FALSE(c.socket->open);  // the class closes a body of known size
  EXPECT_EQ(c.http.EndLine, "\r\n");
  EXPECT_EQ(c.http.ServerAddress + "|" + c.http.OriginalURL + "|" + c.http.Buffer, "|http://www.example.com/|hello");
  EXPECT_EQ(c.http.ServerPort, 0);

  c.get("http://www.example.com/");  // no Cancel on an error
  c.socket->send(kOK + "Content-Length: 10\r\n\r\nabcd");
  c.socket->peerClose();
  EXPECT_EQ(c.http.Buffer, "abcd");
  EXPECT_EQ(c.http.ServerAddress, "www.example.com");
  c.http.Get("http://nowhere.example/");
  c.log.clear();
  c.socket->fail(kNameResolutionError);
  EXPECT_EQ(c.log.lines, (Lines{"TCPError 103", "Cancelled"}));
}

TEST(Response, HeaderWalkSetsTypeSizeAndChunking) {
  Client c;
  c.get("http://www.example.com/");
  c.socket->send(kOK + "content-type: \"text/csv\" ; x=1\r\nContent-Range: bytes 0-1/50\r\n"
                       "Content-Length: 20\r\nContent-Range: bytes 0-1/70\r\nTransfer-Encoding: Chunked\r\n"
                       "Content-Type: text/plain\r\nProxy-Authenticate: Basic\r\n\r\n");
  EXPECT_EQ(c.http.Type, "text/plain");  // the last one wins
  EXPECT_EQ(c.http.Size, 20);            // Content-Range only when Size is 0
  EXPECT_TRUE(c.http.IsChunked);
  c.get("http://www.example.com/");
  c.socket->send("HTTP/1.1 206 Partial\r\nContent-Type: \"text/csv\" ; x=1\r\nContent-Range: bytes 0-1/50\r\n\r\n");
  EXPECT_EQ(c.http.Type, "text/csv");
  EXPECT_EQ(c.http.Size, 50);
}

TEST(ParseChunked, DecodesAndStopsWhereTheFramingDoes) {
  Client c;
  const std::pair<std::string, std::string> rows[] = {
      {"5\r\nhello\r\n0\r\n\r\n", "hello"}, {"A\r\n0123456789\r\na\r\nabcdefghij\r\n0\r\n", "0123456789abcdefghij"},
      {"3 ; ext \r\nabc\r\n", "abc"},       {"3\r\nabc\r\n2\r\nde", "abcde"},  // no final chunk
      {"9\r\nabc", "abc"},                  // a chunk longer than the rest
      {"5\nhello\n0\n\n", ""},              // chunk lines need CR LF
      {"zz\r\nabc\r\n", ""}, {"-3\r\nabc\r\n", ""}, {"", ""}, {"FFFFFFFFFFFFFFFFFF\r\nab", "ab"}};
  for (const auto& [framed, want] : rows) EXPECT_EQ(c.http.ParseChunked(framed), want) << framed;
}

TEST(Redirect, FollowsTheTargetKeepingTheTransfer) {
  Client c;
  c.get("http://www.example.com/old");
  c.socket->send("HTTP/1.1 301 Moved\r\nLocation: http://other.example.org:81/new\r\nContent-Length: 3\r\n\r\nabc");
  EXPECT_EQ(c.log.lines, (Lines{"Progress Receiving Data...", "Headers 301|false|false",
                                "Redirection http://other.example.org:81/new", "Progress Looking Up Host..."}));
  ASSERT_EQ(c.socket->connections.size(), 2u);
  EXPECT_EQ(c.socket->connections[1].address + ":" + std::to_string(c.socket->connections[1].port),
            "other.example.org:81");
  EXPECT_EQ(c.http.OriginalURL, "http://other.example.org:81/new");
  EXPECT_EQ(c.http.Size, 0);
  c.socket->accept();
  EXPECT_EQ(c.socket->request(1).substr(0, 20), "GET /new HTTP/1.1\r\nU");
  // an ftp target goes to port 80; an owner taking care gets the redirect's body
  c.get("http://www.example.com/");
  c.socket->send("HTTP/1.1 302 Found\r\nLocation: ftp://files.example.com/f.zip\r\n\r\n");
  ASSERT_EQ(c.socket->connections.size(), 4u);
  EXPECT_EQ(c.socket->connections[3].address + ":" + std::to_string(c.socket->connections[3].port),
            "files.example.com:80");
  c.log.redirectAnswer = true;
  c.socket->accept();
  c.socket->send("HTTP/1.1 302 Found\r\nLocation: http://www.example.com/new\r\nContent-Length: 3\r\n\r\nabc");
  EXPECT_EQ(c.socket->connections.size(), 4u);
  EXPECT_TRUE(c.log.has("Page |abc|false"));
}

TEST(Redirect, BodyFormIsSentAgainQueryFormIsLost) {
  for (bool body : {true, false}) {
    Client c;
    c.http.Init();
    c.http.SetForm({"", "a"}, {"", "1"}, body);
    c.get("http://www.example.com/post");
    c.socket->send(std::string(body ? "HTTP/1.1 307 Again" : "HTTP/1.1 302 Found") +
                   "\r\nLocation: http://www.example.com/post2\r\n\r\n");
    c.socket->accept();
    const std::string& r = c.socket->request(1);
    EXPECT_EQ(r.substr(0, 21), body ? "POST /post2 HTTP/1.1\r" : "GET /post2 HTTP/1.1\r\n");
    EXPECT_EQ(r.find("a=1") != std::string::npos, body);
  }
}

// The class counts no hops: only the owner's answer stops a loop.
TEST(Redirect, OnlyTheOwnerBrakesALoop) {
  Client c;
  int hops = 0;
  c.http.HandleRedirection = [&hops](const std::string&) { return ++hops > 5; };
  c.get("http://www.example.com/loop");
  for (int i = 0; i < 6; ++i) {
    c.socket->send("HTTP/1.1 302 Found\r\nLocation: http://www.example.com/loop\r\n\r\n");
    if (hops <= 5) c.socket->accept();
  }
  EXPECT_EQ(hops, 6);
  EXPECT_EQ(c.socket->connections.size(), 6u);
}

TEST(Authorization, RetryWithCredentialsAndTheWalkGoesOn) {
  Client c;
  c.log.credentials = std::make_pair(std::string("user"), std::string("secret"));
  c.http.Init();
  c.http.SetForm({"", "a"}, {"", "1"}, false);
  c.get("http://www.example.com/private/");
  c.socket->send("HTTP/1.1 401 Unauthorized\r\nWWW-Authenticate: Basic realm=\"x\"\r\n"
                 "Content-Type: text/html\r\nContent-Length: 3\r\n\r\nabc");
  EXPECT_EQ(c.log.lines, (Lines{"Progress Receiving Data...", "NeedAuthorization", "Progress Looking Up Host...",
                                "Headers 401|false|false"}));
  // the lines behind WWW-Authenticate acted on the new exchange
  EXPECT_EQ(c.http.Type, "text/html");
  EXPECT_EQ(c.http.Size, 3);
  ASSERT_EQ(c.socket->connections.size(), 2u);
  c.socket->accept();
  EXPECT_EQ(c.socket->request(1).substr(0, 24), "GET /private/ HTTP/1.1\r\n");  // the query form is lost
  EXPECT_NE(c.socket->request(1).find("\r\nAuthorization: Basic dXNlcjpzZWNyZXQ\r\n"), std::string::npos);
  c.socket->send("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nin");
  EXPECT_TRUE(c.log.has("Page text/html|in|false"));  // the old response's type
  EXPECT_EQ(c.http.User, "user");
}

TEST(Authorization, RestartedHeadIsTornDownByTheOldResponse) {
  Client c;
  c.log.credentials = std::make_pair(std::string("u"), std::string("p"));
  c.http.GetHeaders("http://www.example.com/private/");
  c.socket->accept();
  c.socket->send("HTTP/1.1 401 Unauthorized\r\nWWW-Authenticate: Basic\r\n\r\n");
  EXPECT_EQ(c.socket->connections.size(), 2u);
  EXPECT_FALSE(c.socket->connecting);  // closed again by the HEAD step
  EXPECT_EQ(c.http.Command, "");
  EXPECT_TRUE(c.log.has("Headers 401|false|true"));
}

TEST(Cookies, SetCookieLinesBecomeEvents) {
  Client c;
  c.get("http://192.168.0.1/a/b.html");
  c.socket->send(kOK + "Set-Cookie: id=7; path=/\r\nSet-Cookie: gone=1; max-age=0\r\n"
                       "Set-Cookie: far=1; domain=example.com\r\nSet-Cookie: q=\"v\"; Max-Age=60\r\n"
                       "Content-Length: 0\r\n\r\n");
  EXPECT_EQ(c.log.only({"Cookie"}), (Lines{"Cookie id=7|.192.168.0.1|/|false", "Cookie q=v|.192.168.0.1|/a|false"}));
  c.get("http://www.example.com/");
  c.socket->send(kOK + "Set-Cookie: s=1\r\n\r\n");
  EXPECT_EQ(c.log.only({"Cookie"}), (Lines{"Cookie s=1|.example.com|/|false"}));
}

TEST(Teardown, StopIsSilentAndLateBytesStayWithTheSocket) {
  Client c;
  c.get("http://www.example.com/x");
  c.socket->send(kOK + "Content-Length: 10\r\n\r\nabc");
  c.log.clear();
  c.http.Stop();
  EXPECT_EQ(c.log.lines, (Lines{"Progress Download Cancelled"}));
  EXPECT_FALSE(c.socket->open || c.http.Connected);
  EXPECT_EQ(c.http.Buffer + "|" + c.http.ServerPath + "|" + c.http.OriginalURL, "abc||http://www.example.com/x");
  c.http.Get("http://www.example.com/");
  c.socket->unread = kOK + "\r\n";
  c.http.Event_DataAvailable();
  EXPECT_FALSE(c.http.HeaderReceived);
  EXPECT_EQ(c.socket->unread, kOK + "\r\n");
}

}  // namespace
