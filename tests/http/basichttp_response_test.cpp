// basichttp_response_test.cpp -- BasicHTTP: header end, status test, header walk, redirects, credentials, chunks, errors.
#include "http/basichttp.h"

#include <gtest/gtest.h>

#include "eventlog.h"
#include "fakesocket.h"

using namespace trelvane::http;
using namespace trelvane::http::testing;

namespace {

struct Client {
  FakeSocket* socket;
  BasicHTTP http;
  EventLog log;
  Client() : socket(new FakeSocket), http(std::unique_ptr<TCPSocket>(socket)), log(http) {}
  // Get up to the written request, with the log emptied.
  void get(const std::string& url) {
    http.Get(url);
    socket->accept();
    log.clear();
  }
};

}  // namespace

TEST(Response, PageWithContentLengthEndsAtItsSize) {
  Client c;
  c.get("http://www.example.com/");
  c.socket->send("HTTP/1.1 200 OK\r\nContent-Type: text/html; charset=utf-8\r\nContent-Length: 5\r\n\r\nhe");
  c.socket->send("llo");
  EXPECT_EQ(c.log.lines, (Lines{"Progress Receiving Data...", "Headers 200|false|false", "Data 2/5/2", "Data 5/5/3",
                                "Progress Download Complete!", "Page text/html|hello|false"}));
  EXPECT_FALSE(c.socket->open);  // the class closes a body of known size
  EXPECT_EQ(c.http.ServerAddress, "");
  EXPECT_EQ(c.http.ServerPort, 0);
  EXPECT_EQ(c.http.OriginalURL, "http://www.example.com/");
  EXPECT_EQ(c.http.Buffer, "hello");
}

TEST(Response, LfOnlyHeaderIsUnderstood) {
  Client c;
  c.get("http://www.example.com/");
  c.socket->send("HTTP/1.0 200 OK\nContent-Type: text/plain\nContent-Length: 4\n\nab\r\n");
  EXPECT_EQ(c.http.EndLine, "\n");
  EXPECT_EQ(c.log.only({"Page"}), (Lines{"Page text/plain|ab\r\n|false"}));
}

TEST(Response, HeaderEndIsSearchedUntilItComes) {
  Client c;
  c.get("http://www.example.com/");
  c.socket->send("HTTP/1.1 200 OK\r\nContent-Le");
  c.socket->send("ngth: 2\r\n\r");
  EXPECT_FALSE(c.http.HeaderReceived);
  EXPECT_EQ(c.socket->unread, "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r");
  c.socket->send("\nok");
  EXPECT_EQ(c.log.only({"Page"}), (Lines{"Page |ok|false"}));
}

// The line ends are tried in a fixed order, not by position: CR LF CR LF is
// found first even where a LF LF stands before it.
TEST(Response, HeaderEndGoesByTheOrderOfTheTests) {
  Client c;
  c.get("http://www.example.com/");
  c.socket->send("HTTP/1.1 200 OK\nX: 1\n\nbody\r\n\r\nrest");
  EXPECT_EQ(c.http.EndLine, "\r\n");
  c.socket->peerClose();
  EXPECT_EQ(c.log.only({"Page"}), (Lines{"Page |rest|false"}));

  Client cr;
  cr.get("http://www.example.com/");
  cr.socket->send("HTTP/1.1 200 OK\rContent-Length: 1\r\rz");
  EXPECT_EQ(cr.http.EndLine, "\r");
  EXPECT_EQ(cr.log.only({"Page"}), (Lines{"Page |z|false"}));
}

TEST(Response, RefusedStatusesEndWithProtocolError) {
  struct Row {
    const char* line;
    int status;
  };
  for (const Row& r : {Row{"HTTP/1.1 404 Not Found", 404}, Row{"HTTP/1.1 400 Bad", 400}, Row{"HTTP/1.1 402 x", 402},
                       Row{"HTTP/1.1 407 Proxy", 407}, Row{"HTTP/1.1 500 x", 500}, Row{"HTTP/1.1 99 x", 99},
                       Row{"garbage", 0}, Row{"HTTP/1.1  200 OK", 0}}) {
    Client c;
    c.get("http://www.example.com/");
    c.socket->send(std::string(r.line) + "\r\nContent-Length: 9\r\n\r\nnot found");
    EXPECT_EQ(c.log.lines, (Lines{"Progress Receiving Data...", "ProtocolError " + std::to_string(r.status), "Cancelled"}))
        << r.line;
    EXPECT_FALSE(c.socket->open);
    EXPECT_EQ(c.http.Buffer, "");
  }
}

TEST(Response, AcceptedEdgesOfTheStatusTest) {
  for (int status : {100, 199, 200, 399, 401}) {
    Client c;
    c.get("http://www.example.com/");
    c.socket->send("HTTP/1.1 " + std::to_string(status) + " x\r\n\r\n");
    EXPECT_TRUE(c.log.has("Headers " + std::to_string(status) + "|" + (status < 200 ? "true" : "false") + "|false"))
        << status;
  }
}

// Whatever follows a 1xx is body, the final header included. Kept on purpose.
TEST(Response, ContinueTakesTheFinalResponseAsBody) {
  Client c;
  c.get("http://www.example.com/");
  c.socket->send("HTTP/1.1 100 Continue\r\n\r\n");
  EXPECT_TRUE(c.http.HeaderReceived);
  c.socket->send("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok");
  c.socket->peerClose();
  EXPECT_EQ(c.log.lines, (Lines{"Progress Receiving Data...", "Headers 100|true|false", "Data 40/0/40",
                                "Progress Download Complete!",
                                "Page |HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok|false"}));
}

TEST(Response, ContentLengthZeroWaitsForTheClose) {
  Client c;
  c.get("http://www.example.com/");
  c.socket->send("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
  EXPECT_TRUE(c.socket->open);
  EXPECT_TRUE(c.log.only({"Page"}).empty());
  c.socket->peerClose();
  EXPECT_EQ(c.log.only({"Progress Download", "Page", "TCPError", "Cancelled"}),
            (Lines{"Progress Download Complete!", "Page ||false"}));
}

TEST(Response, ShortContentLengthDeliversTheWholePiece) {
  Client c;
  c.get("http://www.example.com/");
  c.socket->send("HTTP/1.1 200 OK\r\nContent-Length: 3\r\n\r\nab");
  c.socket->send("cdef");
  EXPECT_EQ(c.log.only({"Page"}), (Lines{"Page |abcdef|false"}));
  EXPECT_FALSE(c.socket->open);

  // all in the first read, behind the header
  Client one;
  one.get("http://www.example.com/");
  one.socket->send("HTTP/1.1 200 OK\r\nContent-Length: 3\r\n\r\nabcdef");
  EXPECT_EQ(one.log.only({"Page"}), (Lines{"Page |abcdef|false"}));
}

TEST(Response, BodyCutShortOfItsSizeIsNeverDelivered) {
  Client c;
  c.get("http://www.example.com/");
  c.socket->send("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nabcd");
  c.log.clear();
  c.socket->peerClose();
  EXPECT_EQ(c.log.lines, (Lines{"TCPError 102", "Cancelled"}));
  EXPECT_EQ(c.http.Buffer, "abcd");
  EXPECT_EQ(c.http.ServerAddress, "www.example.com");  // no Cancel on an error
}

TEST(Response, LookupAndConnectionFailures) {
  Client c;
  c.http.Get("http://nowhere.example/");
  c.log.clear();
  c.socket->fail(kNameResolutionError);
  EXPECT_EQ(c.log.lines, (Lines{"TCPError 103", "Cancelled"}));
  // the peer closing before any header is a failure too
  c.get("http://www.example.com/");
  c.socket->peerClose();
  EXPECT_EQ(c.log.lines, (Lines{"TCPError 102", "Cancelled"}));
}

TEST(Response, HeaderWalkSetsTypeSizeAndChunking) {
  Client c;
  c.get("http://www.example.com/");
  c.socket->send("HTTP/1.1 200 OK\r\ncontent-type: \"text/csv\" ; x=1\r\nContent-Range: bytes 0-1/50\r\n"
                 "Content-Length: 20\r\nContent-Range: bytes 0-1/70\r\nTransfer-Encoding: Chunked\r\n"
                 "Content-Type: text/plain\r\nProxy-Authenticate: Basic\r\n\r\n");
  EXPECT_EQ(c.http.Type, "text/plain");  // the last one wins
  EXPECT_EQ(c.http.Size, 20);            // Content-Range only when Size is 0
  EXPECT_TRUE(c.http.IsChunked);

  Client r;
  r.get("http://www.example.com/");
  r.socket->send("HTTP/1.1 206 Partial\r\nContent-Type: \"text/csv\" ; x=1\r\nContent-Range: bytes 0-1/50\r\n\r\n");
  EXPECT_EQ(r.http.Type, "text/csv");
  EXPECT_EQ(r.http.Size, 50);
}

TEST(Response, ChunkedPageIsDecodedAtTheClose) {
  Client c;
  c.get("http://www.example.com/");
  c.socket->send("HTTP/1.1 200 OK\nTransfer-Encoding: chunked\nContent-Type: text/plain\n\n5\r\nhel");
  c.socket->send("lo\r\n6; name=v\r\n world\r\n0\r\nTrailer: x\r\n\r\n");
  EXPECT_TRUE(c.log.only({"Page"}).empty());
  c.socket->peerClose();
  EXPECT_EQ(c.log.only({"Page"}), (Lines{"Page text/plain|hello world|false"}));
}

TEST(ParseChunked, DecodesAndStopsWhereTheFramingDoes) {
  Client c;
  EXPECT_EQ(c.http.ParseChunked("5\r\nhello\r\n0\r\n\r\n"), "hello");
  EXPECT_EQ(c.http.ParseChunked("A\r\n0123456789\r\na\r\nabcdefghij\r\n0\r\n"), "0123456789abcdefghij");
  EXPECT_EQ(c.http.ParseChunked("3 ; ext \r\nabc\r\n"), "abc");
  EXPECT_EQ(c.http.ParseChunked("3\r\nabc\r\n2\r\nde"), "abcde");  // no final chunk
  EXPECT_EQ(c.http.ParseChunked("9\r\nabc"), "abc");               // a chunk longer than the rest
  EXPECT_EQ(c.http.ParseChunked("5\nhello\n0\n\n"), "");           // chunk lines need CR LF
  EXPECT_EQ(c.http.ParseChunked("zz\r\nabc\r\n"), "");
  EXPECT_EQ(c.http.ParseChunked("-3\r\nabc\r\n"), "");
  EXPECT_EQ(c.http.ParseChunked(""), "");
  EXPECT_EQ(c.http.ParseChunked("FFFFFFFFFFFFFFFFFF\r\nab"), "ab");
}

TEST(Redirect, FollowsTheTargetKeepingTheTransfer) {
  Client c;
  c.get("http://www.example.com/old");
  c.socket->send("HTTP/1.1 301 Moved\r\nLocation: http://other.example.org:81/new\r\nContent-Length: 3\r\n\r\nabc");
  EXPECT_EQ(c.log.lines, (Lines{"Progress Receiving Data...", "Headers 301|false|false",
                                "Redirection http://other.example.org:81/new", "Progress Looking Up Host..."}));
  ASSERT_EQ(c.socket->connections.size(), 2u);
  EXPECT_EQ(c.socket->connections[1].address, "other.example.org");
  EXPECT_EQ(c.socket->connections[1].port, 81);
  EXPECT_EQ(c.http.OriginalURL, "http://other.example.org:81/new");
  EXPECT_EQ(c.http.Size, 0);
  c.socket->accept();
  EXPECT_EQ(c.socket->request(1).substr(0, 20), "GET /new HTTP/1.1\r\nU");
}

TEST(Redirect, OwnerTakingCareGetsTheRedirectBody) {
  Client c;
  c.log.redirectAnswer = true;
  c.get("http://www.example.com/old");
  c.socket->send("HTTP/1.1 302 Found\r\nLocation: http://www.example.com/new\r\nContent-Length: 3\r\n\r\nabc");
  EXPECT_EQ(c.socket->connections.size(), 1u);
  EXPECT_EQ(c.log.only({"Redirection", "Page"}),
            (Lines{"Redirection http://www.example.com/new", "Page |abc|false"}));
}

TEST(Redirect, LocationCountsOnlyFor201And3xx) {
  Client ok;
  ok.get("http://www.example.com/");
  ok.socket->send("HTTP/1.1 200 OK\r\nLocation: http://www.example.com/x\r\nContent-Length: 1\r\n\r\n.");
  EXPECT_TRUE(ok.log.only({"Redirection"}).empty());
  Client created;
  created.get("http://www.example.com/");
  created.socket->send("HTTP/1.1 201 Created\r\nLocation: http://www.example.com/x\r\n\r\n");
  EXPECT_EQ(created.log.only({"Redirection"}), (Lines{"Redirection http://www.example.com/x"}));
  // a 3xx without a Location is a page
  Client none;
  none.get("http://www.example.com/");
  none.socket->send("HTTP/1.1 304 Not Modified\r\nContent-Length: 2\r\n\r\nhi");
  EXPECT_EQ(none.log.only({"Page"}), (Lines{"Page |hi|false"}));
}

// A refused scheme is reported and then still followed; ftp:// is stripped
// by ParseURL, so the target is fetched over HTTP on port 80.
TEST(Redirect, FtpTargetIsReportedThenFetchedOverHttp) {
  Client c;
  c.get("http://www.example.com/");
  c.socket->send("HTTP/1.1 302 Found\r\nLocation: ftp://files.example.com/f.zip\r\n\r\n");
  EXPECT_EQ(c.log.lines, (Lines{"Progress Receiving Data...", "Headers 302|false|false",
                                "BadRedirection ftp://files.example.com/f.zip", "Cancelled",
                                "Redirection ftp://files.example.com/f.zip", "Progress Looking Up Host..."}));
  ASSERT_EQ(c.socket->connections.size(), 2u);
  EXPECT_EQ(c.socket->connections[1].address, "files.example.com");
  EXPECT_EQ(c.socket->connections[1].port, 80);
}

TEST(Redirect, HttpsTargetEndsAsABadUrl) {
  Client c;
  c.get("http://www.example.com/");
  c.socket->send("HTTP/1.1 302 Found\r\nLocation: https://secure.example.com/\r\n\r\n");
  EXPECT_EQ(c.log.lines, (Lines{"Progress Receiving Data...", "Headers 302|false|false",
                                "BadRedirection https://secure.example.com/", "Cancelled",
                                "Redirection https://secure.example.com/", "OperationError Bad URL!|true",
                                "Cancelled"}));
  EXPECT_EQ(c.socket->connections.size(), 1u);
}

TEST(Redirect, RelativeTargetIsABadUrlAndLeavesTheConnection) {
  Client c;
  c.get("http://www.example.com/a");
  c.socket->send("HTTP/1.1 302 Found\r\nLocation: /b\r\n\r\n");
  EXPECT_EQ(c.log.only({"OperationError"}), (Lines{"OperationError Bad URL!|true"}));
  EXPECT_TRUE(c.socket->open);
  EXPECT_TRUE(c.http.HeaderReceived);
  EXPECT_EQ(c.socket->connections.size(), 1u);
}

TEST(Redirect, BodyFormIsSentAgainQueryFormIsLost) {
  Client body;
  body.http.Init();
  body.http.SetForm({"", "a"}, {"", "1"}, true);
  body.get("http://www.example.com/post");
  body.socket->send("HTTP/1.1 307 Again\r\nLocation: http://www.example.com/post2\r\n\r\n");
  body.socket->accept();
  EXPECT_EQ(body.socket->request(1).substr(0, 21), "POST /post2 HTTP/1.1\r");
  EXPECT_EQ(body.socket->request(1).substr(body.socket->request(1).size() - 7), "\r\n\r\na=1");

  Client query;
  query.http.Init();
  query.http.SetForm({"", "a"}, {"", "1"}, false);
  query.get("http://www.example.com/find");
  EXPECT_EQ(query.socket->request(0).substr(0, 14), "GET /find?a=1 ");
  query.socket->send("HTTP/1.1 302 Found\r\nLocation: http://www.example.com/find2\r\n\r\n");
  query.socket->accept();
  EXPECT_EQ(query.socket->request(1).substr(0, 15), "GET /find2 HTTP");
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
  EXPECT_NE(c.socket->request(1).find("\r\nAuthorization: Basic dXNlcjpzZWNyZXQ\r\n"), std::string::npos);
  c.socket->send("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nin");
  EXPECT_EQ(c.log.only({"Page"}), (Lines{"Page text/html|in|false"}));  // the old response's type
  EXPECT_EQ(c.http.User, "user");
}

TEST(Authorization, NoCredentialsDeliversThe401Body) {
  Client c;
  c.get("http://www.example.com/private/");
  c.socket->send("HTTP/1.1 401 Unauthorized\r\nWWW-Authenticate: Basic\r\nContent-Length: 6\r\n\r\ndenied");
  EXPECT_EQ(c.log.only({"NeedAuthorization", "Page"}), (Lines{"NeedAuthorization", "Page |denied|false"}));
  EXPECT_EQ(c.socket->connections.size(), 1u);
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

TEST(Authorization, QueryFormIsLostOnTheRetry) {
  Client c;
  c.log.credentials = std::make_pair(std::string("u"), std::string("p"));
  c.http.Init();
  c.http.SetForm({"", "a"}, {"", "1"}, false);
  c.get("http://www.example.com/find");
  c.socket->send("HTTP/1.1 401 No\r\nWWW-Authenticate: Basic\r\n\r\n");
  c.socket->accept();
  EXPECT_EQ(c.socket->request(1).substr(0, 15), "GET /find HTTP/");
}

TEST(Cookies, SetCookieLinesBecomeEvents) {
  Client c;
  c.get("http://192.168.0.1/a/b.html");
  c.socket->send("HTTP/1.1 200 OK\r\nSet-Cookie: id=7; path=/\r\nSet-Cookie: gone=1; max-age=0\r\n"
                 "Set-Cookie: far=1; domain=example.com\r\nSet-Cookie: q=\"v\"; Max-Age=60\r\n"
                 "Content-Length: 0\r\n\r\n");
  EXPECT_EQ(c.log.only({"Cookie"}), (Lines{"Cookie id=7|.192.168.0.1|/|false", "Cookie q=v|.192.168.0.1|/a|false"}));

  Client www;
  www.get("http://www.example.com/");
  www.socket->send("HTTP/1.1 200 OK\r\nSet-Cookie: s=1\r\n\r\n");
  EXPECT_EQ(www.log.only({"Cookie"}), (Lines{"Cookie s=1|.example.com|/|false"}));
}

TEST(Teardown, CancelAndStopAreSilent) {
  Client c;
  c.get("http://www.example.com/x");
  c.socket->send("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nabc");
  c.log.clear();
  c.http.Stop();
  EXPECT_EQ(c.log.lines, (Lines{"Progress Download Cancelled"}));
  EXPECT_FALSE(c.socket->open);
  EXPECT_FALSE(c.http.Connected);
  EXPECT_EQ(c.http.Buffer, "abc");
  EXPECT_EQ(c.http.ServerPath, "");
  EXPECT_EQ(c.http.OriginalURL, "http://www.example.com/x");

  // bytes that come while not connected stay with the socket
  Client w;
  w.http.Get("http://www.example.com/");
  w.socket->unread = "HTTP/1.1 200 OK\r\n\r\n";
  w.http.Event_DataAvailable();
  EXPECT_FALSE(w.http.HeaderReceived);
  EXPECT_EQ(w.socket->unread, "HTTP/1.1 200 OK\r\n\r\n");
}
