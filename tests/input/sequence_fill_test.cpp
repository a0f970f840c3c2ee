// sequence_fill_test.cpp -- the fill of a sequence by its code table against the fill through the cleaned lines.
#include <gtest/gtest.h>

#include <string>

#include "input/sequence_reader.h"
#include "platform/linereader.h"

using namespace trelvane;

namespace {

// What a reading leaves of the side.
struct Read {
  int32_t nbbases = 0;
  std::string m0;  // every byte of the block
  int32_t freq[5] = {};
};

// Reads bytes as side 0 with the options of bits 0 to 2, from memory.
Read readWith(const std::string& bytes, unsigned options, bool lineByLine) {
  ComparisonState st;
  st.open();
  // An entry of two letters makes the reader clean each line whole, the way
  // formatseq does; no input below holds its byte.
  if (lineByLine) st.cara['#'] = "AC";
  Form form;
  form.Comp0 = options & 1;
  form.Reverse0 = options & 2;
  form.CBRemoveN0 = options & 4;
  st.f[0] = "mem.fa";
  detail::SequenceSource source{"mem.fa", [&bytes](LineReader& in, std::string&) {
                                  in.openMemory(bytes);
                                  return true;
                                }};
  detail::readSequence(st, form, 0, source);
  Read r;
  r.nbbases = st.nbbases;
  for (std::ptrdiff_t i = 0; i < st.m0.size(); ++i) r.m0.push_back(static_cast<char>(st.m0.get(i)));
  for (int c = 0; c < 5; ++c) r.freq[c] = st.basesfreq[c][0];
  return r;
}

// Lines of letters of every kind, N runs, U, title lines, blanks, digits,
// high bytes and all three line ends, from a fixed generator.
std::string sequenceLike(uint32_t seed, int n) {
  static const std::string alphabet = "ACGTacgtNnNNUu -0>%\r\n\n\x80\xffRYk";
  std::string s;
  for (int i = 0; i < n; ++i) {
    seed = seed * 1664525u + 1013904223u;
    s.push_back(alphabet[(seed >> 8) % alphabet.size()]);
  }
  return s;
}

TEST(SequenceFill, CodeTableGivesTheBytesOfTheCleanedLinesForEveryOption) {
  for (uint32_t seed = 1; seed <= 40; ++seed) {
    const std::string bytes = sequenceLike(seed, 50 + 37 * static_cast<int>(seed));
    for (unsigned options = 0; options < 8; ++options) {
      const Read fast = readWith(bytes, options, false);
      const Read slow = readWith(bytes, options, true);
      ASSERT_GT(fast.nbbases, 0) << seed;
      ASSERT_EQ(fast.nbbases, slow.nbbases) << seed << " " << options;
      ASSERT_EQ(fast.m0, slow.m0) << seed << " " << options;
      for (int c = 0; c < 5; ++c) ASSERT_EQ(fast.freq[c], slow.freq[c]) << seed << " " << options;
    }
  }
}

// The case that the reader's rules single out: Reverse and Remove Ns
// together leave k zero bytes at the front of the block.
TEST(SequenceFill, ReverseWithRemovedNsKeepsItsLeadingZeros) {
  for (bool lineByLine : {false, true}) {
    const Read r = readWith("ANNCG", 2 | 4, lineByLine);
    EXPECT_EQ(r.nbbases, 3);
    EXPECT_EQ(r.m0.substr(0, 5), std::string({0, 0, kG, kC, kA}));
  }
}

}  // namespace
