// numtext.h -- number to text (Str, CStr, Format) and text to number (Val, CDbl).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace trelvane {

// Integers give plain digits, Singles %.7g, Doubles %.15g; not-a-number is
// "NaN", infinities "Infinity" and "-Infinity". The decimal point is always ".".
std::string Str(int32_t v);
std::string Str(int64_t v);
std::string Str(float v);
std::string Str(double v);

std::string CStr(int32_t v);
std::string CStr(int64_t v);
std::string CStr(float v);
std::string CStr(double v);

// Mask formatting: '#' optional digit, '0' required digit, '.' the point.
// Rounds half away from zero on the exact value; see Format's tests.
std::string Format(double v, std::string_view mask);

// The longest leading number of the text (blanks skipped, sign, digits,
// fraction, exponent, or &h/&b/&o), 0 where there is none.
double Val(std::string_view text);

// Val that also reads "NaN", "Infinity" and "-Infinity".
double CDbl(std::string_view text);

// Float to integer: truncation towards zero; a not-a-number or an infinity
// gives 0, and a finite value outside the range saturates.
int32_t toInt(double v);
int64_t toInt64(double v);

// Single rounding of a Double, written out where the rounding is meant.
inline float toSingle(double v) { return static_cast<float>(v); }

// Case-insensitive equality of two byte texts (ASCII letters only).
bool equalsNoCase(std::string_view a, std::string_view b);
// Case-insensitive test that text begins with prefix.
bool startsWithNoCase(std::string_view text, std::string_view prefix);

}  // namespace trelvane
