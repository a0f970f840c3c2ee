// httpcookie.h -- HTTPCookie: one cookie from a server, and a list an owner may keep.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "http/httpdate.h"

namespace trelvane::http {

class HTTPCookie {
 public:
  std::string Name;
  std::optional<Date> Expires;  // none: the cookie has no expiry
  std::string Domain;
  std::string Path;
  std::string Value;
  bool Secure = false;          // stored, not used

  virtual ~HTTPCookie() = default;

  // Name "=" Value.
  virtual std::string Data() const;
  // Whether the cookie may be sent for that domain and path.
  virtual bool Match(std::string_view domain, std::string_view path) const;
  // Fills the cookie from a Set-Cookie value and tests it against the defaults.
  virtual bool Parse(std::string_view text, std::string_view defaultdomain, std::string_view defaultpath,
                     std::string_view requestpath);
  // max-age (relative) or the one expires form "Wdy, DD-Mon-YYYY HH:MM:SS GMT".
  virtual void SetDate(std::string_view text, bool relative);
  // True once Expires is not after the present second.
  virtual bool Expired() const;
  // Trimmed, one final "/" dropped, a leading "/" ensured.
  virtual std::string CleanPath(std::string_view path) const;
  // Same Name, Domain and Path, ignoring case.
  virtual bool Compare(const HTTPCookie& other) const;
};

// A plain keeper of cookies for an owner, and the list BasicHTTP's AddCookies
// hands back: Count and Text are all the client reads of it.
class HTTPCookieList {
 public:
  // Stores the cookie, replacing one that Compare finds equal.
  void Add(const HTTPCookie& cookie);
  // The cookies that Match the domain and path, in stored order.
  HTTPCookieList Matching(std::string_view domain, std::string_view path) const;
  int32_t Count() const { return static_cast<int32_t>(cookies_.size()); }
  // The value of a Cookie header: "name=value" pairs joined by "; ".
  std::string Text() const;
  const std::vector<HTTPCookie>& Cookies() const { return cookies_; }

 private:
  std::vector<HTTPCookie> cookies_;
};

}  // namespace trelvane::http
