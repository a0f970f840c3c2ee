// httpcookie.cpp -- HTTPCookie: one cookie from a server, and a list an owner may keep.
#include "http/httpcookie.h"

#include <array>

#include "http/httpmodule.h"
#include "http/httptext.h"
#include "platform/numtext.h"

namespace trelvane::http {

std::string HTTPCookie::Data() const { return Name + "=" + Value; }

bool HTTPCookie::Match(std::string_view domain, std::string_view path) const {
  if (Expired()) return false;
  if (!equalsNoCase(Left(CleanPath(path), Len(Path)), Path)) return false;
  if (Left(Domain, 1) != "." && !IsIP(Domain)) return false;
  // A leading dot counts as a field: ".x" has 2 and fails, ".x.y" has 3.
  if (CountFields(Domain, ".") <= 2) return false;
  return equalsNoCase(Right(domain, Len(Domain)), Domain);
}

bool HTTPCookie::Parse(std::string_view text, std::string_view defaultdomain, std::string_view defaultpath,
                       std::string_view requestpath) {
  Domain.clear();
  Name.clear();
  Path.clear();
  Value.clear();
  Secure = false;
  Expires.reset();

  std::string work = ReplaceAll(Trim(text), "\"", "");
  std::vector<std::string_view> fields = SplitFields(work, ";");
  std::string pair = LTrim(fields.empty() ? std::string_view() : fields[0]);
  Name = NthField(pair, "=", 1);
  Value = GetAfter(pair, "=");

  // An attribute without "=" has an empty key and is dropped, the bare
  // "secure" included: only "secure=<anything>" sets Secure.
  for (std::size_t i = 1; i < fields.size(); ++i) {
    std::string attribute = LTrim(fields[i]);
    std::string value = GetAfter(attribute, "=");
    std::string key = GetBefore(attribute, "=");
    if (equalsNoCase(key, "expires")) SetDate(value, false);
    else if (equalsNoCase(key, "path")) Path = CleanPath(value);
    else if (equalsNoCase(key, "domain")) Domain = value;
    else if (equalsNoCase(key, "max-age")) SetDate(value, true);
    else if (equalsNoCase(key, "secure")) Secure = true;
  }

  if (Domain.empty()) Domain = std::string(defaultdomain);
  if (Path.empty()) Path = CleanPath(defaultpath);
  return Match(defaultdomain, requestpath);
}

void HTTPCookie::SetDate(std::string_view text, bool relative) {
  if (relative) {
    Date now;
    now.SetTotalSeconds(now.TotalSeconds() + Val(text));
    Expires = now;
    return;
  }
  // An unknown month name reads as 0, which the calendar takes for
  // December; the year set after it stands. Wrong, never fatal.
  static const std::array<const char*, 12> months = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                     "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  Date d(0);
  std::string rest = Trim(GetAfter(text, ","));
  auto cut = [&rest](std::string_view sep) {
    std::string piece = GetBefore(rest, sep);
    rest = GetAfter(rest, sep);
    return piece;
  };
  std::string day = cut("-");
  std::string month = cut("-");
  std::string year = cut(" ");
  std::string hour = cut(":");
  std::string minute = cut(":");
  std::string second = cut(" ");

  int32_t monthNumber = 0;
  for (std::size_t m = 0; m < months.size(); ++m)
    if (equalsNoCase(month, months[m])) monthNumber = static_cast<int32_t>(m) + 1;

  d.SetDay(toInt(Val(day)));
  d.SetMonth(monthNumber);
  d.SetYear(toInt(Val(year)));
  d.SetHour(toInt(Val(hour)));
  d.SetMinute(toInt(Val(minute)));
  d.SetSecond(toInt(Val(second)));
  Expires = d;
}

bool HTTPCookie::Expired() const {
  if (!Expires) return false;
  return !(Expires->TotalSeconds() > Date().TotalSeconds());
}

std::string HTTPCookie::CleanPath(std::string_view path) const {
  std::string p = Trim(path);
  if (Right(p, 1) == "/" && Len(p) > 1) p.pop_back();
  if (Left(p, 1) != "/") p.insert(p.begin(), '/');
  return p;
}

bool HTTPCookie::Compare(const HTTPCookie& other) const {
  return equalsNoCase(Name, other.Name) && equalsNoCase(Domain, other.Domain) && equalsNoCase(Path, other.Path);
}

void HTTPCookieList::Add(const HTTPCookie& cookie) {
  for (HTTPCookie& c : cookies_) {
    if (c.Compare(cookie)) {
      c = cookie;
      return;
    }
  }
  cookies_.push_back(cookie);
}

HTTPCookieList HTTPCookieList::Matching(std::string_view domain, std::string_view path) const {
  HTTPCookieList out;
  for (const HTTPCookie& c : cookies_)
    if (c.Match(domain, path)) out.cookies_.push_back(c);
  return out;
}

std::string HTTPCookieList::Text() const {
  std::string out;
  for (const HTTPCookie& c : cookies_) {
    if (!out.empty()) out += "; ";
    out += c.Data();
  }
  return out;
}

}  // namespace trelvane::http
