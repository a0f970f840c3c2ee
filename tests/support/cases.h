// cases.h -- table cases kept in data files: a name, why, inputs, and the transcript they must give.
//
// A case file holds cases one after the other:
//   == Name: why this case is here, in one line
//   key value           inputs, in order; a key may come again (a script)
//   --
//   the expected transcript, up to the next "== " line
// Lines starting with "#" before the "--" are comments. Values and transcripts
// are bytes as text: "\xHH" for a control or high byte (a tab stays a tab), "\\"
// for a backslash, "\n" in a value for a line end. One empty line before the
// next case only separates it.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace trelvane::cases {

struct Case {
  std::string name, why;
  std::vector<std::pair<std::string, std::string>> in;  // unescaped values
  std::string expected;
  // The value of the last input of that key, or fallback.
  std::string get(const std::string& key, const std::string& fallback = "") const {
    for (auto it = in.rbegin(); it != in.rend(); ++it)
      if (it->first == key) return it->second;
    return fallback;
  }
  bool has(const std::string& key) const { return get(key, "\x01") != "\x01"; }
};

// lineEnds: "\x0a" for a line end too, for a text that stands in one line.
inline std::string escaped(std::string_view bytes, bool lineEnds = false) {
  static const char hex[] = "0123456789abcdef";
  std::string out;
  for (unsigned char c : bytes) {
    if (c == '\\') out += "\\\\";
    else if ((c < 0x20 && c != '\t' && (c != '\n' || lineEnds)) || c >= 0x7f) out += {'\\', 'x', hex[c >> 4], hex[c & 15]};
    else out += static_cast<char>(c);
  }
  return out;
}

inline std::string unescaped(std::string_view text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char next = i + 1 < text.size() ? text[i + 1] : 0;
    if (text[i] != '\\' || !next) {
      out += text[i];
    } else if (next == 'x' && i + 3 < text.size()) {
      out += static_cast<char>(std::stoi(std::string(text.substr(i + 2, 2)), nullptr, 16));
      i += 3;
    } else {
      out += next == 'n' ? '\n' : next == 'r' ? '\r' : next == 't' ? '\t' : next;
      ++i;
    }
  }
  return out;
}

// Numbers (bytes, say), a run of one value as "value*count".
template <class T>
std::string bytesText(const T* p, std::size_t n) {
  std::string out;
  for (std::size_t i = 0, j; i < n; i = j) {
    for (j = i + 1; j < n && p[j] == p[i];) ++j;
    out += (out.empty() ? "" : " ") + std::to_string(p[i]) + (j - i > 1 ? "*" + std::to_string(j - i) : "");
  }
  return out;
}

// Letters from pieces: "ACG*3" (ACGACGACG), "rand:N:SEED" (N bases of a
// fixed generator), "long:FROM:LEN" (a stretch of the letters given as lg).
inline std::string pieces(const std::string& written, const std::string& lg = "") {
  std::istringstream in(written);
  std::string out, piece;
  while (in >> piece) {
    int a = 0, b = 0;
    if (std::sscanf(piece.c_str(), "rand:%d:%d", &a, &b) == 2) {
      for (uint32_t x = static_cast<uint32_t>(b); a-- > 0;) x = x * 1664525u + 1013904223u, out += "ACGT"[(x >> 16) & 3];
    } else if (std::sscanf(piece.c_str(), "long:%d:%d", &a, &b) == 2) {
      out += lg.substr(static_cast<std::size_t>(a), static_cast<std::size_t>(b));
    } else {
      const std::size_t star = piece.find('*');
      for (int n = star == std::string::npos ? 1 : std::stoi(piece.substr(star + 1)); n-- > 0;) out += piece.substr(0, star);
    }
  }
  return out;
}

// Every case of a file; a file that cannot be read gives one case that says so.
inline std::vector<Case> readCases(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::vector<Case> out;
  std::string line;
  bool expecting = false;
  while (std::getline(in, line)) {
    if (line.rfind("== ", 0) == 0) {
      if (!out.empty() && out.back().expected.size() > 1 && out.back().expected.ends_with("\n\n"))
        out.back().expected.pop_back();
      const std::size_t colon = line.find(':');
      out.push_back({line.substr(3, colon - 3), colon == std::string::npos ? "" : line.substr(colon + 2), {}, {}});
      expecting = false;
    } else if (out.empty()) {
      continue;
    } else if (expecting) {
      out.back().expected += line + "\n";
    } else if (line == "--") {
      expecting = true;
    } else if (!line.empty() && line[0] != '#') {
      const std::size_t space = line.find(' ');
      out.back().in.emplace_back(line.substr(0, space), space == std::string::npos ? "" : unescaped(line.substr(space + 1)));
    }
  }
  if (!out.empty() && out.back().expected.ends_with("\n\n")) out.back().expected.pop_back();
  if (out.empty()) out.push_back({"NoCaseIn_" + std::to_string(path.size()), "no case could be read from " + path, {}, "?"});
  return out;
}

inline void PrintTo(const Case& c, std::ostream* os) { *os << c.name; }

inline std::string caseName(const ::testing::TestParamInfo<Case>& info) { return info.param.name; }

// The transcript of a case against its expectation; a mismatch shows both,
// and a case without an expectation prints its transcript to be checked and
// copied in. escape: the transcript is bytes, not text of this form already.
inline void expectTranscript(const Case& c, const std::string& transcript, bool escape = true) {
  SCOPED_TRACE(c.name + ": " + c.why);
  const std::string text = escape ? escaped(transcript) : transcript;
  EXPECT_EQ(text, c.expected);
  if (c.expected.empty()) std::printf("<<<%s\n%s>>>\n", c.name.c_str(), text.c_str());
}

}  // namespace trelvane::cases
