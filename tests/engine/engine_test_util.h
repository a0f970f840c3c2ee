// engine_test_util.h -- comparison states from letters or FASTA files, and a recording run host.
#pragma once

#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "engine/run.h"
#include "engine/state.h"

namespace trelvane::testing {

inline uint8_t codeOf(char c) {
  switch (c) {
    case 'A': return kA;
    case 'T': return kT;
    case 'C': return kC;
    case 'G': return kG;
    default: return kN;
  }
}

// A sequence block as the readers leave it: one code a base, 100 zero bytes behind.
inline MemoryBlock blockOf(std::string_view letters) {
  MemoryBlock m(static_cast<std::ptrdiff_t>(letters.size()) + 100);
  for (std::size_t k = 0; k < letters.size(); ++k) m.set(static_cast<std::ptrdiff_t>(k), codeOf(letters[k]));
  return m;
}

inline void setLong(ComparisonState& st, std::string_view letters) {
  st.m0 = blockOf(letters);
  st.nbbases = static_cast<int32_t>(letters.size());
  for (auto& row : st.basesfreq) row[0] = 0;
  for (char c : letters) ++st.basesfreq[codeOf(c)][0];
}

inline void setShort(ComparisonState& st, std::string_view letters) {
  st.m1 = blockOf(letters);
  st.nbbases1 = static_cast<int32_t>(letters.size());
  for (auto& row : st.basesfreq) row[1] = 0;
  for (char c : letters) ++st.basesfreq[codeOf(c)][1];
}

// A plain upper-case FASTA file as letters: title lines skipped, line ends
// dropped; optionally reversed and complemented as the reader's options do.
inline std::string readFasta(const std::string& path, bool reverse = false, bool complement = false) {
  std::ifstream in(path, std::ios::binary);
  std::string line, letters;
  while (std::getline(in, line)) {
    if (!line.empty() && (line[0] == '>' || line[0] == '%')) continue;
    for (char c : line)
      if (c != '\r') letters += c;
  }
  if (complement)
    for (char& c : letters) c = c == 'A' ? 'T' : c == 'T' ? 'A' : c == 'C' ? 'G' : c == 'G' ? 'C' : c;
  if (reverse) letters.assign(letters.rbegin(), letters.rend());
  return letters;
}

inline std::string readBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream out;
  out << in.rdbuf();
  return out.str();
}

// A fresh window's state with both sequences.
inline void openWith(ComparisonState& st, std::string_view longLetters, std::string_view shortLetters) {
  st.open();
  setLong(st, longLetters);
  setShort(st, shortLetters);
}

// Records what a run tells its window; doEvents can ask for a stop after k calls.
class RecordingHost : public RunHost {
 public:
  explicit RecordingHost(ComparisonState& st, int stopAfter = -1) : st_(st), stopAfter_(stopAfter) {}

  void message(const std::string& text) override { messages.push_back(text); }
  void progress(int value, int maximum) override {
    progressValues.push_back(value);
    lastMaximum = maximum;
  }
  void doEvents() override {
    ++doEventsCalls;
    if (stopAfter_ >= 0 && doEventsCalls >= stopAfter_) st_.askclose = true;
  }
  void setEFAnaTo(const std::string& text) override { efAnaTo.push_back(text); }
  void setClipboard(const std::string& text) override {
    clipboard = text;
    ++clipboardCalls;
  }
  void beep() override { ++beeps; }

  std::vector<std::string> messages;
  std::vector<int> progressValues;
  int lastMaximum = 0;
  int doEventsCalls = 0;
  std::vector<std::string> efAnaTo;
  std::string clipboard;
  int clipboardCalls = 0;
  int beeps = 0;

 private:
  ComparisonState& st_;
  int stopAfter_;
};

// The rows of a clipboard text: what follows the "#" line.
inline std::string rowsOf(const std::string& clipboard) {
  std::size_t hash = clipboard.find("\n#\n");
  return hash == std::string::npos ? std::string() : clipboard.substr(hash + 3);
}

// Splits a text into lines without their line ends.
inline std::vector<std::string> linesOf(std::string_view text) {
  std::vector<std::string> out;
  std::size_t start = 0;
  while (start < text.size()) {
    std::size_t end = text.find('\n', start);
    if (end == std::string_view::npos) end = text.size();
    out.emplace_back(text.substr(start, end - start));
    start = end + 1;
  }
  return out;
}

}  // namespace trelvane::testing
