// httpmodule.cpp -- HTTPModule: the four stateless text helpers of the HTTP client.
#include "http/httpmodule.h"

#include "http/httptext.h"
#include "platform/numtext.h"

namespace trelvane::http {

std::string GetAfter(std::string_view s, std::string_view sep) {
  int32_t p = InStr(s, sep);
  if (p == 0) return {};
  return Mid(s, p + Len(sep));
}

std::string GetBefore(std::string_view s, std::string_view sep) {
  int32_t p = InStr(s, sep);
  if (p == 0) return {};
  return Left(s, p - 1);
}

std::string Unquote(std::string_view s) {
  if (Left(s, 1) == "\"" && Right(s, 1) == "\"") return Mid(s, 2, Len(s) - 2);
  return std::string(s);
}

bool IsIP(std::string_view s) {
  std::vector<std::string_view> fields = SplitFields(s, ".");
  if (fields.size() != 4) return false;
  for (std::string_view f : fields)
    if (Val(f) != 0 && f != "0") return false;
  return true;
}

}  // namespace trelvane::http
