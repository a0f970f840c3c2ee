// numtext.cpp -- the one module that writes and reads every number text.
#include "platform/numtext.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

namespace trelvane {
namespace {

std::string nonFinite(double v) {
  if (std::isnan(v)) return "NaN";
  return v < 0 ? "-Infinity" : "Infinity";
}

std::string general(double v, int precision) {
  if (!std::isfinite(v)) return nonFinite(v);
  char buf[64];
  auto r = std::to_chars(buf, buf + sizeof buf, v, std::chars_format::general, precision);
  return std::string(buf, r.ptr);
}

// %.7g of a Single, exactly as general(v, 7) writes it. A whole number below
// 10^7 prints as its plain digits: the common best score of the identity
// model, written several times faster this way. (A check of the shortest digits
// that read back to v was measured as no faster than the exact conversion
// for other values, so they take that.)
std::string single(float v) {
  if (v == std::trunc(v) && std::fabs(v) < 1e7f) {
    if (v == 0.0f) return std::signbit(v) ? "-0" : "0";
    char buf[16];
    auto r = std::to_chars(buf, buf + sizeof buf, static_cast<int32_t>(v));
    return std::string(buf, r.ptr);
  }
  return general(v, 7);
}

char lower(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }

bool isBlank(char c) { return c == ' ' || c == '\t'; }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

// Reads a decimal number at the start of s; n gets how many bytes it took.
double leadingDecimal(std::string_view s, std::size_t& n) {
  std::size_t i = 0;
  bool neg = false;
  if (i < s.size() && (s[i] == '+' || s[i] == '-')) neg = s[i++] == '-';
  std::size_t start = i;
  std::size_t digits = 0;
  while (i < s.size() && isDigit(s[i])) ++i, ++digits;
  if (i < s.size() && s[i] == '.') {
    ++i;
    while (i < s.size() && isDigit(s[i])) ++i, ++digits;
  }
  if (digits == 0) {
    n = 0;
    return 0.0;
  }
  std::size_t mantissaEnd = i;
  if (i < s.size() && (s[i] == 'e' || s[i] == 'E')) {
    std::size_t j = i + 1;
    if (j < s.size() && (s[j] == '+' || s[j] == '-')) ++j;
    if (j < s.size() && isDigit(s[j])) {
      while (j < s.size() && isDigit(s[j])) ++j;
      i = j;
    }
  }
  n = i;
  double v = 0.0;
  auto r = std::from_chars(s.data() + start, s.data() + i, v, std::chars_format::general);
  if (r.ec == std::errc::result_out_of_range) {
    // Too large or too small for a Double: decide by the exponent's sign.
    bool negExp = false;
    for (std::size_t k = mantissaEnd; k < i; ++k)
      if (s[k] == '-') negExp = true;
    bool zeroMantissa = true;
    for (std::size_t k = start; k < mantissaEnd; ++k)
      if (isDigit(s[k]) && s[k] != '0') zeroMantissa = false;
    v = (negExp || zeroMantissa) ? 0.0 : std::numeric_limits<double>::infinity();
  }
  return neg ? -v : v;
}

double leadingRadix(std::string_view s, int radix) {
  uint64_t v = 0;
  for (char c : s) {
    int d;
    if (isDigit(c)) d = c - '0';
    else if (lower(c) >= 'a' && lower(c) <= 'f') d = lower(c) - 'a' + 10;
    else break;
    if (d >= radix) break;
    v = v * static_cast<uint64_t>(radix) + static_cast<uint64_t>(d);
  }
  return static_cast<double>(v);
}

}  // namespace

std::string Str(int32_t v) { return std::to_string(v); }
std::string Str(int64_t v) { return std::to_string(v); }
std::string Str(float v) { return single(v); }
std::string Str(double v) { return general(v, 15); }
std::string CStr(int32_t v) { return std::to_string(v); }
std::string CStr(int64_t v) { return std::to_string(v); }
std::string CStr(float v) { return single(v); }
std::string CStr(double v) { return general(v, 15); }

std::string Format(double v, std::string_view mask) {
  if (!std::isfinite(v)) return nonFinite(v);

  std::size_t point = mask.find('.');
  std::string_view intMask = mask.substr(0, point);
  std::string_view fracMask = point == std::string_view::npos ? std::string_view{} : mask.substr(point + 1);
  std::size_t minInt = 0;
  for (char c : intMask)
    if (c == '0') ++minInt;
  if (minInt == 0) minInt = 1;
  std::size_t places = 0, required = 0;
  for (char c : fracMask) {
    if (c == '#' || c == '0') ++places;
    if (c == '0') required = places;
  }

  // The exact decimal expansion of the Double, so that rounding looks at the
  // true next digit: half away from zero is then "next digit >= 5".
  static thread_local char buf[1200];
  auto r = std::to_chars(buf, buf + sizeof buf, std::fabs(v), std::chars_format::fixed, 1100);
  std::string exact(buf, r.ptr);
  std::size_t dot = exact.find('.');
  std::string intDigits = exact.substr(0, dot);
  std::string frac = exact.substr(dot + 1);
  std::string digits = intDigits + frac.substr(0, places);
  if (frac[places] >= '5') {
    int k = static_cast<int>(digits.size()) - 1;
    while (k >= 0 && digits[k] == '9') digits[k--] = '0';
    if (k >= 0) ++digits[k];
    else digits.insert(digits.begin(), '1');
  }
  std::string ip = digits.substr(0, digits.size() - places);
  std::string fp = digits.substr(digits.size() - places);
  std::size_t nz = ip.find_first_not_of('0');
  ip = nz == std::string::npos ? std::string() : ip.substr(nz);
  if (ip.size() < minInt) ip.insert(0, minInt - ip.size(), '0');
  while (fp.size() > required && fp.back() == '0') fp.pop_back();

  bool zero = ip.find_first_not_of('0') == std::string::npos && fp.find_first_not_of('0') == std::string::npos;
  std::string out = (v < 0 && !zero) ? "-" : "";
  out += ip;
  if (!fp.empty()) out += "." + fp;
  return out;
}

double Val(std::string_view text) {
  std::size_t i = 0;
  while (i < text.size() && isBlank(text[i])) ++i;
  std::string_view s = text.substr(i);
  if (s.size() >= 2 && s[0] == '&') {
    char p = lower(s[1]);
    if (p == 'h') return leadingRadix(s.substr(2), 16);
    if (p == 'b') return leadingRadix(s.substr(2), 2);
    if (p == 'o') return leadingRadix(s.substr(2), 8);
  }
  std::size_t n = 0;
  return leadingDecimal(s, n);
}

double CDbl(std::string_view text) {
  std::size_t i = 0;
  while (i < text.size() && isBlank(text[i])) ++i;
  std::string_view s = text.substr(i);
  bool neg = false;
  std::string_view t = s;
  if (!t.empty() && (t[0] == '+' || t[0] == '-')) {
    neg = t[0] == '-';
    t = t.substr(1);
  }
  if (startsWithNoCase(t, "nan")) return std::numeric_limits<double>::quiet_NaN();
  if (startsWithNoCase(t, "infinity")) {
    double inf = std::numeric_limits<double>::infinity();
    return neg ? -inf : inf;
  }
  return Val(s);
}

int32_t toInt(double v) {
  if (!std::isfinite(v)) return 0;
  if (v >= 2147483647.0) return std::numeric_limits<int32_t>::max();
  if (v <= -2147483648.0) return std::numeric_limits<int32_t>::min();
  return static_cast<int32_t>(v);
}

int64_t toInt64(double v) {
  if (!std::isfinite(v)) return 0;
  if (v >= 9.2233720368547758e18) return std::numeric_limits<int64_t>::max();
  if (v <= -9.2233720368547758e18) return std::numeric_limits<int64_t>::min();
  return static_cast<int64_t>(v);
}

bool equalsNoCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i)
    if (lower(a[i]) != lower(b[i])) return false;
  return true;
}

bool startsWithNoCase(std::string_view text, std::string_view prefix) {
  return text.size() >= prefix.size() && equalsNoCase(text.substr(0, prefix.size()), prefix);
}

}  // namespace trelvane
