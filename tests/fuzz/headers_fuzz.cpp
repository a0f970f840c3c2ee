// headers_fuzz.cpp -- libFuzzer target: HTTPHeaders.Parse on any received header text.
#include <cstddef>
#include <cstdint>
#include <string>

#include "check.h"
#include "http/httpheaders.h"
#include "http/httptext.h"

using trelvane::http::HTTPHeaders;
using trelvane::http::InStr;
using trelvane::http::SplitFields;
using trelvane::http::Trim;

namespace {

// The line end a header may have been cut at: the three a server uses, or any
// one byte, chosen by the first byte of the input.
std::string lineEndOf(const uint8_t* data, std::size_t size, std::size_t& used) {
  used = 1;
  switch (data[0] % 4) {
    case 0: return "\r\n";
    case 1: return "\n";
    case 2: return "\r";
    default:
      if (size < 2) return "\r\n";
      used = 2;
      return std::string(1, static_cast<char>(data[1]));
  }
}

bool plainLine(const std::string& s) {
  return s.find('\r') == std::string::npos && s.find('\n') == std::string::npos;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  std::size_t used = 0;
  const std::string eol = lineEndOf(data, size, used);
  const std::string text(reinterpret_cast<const char*>(data + used), size - used);

  HTTPHeaders h;
  h.Parse(text, eol);
  FUZZ_CHECK(h.Field.size() == h.Value.size(), "Field and Value have one upper bound");
  FUZZ_CHECK(h.UBound() >= 0, "element 0 stays");
  FUZZ_CHECK(static_cast<std::size_t>(h.UBound()) <= SplitFields(text, eol).size(),
             "at most one entry per line");
  for (int32_t i = 1; i <= h.UBound(); ++i)
    FUZZ_CHECK(InStr(h.Field[i], eol) == 0, "a name never holds the line end it was cut at");

  if (h.UBound() >= 1) {
    FUZZ_CHECK(h.Get(h.Field[1]) == h.Value[1], "Get finds the first entry of a name");
    HTTPHeaders doubled = h;
    doubled.Combine(doubled);
    FUZZ_CHECK(doubled.UBound() == 2 * h.UBound(), "a list combined with itself doubles once");
    HTTPHeaders less = h;
    less.Remove(h.Field[1]);
    FUZZ_CHECK(less.UBound() == h.UBound() - 1, "Remove takes one entry away");
  }

  // What Data writes reads back the same, where the entries can stand on a
  // line of their own; the closing CR LF adds one empty entry.
  bool writable = true;
  for (int32_t i = 1; i <= h.UBound() && writable; ++i) {
    const std::string& f = h.Field[i];
    const std::string& v = h.Value[i];
    writable = plainLine(f) && plainLine(v) && f.find(':') == std::string::npos &&
               (f.empty() || (f[0] != ' ' && f[0] != '\t')) && v == Trim(v);
  }
  if (writable && h.UBound() >= 1) {
    HTTPHeaders again;
    again.Parse(h.Data(), "\r\n");
    FUZZ_CHECK(again.UBound() == h.UBound() + 1, "Data reads back entry for entry");
    for (int32_t i = 1; i <= h.UBound(); ++i)
      FUZZ_CHECK(again.Field[i] == h.Field[i] && again.Value[i] == h.Value[i],
                 "Data reads back the same names and values");
    FUZZ_CHECK(again.Field.back().empty() && again.Value.back().empty(),
               "the closing line end reads as one empty entry");
  }
  return 0;
}
