// basichttp_url_test.cpp -- BasicHTTP: ParseURL, cookie scope, target, encoders, forms, client name.
#include "http/basichttp.h"

#include <gtest/gtest.h>

#include "client.h"

using namespace trelvane::http;
using namespace trelvane::http::testing;

namespace {

// The parts that ParseURL sets: address, port, path, cookie domain and path, user, password.
std::string parts(const BasicHTTP& h) {
  return h.ServerAddress + " " + std::to_string(h.ServerPort) + " " + h.ServerPath + " " + h.CookieDomain + " " +
         h.CookiePath + " " + h.User + " " + h.Pass;
}

}  // namespace

TEST(ParseURL, PartsOfTheUrl) {
  const struct { const char* url; bool ok; const char* want; } rows[] = {
      {"  http://www.example.com  ", true, "www.example.com 80 / .example.com   "},
      {"http://joe:s3:cr@example.com:8080/a/b.html", true, "example.com 8080 /a/b.html .example.com /a/ joe s3:cr"},
      {"http://joe@example.com/x", true, "joe@example.com 80 /x .joe@example.com /x  "},  // no password: all host
      // a bad URL keeps the cookie scope of the last good one; an "@" in the path of a URL with a port reads the host as credentials
      {"http://example.com:8080/mail@box", false, "box 80 / .example.com /a example.com 8080/mail"},
      {"FTP://files.example.com/pub/x.zip", true, "files.example.com 80 /pub/x.zip .files.example.com /pub/  "},
      {"http://ftp://both.example.com/", true, "both.example.com 80 / .both.example.com   "},
      {"plain.example.com/p", true, "plain.example.com 80 /p .plain.example.com /p  "},
      {"http://a.example/x y/%20z?q=1&r=[2]", true, "a.example 80 /x%20y/%20z?q=1&r=%5B2%5D .a.example /x%20y/%20z?q=1&r=%5B2%5D  "},
  };
  for (const auto& r : rows) {
    Client c;
    c.http.ParseURL("http://example.com/a/");
    EXPECT_EQ(c.http.ParseURL(r.url), r.ok) << r.url;
    EXPECT_EQ(parts(c.http), r.want) << r.url;
  }
  Client c;
  ASSERT_TRUE(c.http.ParseURL("http://example.com:8080/a"));
  EXPECT_EQ(c.http.OriginalURL, "http://example.com:8080/a");
  EXPECT_EQ(c.http.Path, "/a");
  EXPECT_EQ(c.socket->Address + ":" + std::to_string(c.socket->Port), "example.com:8080");
  EXPECT_TRUE(c.log.lines.empty());
}

TEST(ParseURL, BadUrlsReportAndKeepTheLastGoodOne) {
  Client c;
  ASSERT_TRUE(c.http.ParseURL("http://www.example.com/a/"));
  for (const char* bad : {"http://localhost/", "http://example.com:0/", "http://example.com:abc/",
                          "http://example.com:-8/", "https://example.com/", "/relative/path", ""}) {
    c.log.clear();
    EXPECT_FALSE(c.http.ParseURL(bad)) << bad;
    EXPECT_EQ(c.log.lines, (Lines{"OperationError Bad URL!|true", "Cancelled"})) << bad;
    EXPECT_EQ(c.http.OriginalURL, "http://www.example.com/a/");
    EXPECT_EQ(c.http.CookieDomain, ".example.com");
    EXPECT_EQ(c.http.CookiePath, "/a");
  }
  // the URL parts have changed all the same
  c.http.ParseURL("http://localhost:81/z");
  EXPECT_EQ(c.http.ServerAddress, "localhost");
  EXPECT_EQ(c.http.ServerPort, 81);
  EXPECT_EQ(c.http.ServerPath, "/z");
}

TEST(ParseURL, PathIsEncodedOnce) {
  Client c;
  ASSERT_TRUE(c.http.ParseURL("http://a.example/x y/%20z?q=1&r=[2]"));
  EXPECT_EQ(c.http.ServerPath, "/x%20y/%20z?q=1&r=%5B2%5D");
}

TEST(ParseURL, CookieScopeFollowsTheHost) {
  Client c;
  struct Row {
    const char* url;
    const char* domain;
    const char* path;
  };
  for (const Row& r : {Row{"http://www.example.com/a/b/", ".example.com", "/a/b"},
                       Row{"http://wwwx.example.com/a/b.html", ".wwwx.example.com", "/a/"},
                       Row{"http://192.168.0.1/", ".192.168.0.1", ""},
                       Row{"http://a.b.c.d/x", "a.b.c.d", "/x"},
                       Row{"http://x.org/a/find?q=1.2", ".x.org", "/a/"},
                       Row{"http://WWW.x.org/", ".x.org", ""}}) {
    ASSERT_TRUE(c.http.ParseURL(r.url)) << r.url;
    EXPECT_EQ(c.http.CookieDomain, r.domain) << r.url;
    EXPECT_EQ(c.http.CookiePath, r.path) << r.url;
  }
}

TEST(ParseURL, ProxyGetsTheWholeUrlAsGiven) {
  Client c;
  c.http.SetProxy("proxy.example.net", 3128, "pu", "pp");
  ASSERT_TRUE(c.http.ParseURL("http://joe:pw@www.example.com:8080/a b"));
  EXPECT_EQ(c.socket->Address, "proxy.example.net");
  EXPECT_EQ(c.socket->Port, 3128);
  EXPECT_EQ(c.http.Path, "http://joe:pw@www.example.com:8080/a b");
  EXPECT_EQ(c.http.ServerPath, "/a%20b");
  ASSERT_TRUE(c.http.ParseURL("www.example.com/x"));
  EXPECT_EQ(c.http.Path, "http://www.example.com/x");
  ASSERT_TRUE(c.http.ParseURL("ftp://www.example.com/x"));
  EXPECT_EQ(c.http.Path, "ftp://www.example.com/x");

  c.http.ClearProxy();
  EXPECT_EQ(c.http.ProxyAddress, "");
  EXPECT_EQ(c.http.ProxyPort, 0);
  EXPECT_EQ(c.http.ProxyUser, "");
  EXPECT_EQ(c.http.ProxyPass, "");
  ASSERT_TRUE(c.http.ParseURL("http://www.example.com:8080/x"));
  EXPECT_EQ(c.socket->Address, "www.example.com");
  EXPECT_EQ(c.http.Path, "/x");
}

TEST(URLEncode, SafeEscapedReservedAndEncoded) {
  Client c;
  EXPECT_EQ(c.http.URLEncode("a b&c", true, false), "a%20b%26c");
  EXPECT_EQ(c.http.URLEncode("a b&c", true, true), "a%20b&c");
  EXPECT_EQ(c.http.URLEncode("AZaz09$-_.+!*(),", false, false), "AZaz09$-_.+!*(),");
  EXPECT_EQ(c.http.URLEncode(";/?:@=&", false, false), "%3B%2F%3F%3A%40%3D%26");
  EXPECT_EQ(c.http.URLEncode("%41%4a%zz", true, false), "%41%4a%25zz");
  EXPECT_EQ(c.http.URLEncode("%41", false, true), "%2541");
  EXPECT_EQ(c.http.URLEncode("50%", true, true), "50%25");
  EXPECT_EQ(c.http.URLEncode("%4", true, true), "%254");
  EXPECT_EQ(c.http.URLEncode(std::string("\n\x7f\xe9\0", 4), true, true), "%0A%7F%E9%00");
  EXPECT_EQ(c.http.URLEncode("", true, true), "");
}

TEST(FormEncode, PlusBlankAndTheLineEndDoubling) {
  Client c;
  EXPECT_EQ(c.http.FormEncode("a+b c"), "a%2Bb+c");
  EXPECT_EQ(c.http.FormEncode("x\ny"), "x%0D%0Ay");
  EXPECT_EQ(c.http.FormEncode("x\ry"), "x%0D%0D%0Ay");  // a lone CR ends as CR CR LF
  EXPECT_EQ(c.http.FormEncode("x\r\ny\rz\n"), "x%0D%0Ay%0Dz%0A");  // one CRLF: nothing changes
  EXPECT_EQ(c.http.FormEncode("%41&=?"), "%41%26%3D%3F");
}

TEST(SetForm, PairsAreJoinedByIndex) {
  Client c;
  c.http.Init();
  c.http.SetForm({"", "name", "q"}, {"", "J Doe", "a&b"}, false);
  EXPECT_EQ(c.http.FormData, "name=J+Doe&q=a%26b");
  EXPECT_EQ(c.http.FormContentType, "application/x-www-form-urlencoded");
  EXPECT_FALSE(c.http.SendFormAfter);
  EXPECT_EQ(c.http.Command, "GET");

  // added to, not replaced, and without an "&" at index 1
  c.http.SetForm({"", "more"}, {"", "1"}, true);
  EXPECT_EQ(c.http.FormData, "name=J+Doe&q=a%26bmore=1");
  EXPECT_EQ(c.http.Command, "POST");

  // a skipped first pair leaves a leading "&"
  c.http.ClearForm();
  EXPECT_EQ(c.http.Command, "");
  EXPECT_TRUE(c.http.SendFormAfter);
  EXPECT_EQ(c.http.FormContentType, "application/x-www-form-urlencoded");
  c.http.SetForm({"", "", "b", "c"}, {"", "1", "", "3"}, false);
  EXPECT_EQ(c.http.FormData, "&c=3");
}

TEST(SetForm, FewerValuesThanNamesSkipsTheMissingOnes) {
  Client c;
  c.http.Init();
  c.http.SetForm({"", "a", "b", "c"}, {"", "1"}, false);
  EXPECT_EQ(c.http.FormData, "a=1");
  c.http.SetForm({"ignored"}, {}, false);  // index 0 is never read
  EXPECT_EQ(c.http.FormData, "a=1");
}

// On a new instance the first FormEncode runs Init, which finds FormData
// still empty and turns the fresh "POST" back into "GET".
TEST(SetForm, FirstFormOfANewInstanceLosesItsPost) {
  Client fresh;
  fresh.http.SetForm({"", "a"}, {"", "1"}, true);
  EXPECT_EQ(fresh.http.Command, "GET");
  EXPECT_EQ(fresh.http.FormData, "a=1");
  Client used;
  used.http.Init();
  used.http.SetForm({"", "a"}, {"", "1"}, true);
  EXPECT_EQ(used.http.Command, "POST");
}

TEST(SetForm, DirectlyLeavesTheCommand) {
  Client c;
  c.http.Command = "PUT";
  c.http.SetFormDirectly("application/json", "{\"a\": 1}", true);
  EXPECT_EQ(c.http.FormData, "{\"a\": 1}");
  EXPECT_EQ(c.http.FormContentType, "application/json");
  EXPECT_TRUE(c.http.SendFormAfter);
  EXPECT_EQ(c.http.Command, "PUT");
}

TEST(Base64, NoPaddingNoLineBreaks) {
  Client c;
  const std::pair<std::string, std::string> rows[] = {
      {"", ""}, {"a", "YQ"}, {"ab", "YWI"}, {"abc", "YWJj"}, {"user:secret", "dXNlcjpzZWNyZXQ"},
      {"\xff\xfe\xfd", "//79"}, {"\xfb\xff", "+/8"}};
  for (const auto& [text, want] : rows) EXPECT_EQ(c.http.Base64(text), want) << text;
  std::string longText(120, 'x');
  std::string encoded = c.http.Base64(longText);
  EXPECT_EQ(encoded.size(), 160u);
  EXPECT_EQ(encoded.find('\n'), std::string::npos);
}

TEST(SetClient, DropsBlanksAndSlashes) {
  Client c;
  c.http.SetClient("My Tool/x", 2);
  EXPECT_EQ(c.http.Client, "MyToolx/2.0");
  c.http.SetClient("Trelvane", 1.25);
  EXPECT_EQ(c.http.Client, "Trelvane/1.3");
}
