// httptext.h -- the 1-based, case-blind string primitives the HTTP client leans on.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace trelvane::http {

// Texts are bytes, positions count from 1, and every search ignores the case
// of ASCII letters.

// Position of the first t in s, 0 if none; an empty t is never found.
int32_t InStr(std::string_view s, std::string_view t);

// The fields of s cut at every sep (no field at all for an empty s).
std::vector<std::string_view> SplitFields(std::string_view s, std::string_view sep);
// The n-th field of s cut at every sep; empty where s has fewer fields.
std::string NthField(std::string_view s, std::string_view sep, int32_t n);
// How many such fields s has; 0 for an empty s.
int32_t CountFields(std::string_view s, std::string_view sep);

// The rest of s from start, or n characters of it; a start before 1 counts as 1.
std::string Mid(std::string_view s, int64_t start);
std::string Mid(std::string_view s, int64_t start, int64_t n);
std::string Left(std::string_view s, int64_t n);
std::string Right(std::string_view s, int64_t n);
inline int64_t Len(std::string_view s) { return static_cast<int64_t>(s.size()); }

// White space: blank, tab, CR, LF, vertical tab, form feed.
std::string Trim(std::string_view s);
std::string LTrim(std::string_view s);
std::string RTrim(std::string_view s);

// The first a, or every a, replaced by b.
std::string Replace(std::string_view s, std::string_view a, std::string_view b);
std::string ReplaceAll(std::string_view s, std::string_view a, std::string_view b);

// Upper-case hexadecimal digits, no leading zeros ("0" for 0).
std::string Hex(uint32_t n);

inline int32_t Asc(char c) { return static_cast<unsigned char>(c); }
inline std::string Chr(int32_t code) { return std::string(1, static_cast<char>(code)); }

}  // namespace trelvane::http
