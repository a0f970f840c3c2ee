// httptext.cpp -- the 1-based, case-blind string primitives the HTTP client leans on.
#include "http/httptext.h"

#include <algorithm>

namespace trelvane::http {
namespace {

char lower(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }

bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\v' || c == '\f'; }

// 0-based position of t in s at or after from, npos if none.
std::size_t find(std::string_view s, std::string_view t, std::size_t from = 0) {
  if (t.empty() || t.size() > s.size()) return std::string_view::npos;
  for (std::size_t i = from; i + t.size() <= s.size(); ++i) {
    std::size_t k = 0;
    while (k < t.size() && lower(s[i + k]) == lower(t[k])) ++k;
    if (k == t.size()) return i;
  }
  return std::string_view::npos;
}

}  // namespace

int32_t InStr(std::string_view s, std::string_view t) {
  std::size_t p = find(s, t);
  return p == std::string_view::npos ? 0 : static_cast<int32_t>(p + 1);
}

std::vector<std::string_view> SplitFields(std::string_view s, std::string_view sep) {
  std::vector<std::string_view> out;
  if (s.empty()) return out;
  std::size_t from = 0;
  for (;;) {
    std::size_t p = find(s, sep, from);
    if (p == std::string_view::npos) {
      out.push_back(s.substr(from));
      return out;
    }
    out.push_back(s.substr(from, p - from));
    from = p + sep.size();
  }
}

std::string NthField(std::string_view s, std::string_view sep, int32_t n) {
  if (n < 1 || s.empty()) return {};
  std::size_t from = 0;
  for (int32_t i = 1;; ++i) {
    std::size_t p = find(s, sep, from);
    if (i == n) return std::string(s.substr(from, p == std::string_view::npos ? std::string_view::npos : p - from));
    if (p == std::string_view::npos) return {};
    from = p + sep.size();
  }
}

int32_t CountFields(std::string_view s, std::string_view sep) {
  return static_cast<int32_t>(SplitFields(s, sep).size());
}

std::string Mid(std::string_view s, int64_t start) {
  if (start < 1) start = 1;
  if (start > Len(s)) return {};
  return std::string(s.substr(static_cast<std::size_t>(start - 1)));
}

std::string Mid(std::string_view s, int64_t start, int64_t n) {
  if (start < 1) start = 1;
  if (n <= 0 || start > Len(s)) return {};
  return std::string(s.substr(static_cast<std::size_t>(start - 1), static_cast<std::size_t>(n)));
}

std::string Left(std::string_view s, int64_t n) {
  if (n <= 0) return {};
  return std::string(s.substr(0, static_cast<std::size_t>(std::min(n, Len(s)))));
}

std::string Right(std::string_view s, int64_t n) {
  if (n <= 0) return {};
  if (n >= Len(s)) return std::string(s);
  return std::string(s.substr(s.size() - static_cast<std::size_t>(n)));
}

std::string LTrim(std::string_view s) {
  std::size_t i = 0;
  while (i < s.size() && isSpace(s[i])) ++i;
  return std::string(s.substr(i));
}

std::string RTrim(std::string_view s) {
  std::size_t n = s.size();
  while (n > 0 && isSpace(s[n - 1])) --n;
  return std::string(s.substr(0, n));
}

std::string Trim(std::string_view s) { return LTrim(RTrim(s)); }

std::string Replace(std::string_view s, std::string_view a, std::string_view b) {
  std::size_t p = find(s, a);
  if (p == std::string_view::npos) return std::string(s);
  std::string out(s.substr(0, p));
  out += b;
  out += s.substr(p + a.size());
  return out;
}

std::string ReplaceAll(std::string_view s, std::string_view a, std::string_view b) {
  std::string out;
  std::size_t from = 0;
  for (;;) {
    std::size_t p = find(s, a, from);
    if (p == std::string_view::npos) break;
    out += s.substr(from, p - from);
    out += b;
    from = p + a.size();
  }
  out += s.substr(from);
  return out;
}

std::string Hex(uint32_t n) {
  static const char digits[] = "0123456789ABCDEF";
  std::string out;
  do {
    out.insert(out.begin(), digits[n & 15]);
    n >>= 4;
  } while (n != 0);
  return out;
}

}  // namespace trelvane::http
