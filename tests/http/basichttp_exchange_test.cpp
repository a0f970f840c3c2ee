// basichttp_exchange_test.cpp -- BasicHTTP: Init, the starting operations and the exact request bytes.
#include "http/basichttp.h"

#include <gtest/gtest.h>

#include "client.h"
#include "platform/numtext.h"

using namespace trelvane::http;
using namespace trelvane::http::testing;

namespace {
const std::string kHead = "User-Agent: BasicHTTP/1.0\r\nHost: www.example.com\r\nConnection: close\r\n";
}  // namespace

// What Init may keep or reset: Command, BufferSize, Mode, ResumeSize, File,
// Buffer, Size, Type, and the flags HeaderReceived, Connected, IsChunked, ViaGrab, RememberSettings.
std::string settings(const BasicHTTP& h) {
  auto b = [](bool v) { return v ? "1" : "0"; };
  return h.Command + " " + trelvane::Str(h.BufferSize) + " " + std::to_string(h.Mode) + " " +
         trelvane::Str(h.ResumeSize) + " " + b(h.File != nullptr) + " [" + h.Buffer + "] " + trelvane::Str(h.Size) +
         " [" + h.Type + "] " + b(h.HeaderReceived) + b(h.Connected) + b(h.IsChunked) + b(h.ViaGrab) +
         b(h.RememberSettings);
}

TEST(Init, SetsDefaultsAndKeepsWhatItMust) {
  Client c;
  c.http.Init();
  EXPECT_EQ(c.http.CRLF + c.http.Client, "\r\nBasicHTTP/1.0");
  EXPECT_EQ(settings(c.http), "GET 32768 0 0 0 [] 0 [] 00000");
  ASSERT_TRUE(c.http.Extras);
  c.http.Extras->Add("X-Keep", "1");
  auto extras = c.http.Extras;
  c.http.Command = "PUT";
  c.http.BufferSize = 10;
  c.http.Mode = 2;
  c.http.ResumeSize = 5;
  c.http.File = std::make_shared<FolderItem>("/nonexistent/x");
  c.http.Buffer = "old";
  c.http.Size = 9;
  c.http.Type = "text/html";
  c.http.HeaderReceived = c.http.Connected = c.http.IsChunked = c.http.ViaGrab = c.http.RememberSettings = true;
  c.http.Init();
  EXPECT_EQ(settings(c.http), "PUT 10 2 5 1 [] 0 [] 00000");  // the transfer is kept once
  c.http.Init();
  EXPECT_EQ(settings(c.http), "PUT 10 0 0 0 [] 0 [] 00000");
  EXPECT_EQ(c.http.Extras, extras);  // neither cleared nor replaced
  EXPECT_EQ(c.http.Extras->Get("X-Keep"), "1");
  c.http.Command = "POST";
  c.http.Init();
  EXPECT_EQ(c.http.Command, "GET");  // a POST without a form
  c.http.Command = "POST";
  c.http.FormData = "a=1";
  c.http.Init();
  EXPECT_EQ(c.http.Command, "POST");
}

TEST(Request, PlainGetWritesExactBytes) {
  Client c;
  c.http.Get("http://www.example.com/index.html");
  EXPECT_EQ(c.log.lines, (Lines{"Progress Looking Up Host..."}));
  ASSERT_EQ(c.socket->connections.size(), 1u);
  EXPECT_EQ(c.socket->connections[0].address, "www.example.com");
  EXPECT_EQ(c.socket->connections[0].port, 80);
  c.socket->accept();
  EXPECT_TRUE(c.http.Connected);
  EXPECT_EQ(c.socket->request(),
            "GET /index.html HTTP/1.1\r\n" + kHead +
            "\r\n");
  EXPECT_EQ(c.log.lines, (Lines{"Progress Looking Up Host...", "Progress Waiting For Reply...",
                                "AddCookies www.example.com|/index.html", "SockConnected"}));
}

TEST(Request, HostNeverCarriesThePort) {
  Client c;
  c.http.Get("http://example.com:8080/");
  EXPECT_EQ(c.socket->connections[0].port, 8080);
  c.socket->accept();
  EXPECT_NE(c.socket->request().find("\r\nHost: example.com\r\n"), std::string::npos);
  EXPECT_EQ(c.socket->request().find("8080"), std::string::npos);
}

TEST(Request, EveryHeaderInItsOrder) {
  Client c;
  c.http.Init();
  c.http.Extras->Add("X-Trace", "1");
  c.http.SetProxy("proxy.example.net", 3128, "pu", "pp");
  c.http.SetForm({"", "q", "n"}, {"", "x y", "1"}, true);
  HTTPCookieList cookies;
  HTTPCookie a, b;
  a.Parse("a=1", ".example.com", "/", "/");
  b.Parse("b=2", ".example.com", "/", "/");
  cookies.Add(a);
  cookies.Add(b);
  c.log.cookies = cookies;
  c.http.Get("http://u:p@www.example.com:8080/f.cgi");
  EXPECT_EQ(c.socket->connections[0].address, "proxy.example.net");
  EXPECT_EQ(c.socket->connections[0].port, 3128);
  c.socket->accept();
  EXPECT_EQ(c.socket->request(),
            "POST http://u:p@www.example.com:8080/f.cgi HTTP/1.1\r\n" + kHead +
            "Cookie: a=1; b=2\r\n"
            "Content-Type: application/x-www-form-urlencoded\r\n"
            "Content-Length: 9\r\n"
            "Authorization: Basic dTpw\r\n"
            "Proxy-Authorization: Basic cHU6cHA\r\n"
            "X-Trace: 1\r\n"
            "\r\n"
            "q=x+y&n=1");
}

TEST(Request, CookieAndCredentialsOnlyWhenComplete) {
  Client c;
  c.log.cookies = HTTPCookieList();  // a list with no cookie
  c.http.SetProxy("proxy.example.net", 3128, "pu", "");
  c.http.Get("http://u:@www.example.com/");
  c.socket->accept();
  const std::string& r = c.socket->request();
  EXPECT_EQ(r.find("Cookie"), std::string::npos);
  EXPECT_EQ(r.find("Authorization"), std::string::npos);
}

TEST(Request, QueryFormMovesIntoThePath) {
  Client c;
  c.http.Init();
  c.http.SetForm({"", "q"}, {"", "a b"}, false);
  c.http.Get("http://www.example.com/find?x=1");
  c.socket->accept();
  EXPECT_EQ(c.socket->request(),
            "GET /find?x=1?q=a+b HTTP/1.1\r\n" + kHead +
            "\r\n");
  EXPECT_EQ(c.http.FormData, "");
  EXPECT_EQ(c.http.Path, "/find?x=1?q=a+b");
}

TEST(Request, FirstFormOfANewInstanceGoesAsTheBodyOfAGet) {
  Client c;
  c.http.SetForm({"", "a"}, {"", "1"}, true);
  c.http.Get("http://www.example.com/f");
  c.socket->accept();
  EXPECT_EQ(c.socket->request(),
            "GET /f HTTP/1.1\r\n" + kHead +
            "Content-Type: application/x-www-form-urlencoded\r\n"
            "Content-Length: 3\r\n"
            "\r\n"
            "a=1");
}

TEST(Request, AfterA2xxTheNextRequestIsAPlainGet) {
  Client c;
  c.http.Init();
  c.http.SetForm({"", "a"}, {"", "1"}, true);
  c.http.Get("http://www.example.com/f");
  c.socket->accept();
  EXPECT_EQ(c.socket->request().substr(0, 5), "POST ");
  c.socket->send("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok");
  EXPECT_EQ(c.http.Command, "");
  EXPECT_EQ(c.http.FormData, "");
  c.http.Get("http://www.example.com/g");
  c.socket->accept();
  EXPECT_EQ(c.socket->request(1).substr(0, 11), "GET /g HTTP");
  EXPECT_EQ(c.socket->request(1).find("Content-"), std::string::npos);
}

TEST(Request, HeadAndOptionsEndAtTheHeader) {
  Client c;
  c.http.GetHeaders("http://www.example.com/big.zip");
  c.socket->accept();
  EXPECT_EQ(c.socket->request().substr(0, 26), "HEAD /big.zip HTTP/1.1\r\nUs");
  c.log.clear();
  c.socket->send("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\nContent-Type: application/zip\r\n\r\n");
  EXPECT_EQ(c.log.lines, (Lines{"Progress Receiving Data...", "Headers 200|false|true"}));
  EXPECT_EQ(c.http.Command, "");
  EXPECT_FALSE(c.socket->open);
  EXPECT_EQ(c.http.Size, 1000);
  EXPECT_EQ(c.http.Type, "application/zip");

  Client o;
  o.http.Command = "OPTIONS";
  o.http.Get("http://www.example.com/");
  o.socket->accept();
  EXPECT_EQ(o.socket->request().substr(0, 18), "OPTIONS / HTTP/1.1");
  o.log.clear();
  o.socket->send("HTTP/1.1 204 No Content\r\nAllow: GET\r\n\r\n");
  EXPECT_EQ(o.log.lines, (Lines{"Progress Receiving Data...", "Headers 204|false|true"}));
}

TEST(Request, AnOwnerWithoutHandlersGetsASilentWorkingExchange) {
  auto* socket = new FakeSocket;
  BasicHTTP http{std::unique_ptr<TCPSocket>(socket)};
  http.Get("http://www.example.com/version.html");
  socket->accept();
  EXPECT_EQ(socket->request().substr(0, 30), "GET /version.html HTTP/1.1\r\nUs");
  socket->send("HTTP/1.1 302 Found\r\nLocation: http://www.example.com/v2.html\r\n"
               "Set-Cookie: a=1\r\nWWW-Authenticate: Basic\r\n\r\n");
  ASSERT_EQ(socket->connections.size(), 2u);  // the redirect is followed
  socket->accept();
  socket->send("HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\n\r\n1.2");
  socket->peerClose();
  EXPECT_EQ(http.Buffer, "1.2");
  EXPECT_EQ(http.Type, "text/plain");
  EXPECT_FALSE(http.Connected);
}
