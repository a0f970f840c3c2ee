// httpmodule.h -- HTTPModule: the four stateless text helpers of the HTTP client.
#pragma once

#include <string>
#include <string_view>

namespace trelvane::http {

// The text behind the first sep; empty if s has no sep.
std::string GetAfter(std::string_view s, std::string_view sep);
// The text ahead of the first sep; empty, not s, if s has no sep.
std::string GetBefore(std::string_view s, std::string_view sep);
// s without its first and last character when both are '"', else s.
std::string Unquote(std::string_view s);
// Four fields by "." none of which reads as a number other than 0. This
// reading is inverted on purpose: 192.168.0.1 is false, 0.0.0.0 and a.b.c.d
// are true, and the cookie scope rules branch on exactly this.
bool IsIP(std::string_view s);

}  // namespace trelvane::http
