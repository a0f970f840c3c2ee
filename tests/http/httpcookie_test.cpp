// httpcookie_test.cpp -- HTTPCookie: parse, attributes, the expires form, max-age, matching.
#include "http/httpcookie.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

using namespace trelvane::http;

namespace {

// Runs the test under a given time zone and restores the one before.
class TimeZone {
 public:
  explicit TimeZone(const char* tz) {
    if (const char* old = std::getenv("TZ")) old_ = old;
    setenv("TZ", tz, 1);
    tzset();
  }
  ~TimeZone() {
    if (old_) setenv("TZ", old_->c_str(), 1);
    else unsetenv("TZ");
    tzset();
  }

 private:
  std::optional<std::string> old_;
};

HTTPCookie parsed(const std::string& text, bool* ok = nullptr) {
  HTTPCookie c;
  bool r = c.Parse(text, ".example.com", "/docs/", "/docs/page.html");
  if (ok) *ok = r;
  return c;
}

}  // namespace

TEST(HTTPCookie, NameAndValueSplitAtTheFirstEquals) {
  HTTPCookie c = parsed("a=b=c");
  EXPECT_EQ(c.Name, "a");
  EXPECT_EQ(c.Value, "b=c");
  EXPECT_EQ(c.Data(), "a=b=c");
  c = parsed("token");
  EXPECT_EQ(c.Name, "token");
  EXPECT_EQ(c.Value, "");
  c = parsed("  q=\"x y\"; path=\"/p\"  ");
  EXPECT_EQ(c.Name, "q");
  EXPECT_EQ(c.Value, "x y");  // every double quote goes
  EXPECT_EQ(c.Path, "/p");
}

TEST(HTTPCookie, AttributesNeedAnEqualsSign) {
  HTTPCookie c = parsed("id=1; PATH=/docs/x/; Domain=.example.com; secure; Comment=hi");
  EXPECT_EQ(c.Path, "/docs/x");
  EXPECT_EQ(c.Domain, ".example.com");
  EXPECT_FALSE(c.Secure);  // a bare attribute has an empty key
  EXPECT_FALSE(c.Expires.has_value());
  c = parsed("id=1; secure=1");
  EXPECT_TRUE(c.Secure);
}

TEST(HTTPCookie, DefaultsFillDomainAndPath) {
  bool ok = false;
  HTTPCookie c = parsed("id=1", &ok);
  EXPECT_TRUE(ok);
  EXPECT_EQ(c.Domain, ".example.com");
  EXPECT_EQ(c.Path, "/docs");

  // a numeric host: its default domain has a leading dot, so it passes
  HTTPCookie n;
  EXPECT_TRUE(n.Parse("id=7", ".192.168.0.1", "/", "/a"));
  EXPECT_EQ(n.Domain, ".192.168.0.1");
  EXPECT_EQ(n.Path, "/");
}

TEST(HTTPCookie, ParseAnswersWithMatch) {
  const std::pair<const char*, bool> rows[] = {
      {"id=1; domain=example.com", false},  // no leading dot
      {"id=1; domain=.example.com", true}, {"id=1; domain=.other.org", false}, {"id=1; path=/elsewhere", false},
      {"id=1; max-age=0", false}};  // expiring this very second is expired
  for (const auto& [text, want] : rows) {
    bool ok = !want;
    parsed(text, &ok);
    EXPECT_EQ(ok, want) << text;
  }
}

// The path is a plain prefix (the path cleaned first), the domain needs a
// leading dot and three fields, except where IsIP's reading lets it through.
TEST(HTTPCookie, MatchTestsPathPrefixDomainFormAndTail) {
  const struct { const char *domain, *host, *path; bool want; } rows[] = {
      {".example.com", "www.example.com", "/ab", true},  {".example.com", "WWW.EXAMPLE.COM", "/A/b", true},
      {".example.com", "www.example.org", "/a", false},  {".example.com", "www.example.com", "/b", false},
      {".example.com", "x.example.com", "a/", true},     {".x", "a.x", "/a", false},
      {".x.y", "a.x.y", "/a", true},                     {"a.b.c.d", "a.b.c.d", "/a", true},
      {"192.168.0.1", "192.168.0.1", "/a", false},       {"example.com", "example.com", "/a", false}};
  for (const auto& r : rows) {
    HTTPCookie c;
    c.Name = "a";
    c.Domain = r.domain;
    c.Path = "/a";
    EXPECT_EQ(c.Match(r.host, r.path), r.want) << r.domain << " " << r.host << r.path;
  }
}

TEST(HTTPCookie, MaxAgeCountsFromNow) {
  HTTPCookie c;
  c.SetDate("3600", true);
  ASSERT_TRUE(c.Expires.has_value());
  double now = static_cast<double>(std::time(nullptr));
  EXPECT_GE(c.Expires->TotalSeconds(), now + 3599);
  EXPECT_LE(c.Expires->TotalSeconds(), now + 3601);
  EXPECT_FALSE(c.Expired());
  c.SetDate("-5", true);
  EXPECT_TRUE(c.Expired());
  c.SetDate("0", true);
  EXPECT_TRUE(c.Expired());
  c.Expires.reset();
  EXPECT_FALSE(c.Expired());
}

TEST(HTTPCookie, ExpiresAndMaxAgeActInTheirOrder) {
  HTTPCookie c = parsed("a=1; max-age=0; expires=Thu, 01-Jan-2099 00:00:00 GMT");
  EXPECT_FALSE(c.Expired());
  c = parsed("a=1; expires=Thu, 01-Jan-2099 00:00:00 GMT; max-age=0");
  EXPECT_TRUE(c.Expired());
  bool ok = true;
  parsed("a=1; expires=Fri, 01-Jan-1999 00:00:00 GMT", &ok);
  EXPECT_FALSE(ok);
}

// The zone name is not read: the time counts as local time.
TEST(HTTPCookie, ExpiresReadsItsOneFormAsLocalTime) {
  HTTPCookie c;
  {
    TimeZone utc("UTC0");
    c.SetDate("Wed, 09-Jun-2021 10:18:14 GMT", false);
    ASSERT_TRUE(c.Expires.has_value());
    EXPECT_EQ(c.Expires->TotalSeconds(), 1623233894.0);
  }
  {
    TimeZone est("EST5");
    c.SetDate("Wed, 09-Jun-2021 10:18:14 GMT", false);
    EXPECT_EQ(c.Expires->TotalSeconds(), 1623233894.0 + 5 * 3600);
  }
}

TEST(HTTPCookie, ExpiresOddFormsGiveOddDatesNeverAFailure) {
  TimeZone utc("UTC0");
  HTTPCookie c;
  c.SetDate("Sun, 06-Nov-94 08:49:37 GMT", false);  // two-digit year as it stands
  EXPECT_EQ(c.Expires->Year(), 94);
  EXPECT_EQ(c.Expires->Month(), 11);
  EXPECT_TRUE(c.Expired());

  c.SetDate("Tue, 15-Foo-2030 01:02:03 GMT", false);  // unknown month: 0, December, then the year
  EXPECT_EQ(c.Expires->Year(), 2030);
  EXPECT_EQ(c.Expires->Month(), 12);
  EXPECT_EQ(c.Expires->Day(), 15);
  EXPECT_EQ(c.Expires->Hour(), 1);

  c.SetDate("Wed, 09 Jun 2021 10:18:14 GMT", false);  // blanks: nothing is read
  EXPECT_EQ(c.Expires->Year(), 0);
  c.SetDate("no comma at all", false);
  EXPECT_EQ(c.Expires->Year(), 0);
  EXPECT_TRUE(c.Expired());

  c.SetDate("x, 99-Dec-99999999999 99:99:99 GMT", false);
  EXPECT_FALSE(c.Expired());  // clamped far into the future, not wrapped
  c.SetDate("1e308", true);
  EXPECT_FALSE(c.Expired());
}

TEST(HTTPCookie, CleanPathAndCompare) {
  HTTPCookie c;
  EXPECT_EQ(c.CleanPath(""), "/");
  EXPECT_EQ(c.CleanPath("/"), "/");
  EXPECT_EQ(c.CleanPath("a/b/"), "/a/b");
  EXPECT_EQ(c.CleanPath(" /a// "), "/a/");
  EXPECT_EQ(c.CleanPath("x"), "/x");

  HTTPCookie a = parsed("ID=1; path=/docs");
  HTTPCookie b = parsed("id=2; path=/DOCS");
  EXPECT_TRUE(a.Compare(b));
  b.Domain = ".other.example.com";
  EXPECT_FALSE(a.Compare(b));
}

TEST(HTTPCookieList, KeepsOneCookiePerNameDomainAndPath) {
  HTTPCookieList list;
  list.Add(parsed("a=1"));
  list.Add(parsed("b=2"));
  list.Add(parsed("A=3"));
  EXPECT_EQ(list.Count(), 2);
  EXPECT_EQ(list.Text(), "A=3; b=2");
  list.Add(parsed("c=4; path=/docs/deep"));
  EXPECT_EQ(list.Matching("www.example.com", "/docs/page").Text(), "A=3; b=2");
  EXPECT_EQ(list.Matching("www.example.com", "/docs/deep/x").Count(), 3);
  EXPECT_EQ(list.Matching("www.example.org", "/docs").Count(), 0);
}
