// sequence_reader_test.cpp -- formatseq, litlongue and litshort on real files.
#include "input/sequence_reader.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "platform/linereader.h"
#include "temp_files.h"

using namespace trelvane;
using trelvane::testing::TempDir;

namespace {

// The first n codes of a block, or the five counts of a side, as digits.
std::string codes(const MemoryBlock& m, std::ptrdiff_t n) {
  std::string out;
  for (std::ptrdiff_t i = 0; i < n; ++i) out += std::to_string(m.get(i));
  return out;
}
std::string freq(const ComparisonState& st, int side) {
  std::string out;
  for (int c = 0; c < 5; ++c) out += std::to_string(st.basesfreq[c][side]) + (c < 4 ? " " : "");
  return out;
}

// A source whose passes give the texts in turn, as a file that changes
// between the two passes would.
detail::SequenceSource changingSource(std::vector<std::string> passes) {
  auto next = std::make_shared<std::size_t>(0);
  return {"changing.fa", [passes, next](LineReader& in, std::string& why) {
            if (*next >= passes.size()) return why = "the file does not exist", false;
            in.openMemory(passes[(*next)++]);
            return true;
          }};
}

class SequenceReader : public ::testing::Test {
 protected:
  SequenceReader() { st.open(); }
  void readLong(const std::string& bytes) { st.f[0] = dir.write("long.fa", bytes), litlongue(st, form); }
  void readShort(const std::string& bytes) { st.f[1] = dir.write("short.fa", bytes), litshort(st, form); }

  TempDir dir;
  ComparisonState st;
  Form form;
};

TEST_F(SequenceReader, FormatseqDropsTitlesAndEverythingWithoutAnEntry) {
  EXPECT_EQ(formatseq(st, "ACGT"), "");  // a new window's cara is empty
  readLong("A");
  const std::pair<std::string, std::string> rows[] = {
      {"acgu", "ACGU"}, {">ACGT", ""}, {"%ACGT", ""}, {"", ""}, {" >abc", "AC"}, {"nN", "NN"},
      {"ACGT 123 acgt\t-*RYKMSWBDHVX\x01\x80\xc3\xa9\xff", "ACGTACGT"}};
  for (const auto& [line, want] : rows) EXPECT_EQ(formatseq(st, line), want) << line;
}

const std::string highBytes = [] {
  std::string line = "ACGT 123 acgt";
  for (int b = 128; b < 256; ++b) line.push_back(static_cast<char>(b));
  return line + "\n";
}();

// Options C(omplement), R(everse), N (remove Ns) of the longest side.
const struct {
  const char *name, *options, *bytes;
  int nbbases, size;
  const char *codes, *freq;
  const char* remark = "";  // what the message adds on a file that is no DNA
} reads[] = {
    {"lower case folded, U no T", "", "acgu\n", 4, 104, "13400", "1 1 0 1 1"},
    {"complement", "C", "acgu\n", 4, 104, "24310", "0 1 1 1 1"},
    {"Ns kept", "", "NNAC\n", 4, 104, "00130", "2 1 0 1 0"},
    {"remove Ns closes up", "N", "NNAC\n", 2, 104, "130", "0 1 0 1 0"},
    {"remove Ns keeps U", "N", "AnUN\n", 2, 104, "100", "1 1 0 0 0"},
    {"reverse fills from the back", "R", ">t\nACG\nTN\n", 5, 105, "024310", "1 1 1 1 1"},
    {"reverse complement", "CR", "AACG\n", 4, 104, "34220", "0 0 2 1 1"},
    {"reverse, removed Ns lead", "RN", "ANNCG\n", 3, 105, "004310", "0 1 0 1 1"},
    {"LF", "", ">x\nACGT\nTTGA\n\nCC\n", 10, 112, "13422241330", "0 2 3 3 2"},
    {"CRLF", "", ">x\r\nACGT\r\nTTGA\r\n\r\nCC\r\n", 10, 112, "13422241330", "0 2 3 3 2"},
    {"CR", "", ">x\rACGT\rTTGA\r\rCC\r", 10, 112, "13422241330", "0 2 3 3 2"},
    {"no last line end", "", ">x\nACGT\nTTGA\n\nCC", 10, 112, "13422241330", "0 2 3 3 2"},
    {"titles, blanks, digits sized", "", ">ab\r\n1 ac\r\n", 2, 107, "130", "0 1 0 1 0"},
    {"empty file", "", "", 0, 100, "0", "0 0 0 0 0"},
    {"titles only", "", ">only a title\n%another\n", 0, 121, "0", "0 0 0 0 0"},
    {"records joined", "", ">one\nAC\n>two\nGT\n%three\nN\n", 5, 119, "134200", "1 1 1 1 1"},
    {"GenBank read as letters", "", "LOCUS       X\nORIGIN\n        1 acgtt\n//\n", 9, 136, "3040134220", "2 1 2 2 2",
     "; the file looks like a protein sequence or another format, not DNA: 9 of its 17 letters are not A, C, G, T or N"},
    {"high bytes vanish", "", highBytes.c_str(), 8, 241, "134213420", "0 2 2 2 2"},
};

TEST_F(SequenceReader, ReadsLongestSideWithItsOptions) {
  for (const auto& r : reads) {
    SCOPED_TRACE(r.name);
    const std::string o = r.options;
    form.Comp0 = o.find('C') != o.npos, form.Reverse0 = o.find('R') != o.npos;
    form.CBRemoveN0 = o.find('N') != o.npos;
    st.basesfreq[1][0] = 7;
    readLong(r.bytes);
    EXPECT_EQ(st.nbbases, r.nbbases);
    EXPECT_EQ(st.m0.size(), r.size);
    EXPECT_EQ(codes(st.m0, std::string(r.codes).size()), r.codes);
    EXPECT_EQ(freq(st, 0), r.freq);
    EXPECT_EQ(form.Message, "Long sequence read " + std::to_string(r.nbbases) + " bases" + r.remark);
    EXPECT_EQ(formatseq(st, "N"), form.CBRemoveN0 ? "" : "N");  // N entries of each read's own
  }
}

TEST_F(SequenceReader, OneLineOfTenMegabases) {
  const int32_t n = 10'000'000;
  std::string line(n, 'A');
  for (int32_t i = 0; i < n; ++i) line[i] = "ACGT"[i % 4];
  readLong(line);
  EXPECT_EQ(st.nbbases, n);
  EXPECT_EQ(st.m0.size(), n + 100);
  EXPECT_EQ(freq(st, 0), "0 2500000 2500000 2500000 2500000");
  EXPECT_EQ(codes(st.m0, 4), "1342");
  EXPECT_EQ(st.m0.get(n - 1), kT);
  EXPECT_EQ(st.m0.get(n), 0);
}

TEST_F(SequenceReader, SidesSetTheResamplingsAndClipTheWindowSize) {
  readLong(std::string(1000, 'A'));
  EXPECT_EQ(form.EFSD, "970");
  form.EFWS = "12.5";
  readLong(std::string(1000, 'A'));
  EXPECT_EQ(form.EFSD, "987.5");
  EXPECT_EQ(form.EFWS, "12.5");  // no clip on the longest side
  form.EFWS = "30";
  readShort(std::string(40, 'C'));
  EXPECT_EQ(form.EFWS, "30");
  readShort(std::string(12, 'C'));
  EXPECT_EQ(form.EFWS, "12");
  EXPECT_EQ(form.Message, "Short sequence read 12 bases");
  EXPECT_EQ(form.EFSD, "987.5");  // only litlongue writes it
}

TEST_F(SequenceReader, EachSideUsesOnlyItsOwnOptions) {
  form.Comp0 = form.Reverse0 = form.CBRemoveN0 = true;
  readLong("ACNGT\n");
  readShort("ACNG\n");
  EXPECT_EQ(codes(st.m1, 4), "1304");
  EXPECT_EQ(freq(st, 1), "1 1 0 1 1");
  EXPECT_EQ(freq(st, 0), "0 1 1 1 1");
  form.Comp1 = true;
  readShort("ACNG\n");
  EXPECT_EQ(codes(st.m1, 4), "2403");
}

TEST_F(SequenceReader, SideOfTheWrongLengthIsRefusedKeepingWhatWasRead) {
  readShort("ACGTACGTAC");
  const std::string shortFile = *st.f[1];
  readLong("ACGTA");
  EXPECT_EQ(form.Message, "Long sequence shorter than short sequence !");
  EXPECT_FALSE(st.f[0]);
  EXPECT_EQ(st.f[1], shortFile);
  EXPECT_EQ(codes(st.m0, 5), "13421");
  EXPECT_EQ(form.EFWS, "10");  // clipped by the short side
  EXPECT_EQ(form.EFSD, "-5");
  readLong("ACGTACGTAC");  // equal lengths pass
  EXPECT_EQ(form.Message, "Long sequence read 10 bases");
  EXPECT_TRUE(st.f[0]);

  form.EFWS = "30";
  readShort("ACGTACGTACGT");
  EXPECT_EQ(form.Message, "short sequence longer than long sequence !");
  EXPECT_FALSE(st.f[1]);
  EXPECT_EQ(st.nbbases1, 12);
  EXPECT_EQ(form.EFWS, "12");  // written before the check

  st.f[1].reset();  // a side without file is not compared: nbbases1 stays 12
  readLong("AC");
  EXPECT_EQ(form.Message, "Long sequence read 2 bases");
}

TEST_F(SequenceReader, UnreadableFileChangesNothing) {
  readLong("ACGTACGT");
  readShort("ACG");
  form.EFSD = "55";
  const std::string before = codes(st.m0, st.m0.size());
  st.f[0] = (dir.path() / "missing.fa").string();
  litlongue(st, form);
  EXPECT_EQ(form.Message, "Cannot read missing.fa: the file does not exist");
  EXPECT_EQ(st.f[0], (dir.path() / "missing.fa").string());
  EXPECT_EQ(codes(st.m0, st.m0.size()), before);
  EXPECT_EQ(freq(st, 0), "0 2 2 2 2");
  EXPECT_EQ(form.EFSD, "55");

  std::filesystem::create_directory(dir.path() / "folder.fa");
  st.f[1] = (dir.path() / "folder.fa").string();
  litshort(st, form);
  EXPECT_EQ(form.Message, "Cannot read folder.fa: it is a folder, not a file");
  EXPECT_EQ(freq(st, 1), "0 1 0 1 1");
  EXPECT_EQ(form.EFWS, "3");

  st.f[0].reset();
  litlongue(st, form);
  EXPECT_EQ(form.Message, "Cannot read the sequence: no file is chosen");
  EXPECT_EQ(st.nbbases, 8);
}

TEST_F(SequenceReader, FileChangingBetweenPassesIsCutAtTheBlock) {
  const struct {
    bool reverse;
    std::vector<std::string> passes;
    int nbbases;
    const char *codes, *freq;
  } rows[] = {{false, {"AC\n", "GGTTAA\nCC\n"}, 2, "4400", "0 0 0 0 2"},
              {true, {"AC\n", "GTAA\n"}, 2, "240", "0 0 1 0 1"},
              {true, {"ACGT\n", "A\n"}, 1, "0001", "0 1 0 0 0"}};
  for (const auto& r : rows) {
    form.Reverse0 = r.reverse;
    detail::readSequence(st, form, 0, changingSource(r.passes));
    EXPECT_EQ(st.nbbases, r.nbbases);
    EXPECT_EQ(st.m0.size(), std::ptrdiff_t(r.passes[0].size()) - 1 + 100);
    EXPECT_EQ(codes(st.m0, std::string(r.codes).size()), r.codes);
    EXPECT_EQ(freq(st, 0), r.freq);
  }
  detail::readSequence(st, form, 0, changingSource({"GGGGGG\n"}));  // gone at the second pass
  EXPECT_EQ(form.Message, "Cannot read changing.fa: the file does not exist");
  EXPECT_EQ(st.nbbases, 1);
}

TEST_F(SequenceReader, SequenceBeyondTheCountLimitIsRefused) {
  readLong("ACGT");
  detail::readSequence(st, form, 0, changingSource({"ACGTAC\nGT\n", "ACGTAC\nGT\n"}), 7);
  EXPECT_EQ(form.Message, "Cannot read changing.fa: the sequence is too long (more than 7 characters)");
  EXPECT_EQ(st.nbbases, 4);
  EXPECT_EQ(st.m0.size(), 104);
  detail::readSequence(st, form, 0, changingSource({"ACGTAC\nG\n", "ACGTAC\nG\n"}), 7);
  EXPECT_EQ(st.nbbases, 7);
}

}  // namespace
