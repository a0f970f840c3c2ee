// readers_test.cpp -- the sequence reader, the result reader and the File tab's routes, by scripts of user steps;
// and the fill by the code table against the fill through cleaned lines.
#include <gtest/gtest.h>

#include <memory>

#include "input/panel.h"
#include "input/result_reader.h"
#include "input/sequence_reader.h"
#include "platform/linereader.h"
#include "support/desk.h"

namespace trelvane::testing {
namespace {

// A source whose passes give the texts between "|" in turn, as a file that
// changes between the two passes would; past the last, it is gone.
detail::SequenceSource changing(const std::string& texts) {
  auto passes = std::make_shared<std::vector<std::string>>();
  for (std::size_t at = 0, bar; at <= texts.size(); at = bar + 1)
    passes->push_back(texts.substr(at, (bar = std::min(texts.find('|', at), texts.size())) - at));
  auto next = std::make_shared<std::size_t>(0);
  return {"changing.fa", [passes, next](LineReader& in, std::string& why) {
            if (*next >= passes->size()) return why = "the file does not exist", false;
            in.openMemory((*passes)[(*next)++]);
            return true;
          }};
}

const std::map<std::string, Step> kSteps = {
    {"open", [](Desk& d, const std::string& v, std::ostream&) {
       const std::string route = v.substr(0, v.find(' ')), name = v.substr(v.find(' ') + 1);
       const Route r = route == "GBLongDrop" ? Route::GBLongDrop : route == "BevelButton0" ? Route::BevelButton0
                       : route == "GBShortDrop" ? Route::GBShortDrop : Route::BevelButton1;
       openFile(d.st, d.form, r, name == "-" ? std::nullopt : std::optional(d.path(name)), d.graph);
     }},
    {"litlongue", [](Desk& d, const std::string&, std::ostream&) { litlongue(d.st, d.form); }},
    {"litshort", [](Desk& d, const std::string&, std::ostream&) { litshort(d.st, d.form); }},
    {"litprevious", [](Desk& d, const std::string& v, std::ostream&) {
       litprevious(d.st, d.form, v == "-" ? std::nullopt : std::optional(d.path(v)), d.graph);
     }},
    {"formatseq", [](Desk& d, const std::string& v, std::ostream& out) { show(out, formatseq(d.st, v)); }},
    {"CBCPG_Action", [](Desk& d, const std::string&, std::ostream&) { CBCPG_Action(d.st, d.form); }},
    {"EFAnaFrom_TextChange", [](Desk& d, const std::string&, std::ostream&) { EFAnaFrom_TextChange(d.st, d.form); }},
    {"EFAnaTo_TextChange", [](Desk& d, const std::string&, std::ostream&) { EFAnaTo_TextChange(d.st, d.form); }},
    {"EFWS_LostFocus", [](Desk& d, const std::string&, std::ostream&) { EFWS_LostFocus(d.form); }},
    // the origin of a side, and the record coordinates of run positions 1, 2 and the last
    {"origin", [](Desk& d, const std::string& v, std::ostream& out) {
       const SequenceOrigin& o = d.st.origin[std::stoi(v)];
       const int64_t n = v == "0" ? d.st.nbbases : d.st.nbbases1;
       std::string at;
       for (int64_t p : {int64_t{1}, int64_t{2}, n}) {
         const std::optional<int64_t> r = recordPosition(o, p);
         at += " " + std::to_string(p) + ">" + (r ? std::to_string(*r) : "-");
       }
       show(out, originText(o) + (o.wholeFile ? " whole" : "") + " |" + at + " | " + originLabel(o));
     }},
    {"m2", [](Desk& d, const std::string& v, std::ostream&) { (d.st.m2 = MemoryBlock(std::stoi(v))).set(0, 77); }},
    // the longest side read from a source of changing passes, at most LIMIT characters
    {"passes", [](Desk& d, const std::string& v, std::ostream&) {
       const std::size_t space = v.find(' ');
       detail::readSequence(d.st, d.form, 0, changing(v.substr(space + 1)), std::stoll(v.substr(0, space)));
     }},
};

class Readers : public ::testing::TestWithParam<cases::Case> {};

TEST_P(Readers, GiveTheirTranscript) { cases::expectTranscript(GetParam(), runDesk(GetParam(), kSteps), false); }

INSTANTIATE_TEST_SUITE_P(, Readers, ::testing::ValuesIn(cases::readCases(TRELVANE_TEST_DATA "/input/readers.cases")),
                         cases::caseName);

// Records and regions of FASTA files, plain or compressed, and what is refused.
INSTANTIATE_TEST_SUITE_P(Region, Readers, ::testing::ValuesIn(cases::readCases(TRELVANE_TEST_DATA "/input/regions.cases")),
                         cases::caseName);

// The rows of bad files of docs/robustness.md: what the user sees, and what is kept.
INSTANTIATE_TEST_SUITE_P(BadFile, Readers, ::testing::ValuesIn(cases::readCases(TRELVANE_TEST_DATA "/input/bad_files.cases")),
                         cases::caseName);

// What a reading of bytes leaves of the longest side, with the options of
// bits 0 to 2; lineByLine makes the reader clean each line whole, the way
// formatseq does, through an entry of two letters for a byte no input holds.
std::string readWith(const std::string& bytes, unsigned options, bool lineByLine) {
  ComparisonState st;
  st.open();
  if (lineByLine) st.cara['#'] = "AC";
  Form form;
  form.Comp0 = options & 1, form.Reverse0 = options & 2, form.CBRemoveN0 = options & 4;
  detail::readSequence(st, form, 0, changing(bytes + "|" + bytes));
  return std::to_string(st.nbbases) + " " + fieldText(st.basesfreq) + " " +
         std::string(reinterpret_cast<const char*>(st.m0.data()), static_cast<std::size_t>(st.m0.size()));
}

// Lines of letters of every kind, N runs, U, titles, blanks, digits, high
// bytes and all three line ends, from a fixed generator.
TEST(SequenceFill, CodeTableGivesTheBytesOfTheCleanedLinesForEveryOption) {
  static const std::string alphabet = "ACGTacgtNnNNUu -0>%\r\n\n\x80\xffRYk";
  for (uint32_t seed = 1; seed <= 40; ++seed) {
    std::string bytes;
    for (uint32_t x = seed, i = 0; i < 50 + 37 * seed; ++i) x = x * 1664525u + 1013904223u, bytes += alphabet[(x >> 8) % alphabet.size()];
    for (unsigned options = 0; options < 8; ++options)
      ASSERT_EQ(readWith(bytes, options, false), readWith(bytes, options, true)) << seed << " " << options;
  }
  // Reverse and Remove Ns together leave the removed count of zero bytes at the front
  const std::string reversed = readWith("ANNCG", 6, true);
  EXPECT_EQ(reversed.substr(0, 2) + reversed.substr(reversed.size() - 105, 5), std::string("3 \0\0\4\3\1", 7));
}

}  // namespace
}  // namespace trelvane::testing
