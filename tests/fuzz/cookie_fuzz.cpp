// cookie_fuzz.cpp -- libFuzzer target: HTTPCookie.Parse on any Set-Cookie value, and SetDate.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "check.h"
#include "http/httpcookie.h"
#include "http/httptext.h"

using trelvane::http::Date;
using trelvane::http::HTTPCookie;
using trelvane::http::SplitFields;

namespace {

// A moment whose calendar fields are those of some year.
void checkDate(const Date& d) {
  const int32_t month = d.Month(), day = d.Day();
  FUZZ_CHECK(month >= 1 && month <= 12, "a month of the calendar");
  FUZZ_CHECK(day >= 1 && day <= 31, "a day of the month");
  FUZZ_CHECK(d.Hour() >= 0 && d.Hour() <= 23, "an hour of the day");
}

// True when the cookie expires so near the present second that two looks at
// the clock may disagree.
bool expiresNow(const HTTPCookie& c) {
  return c.Expires && std::abs(c.Expires->TotalSeconds() - Date().TotalSeconds()) < 5;
}

}  // namespace

// The input is up to four lines: the Set-Cookie value, the default domain,
// the default path and the request path.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  const std::string input(reinterpret_cast<const char*>(data), size);
  std::string part[4];
  int n = 0;
  for (std::string_view p : SplitFields(input, "\n")) {
    if (n == 3) {
      part[3] += "\n";
      part[3] += p;
      continue;
    }
    part[n++] = std::string(p);
  }

  HTTPCookie c;
  const bool taken = c.Parse(part[0], part[1], part[2], part[3]);
  FUZZ_CHECK(!c.Path.empty() && c.Path[0] == '/', "a cookie's path begins with /");
  FUZZ_CHECK(c.Name.find(';') == std::string::npos && c.Value.find(';') == std::string::npos,
             "name and value stop at the first ;");
  FUZZ_CHECK(c.Name.find('"') == std::string::npos && c.Value.find('"') == std::string::npos,
             "quotes are dropped");
  if (part[1].find('"') == std::string::npos)
    FUZZ_CHECK(c.Domain.find('"') == std::string::npos, "quotes are dropped from the domain");
  FUZZ_CHECK(c.Data() == c.Name + "=" + c.Value, "Data is name=value");
  FUZZ_CHECK(c.Compare(c), "a cookie equals itself");
  if (!expiresNow(c))
    FUZZ_CHECK(taken == c.Match(part[1], part[3]), "Parse answers as Match does");
  if (c.Expires) checkDate(*c.Expires);

  // SetDate on the value alone, both forms.
  HTTPCookie d;
  d.SetDate(part[0], false);
  FUZZ_CHECK(d.Expires.has_value(), "SetDate always sets an expiry");
  FUZZ_CHECK(std::isfinite(d.Expires->TotalSeconds()), "a fixed date is a finite moment");
  checkDate(*d.Expires);
  d.SetDate(part[0], true);
  FUZZ_CHECK(d.Expires.has_value(), "SetDate always sets an expiry");
  checkDate(*d.Expires);
  (void)d.Expired();
  return 0;
}
