// sequence_reader_test.cpp -- formatseq, litlongue and litshort on real files.
#include "input/sequence_reader.h"

#include <gtest/gtest.h>

#include <vector>

#include "platform/linereader.h"
#include "temp_files.h"

using namespace trelvane;
using trelvane::testing::TempDir;

namespace {

std::vector<int> codes(const MemoryBlock& m, std::ptrdiff_t n) {
  std::vector<int> out;
  for (std::ptrdiff_t i = 0; i < n; ++i) out.push_back(m.get(i));
  return out;
}

std::vector<int> freq(const ComparisonState& st, int side) {
  std::vector<int> out;
  for (int c = 0; c < 5; ++c) out.push_back(st.basesfreq[c][side]);
  return out;
}

class SequenceReader : public ::testing::Test {
 protected:
  SequenceReader() { st.open(); }

  void readLong(const std::string& bytes, const std::string& name = "long.fa") {
    st.f[0] = dir.write(name, bytes);
    litlongue(st, form);
  }
  void readShort(const std::string& bytes, const std::string& name = "short.fa") {
    st.f[1] = dir.write(name, bytes);
    litshort(st, form);
  }

  TempDir dir;
  ComparisonState st;
  Form form;
};

}  // namespace

TEST_F(SequenceReader, FormatseqDropsTitlesAndEverythingWithoutAnEntry) {
  EXPECT_EQ(formatseq(st, "ACGT"), "");  // a new window's cara is empty
  readLong("A");
  EXPECT_EQ(formatseq(st, "acgu"), "ACGU");
  EXPECT_EQ(formatseq(st, ">ACGT"), "");
  EXPECT_EQ(formatseq(st, "%ACGT"), "");
  EXPECT_EQ(formatseq(st, ""), "");
  EXPECT_EQ(formatseq(st, " >abc"), "AC");
  EXPECT_EQ(formatseq(st, "ACGT 123 acgt\t-*RYKMSWBDHVX\x01\x80\xc3\xa9\xff"), "ACGTACGT");
  EXPECT_EQ(formatseq(st, "nN"), "NN");
}

TEST_F(SequenceReader, LowerCaseIsFoldedAndUracilIsNoThymine) {
  readLong("acgu\n");
  EXPECT_EQ(st.nbbases, 4);
  EXPECT_EQ(codes(st.m0, 4), (std::vector<int>{1, 3, 4, 0}));
  EXPECT_EQ(freq(st, 0), (std::vector<int>{1, 1, 0, 1, 1}));

  form.Comp0 = true;
  readLong("acgu\n");
  EXPECT_EQ(codes(st.m0, 4), (std::vector<int>{2, 4, 3, 1}));
  EXPECT_EQ(freq(st, 0), (std::vector<int>{0, 1, 1, 1, 1}));
}

TEST_F(SequenceReader, RemoveNsClosesUpButKeepsUracil) {
  form.CBRemoveN0 = true;
  readLong("NNAC\n");
  EXPECT_EQ(st.nbbases, 2);
  EXPECT_EQ(codes(st.m0, 3), (std::vector<int>{1, 3, 0}));
  EXPECT_EQ(st.basesfreq[0][0], 0);

  readLong("AnUN\n");
  EXPECT_EQ(codes(st.m0, 2), (std::vector<int>{1, 0}));
  EXPECT_EQ(st.basesfreq[0][0], 1);

  form.CBRemoveN0 = false;
  readLong("NNAC\n");
  EXPECT_EQ(st.nbbases, 4);
  EXPECT_EQ(codes(st.m0, 4), (std::vector<int>{0, 0, 1, 3}));
  EXPECT_EQ(st.basesfreq[0][0], 2);
}

TEST_F(SequenceReader, ReverseFillsFromTheBack) {
  form.Reverse0 = true;
  readLong(">t\nACG\nTN\n");
  EXPECT_EQ(st.m0.size(), 5 + 100);
  EXPECT_EQ(codes(st.m0, 6), (std::vector<int>{0, 2, 4, 3, 1, 0}));

  form.Comp0 = true;  // reverse complement
  readLong("AACG\n");
  EXPECT_EQ(codes(st.m0, 4), (std::vector<int>{3, 4, 2, 2}));
}

TEST_F(SequenceReader, ReverseWithRemoveNsLeavesTheRemovedNsAsLeadingZeros) {
  form.Reverse0 = true;
  form.CBRemoveN0 = true;
  readLong("ANNCG\n");
  EXPECT_EQ(st.nbbases, 3);
  EXPECT_EQ(st.m0.size(), 5 + 100);
  EXPECT_EQ(codes(st.m0, 5), (std::vector<int>{0, 0, 4, 3, 1}));
  EXPECT_EQ(freq(st, 0), (std::vector<int>{0, 1, 0, 1, 1}));
  // The next read with Remove Ns off uses N entries of its own.
  EXPECT_EQ(formatseq(st, "N"), "");
}

TEST_F(SequenceReader, LineEndsGiveIdenticalBuffers) {
  readLong(">x\nACGT\nTTGA\n\nCC\n");
  const auto want = codes(st.m0, st.m0.size());
  const int32_t n = st.nbbases;
  EXPECT_EQ(n, 10);
  for (const char* text : {">x\r\nACGT\r\nTTGA\r\n\r\nCC\r\n", ">x\rACGT\rTTGA\r\rCC\r",
                           ">x\nACGT\nTTGA\n\nCC"}) {
    SCOPED_TRACE(text);
    readLong(text);
    EXPECT_EQ(st.nbbases, n);
    EXPECT_EQ(codes(st.m0, st.m0.size()), want);
  }
}

TEST_F(SequenceReader, BufferIsSizedByRawLineLengthsWithReverseOff) {
  // Title line, blanks and digits count towards the size, line ends do not.
  readLong(">ab\r\n1 ac\r\n");
  EXPECT_EQ(st.nbbases, 2);
  EXPECT_EQ(st.m0.size(), 3 + 4 + 100);
}

TEST_F(SequenceReader, EmptyFileAndTitlesOnlyGiveNoBases) {
  for (const char* text : {"", ">only a title\n%another\n"}) {
    SCOPED_TRACE(text);
    st.basesfreq[1][0] = 7;
    readLong(text);
    EXPECT_EQ(st.nbbases, 0);
    EXPECT_EQ(freq(st, 0), (std::vector<int>(5, 0)));
    EXPECT_EQ(form.Message, "Long sequence read 0 bases");
  }
  readLong("");
  EXPECT_EQ(st.m0.size(), 100);
}

TEST_F(SequenceReader, RecordsAreJoinedAcrossTitleLines) {
  readLong(">one\nAC\n>two\nGT\n%three\nN\n");
  EXPECT_EQ(st.nbbases, 5);
  EXPECT_EQ(codes(st.m0, 5), (std::vector<int>{1, 3, 4, 2, 0}));
}

TEST_F(SequenceReader, OtherFormatsAreReadAsSequence) {
  // ORIGIN gives its G and N; digits, blanks and "//" vanish.
  readLong("LOCUS       X\nORIGIN\n        1 acgtt\n//\n");
  // LOCUS gives C and U, X nothing, ORIGIN gives G and N.
  EXPECT_EQ(st.nbbases, 9);
  EXPECT_EQ(codes(st.m0, 9), (std::vector<int>{3, 0, 4, 0, 1, 3, 4, 2, 2}));
}

TEST_F(SequenceReader, HighBytesVanish) {
  std::string line = "ACGT 123 acgt";
  for (int b = 128; b < 256; ++b) line.push_back(static_cast<char>(b));
  readLong(line + "\n");
  EXPECT_EQ(st.nbbases, 8);
  EXPECT_EQ(codes(st.m0, 9), (std::vector<int>{1, 3, 4, 2, 1, 3, 4, 2, 0}));
}

TEST_F(SequenceReader, OneLineOfTenMegabases) {
  const int32_t n = 10'000'000;
  std::string line;
  line.reserve(n);
  for (int32_t i = 0; i < n; ++i) line.push_back("ACGT"[i % 4]);
  readLong(line);
  EXPECT_EQ(st.nbbases, n);
  EXPECT_EQ(st.m0.size(), n + 100);
  EXPECT_EQ(freq(st, 0), (std::vector<int>{0, n / 4, n / 4, n / 4, n / 4}));
  EXPECT_EQ(codes(st.m0, 4), (std::vector<int>{1, 3, 4, 2}));
  EXPECT_EQ(st.m0.get(n - 1), kT);
  EXPECT_EQ(st.m0.get(n), 0);
  EXPECT_EQ(form.Message, "Long sequence read 10000000 bases");
}

TEST_F(SequenceReader, LongestSequenceSetsResamplingsToWindowPositions) {
  EXPECT_EQ(form.EFSD, "100");
  readLong(std::string(1000, 'A'));
  EXPECT_EQ(form.EFSD, "970");
  form.EFWS = "12.5";
  readLong(std::string(1000, 'A'));
  EXPECT_EQ(form.EFSD, "987.5");
  EXPECT_EQ(form.EFWS, "12.5");  // no clip on the longest side
}

TEST_F(SequenceReader, ShortestSequenceClipsTheWindowSize) {
  readShort(std::string(40, 'C'));
  EXPECT_EQ(form.EFWS, "30");
  readShort(std::string(12, 'C'));
  EXPECT_EQ(form.EFWS, "12");
  EXPECT_EQ(form.Message, "Short sequence read 12 bases");
  EXPECT_EQ(form.EFSD, "100");  // only litlongue writes it
}

TEST_F(SequenceReader, LongSideShorterThanLoadedShortSideIsRefused) {
  readShort("ACGTACGTAC");
  const std::string shortFile = *st.f[1];
  readLong("ACGTA");
  EXPECT_EQ(form.Message, "Long sequence shorter than short sequence !");
  EXPECT_FALSE(st.f[0]);
  EXPECT_EQ(st.f[1], shortFile);
  // What was read stays, and so does the resampling count.
  EXPECT_EQ(st.nbbases, 5);
  EXPECT_EQ(codes(st.m0, 5), (std::vector<int>{1, 3, 4, 2, 1}));
  EXPECT_EQ(form.EFWS, "10");  // clipped by the short side
  EXPECT_EQ(form.EFSD, "-5");

  readLong("ACGTACGTAC");  // equal lengths pass
  EXPECT_EQ(form.Message, "Long sequence read 10 bases");
  EXPECT_TRUE(st.f[0]);
}

TEST_F(SequenceReader, ShortSideLongerThanLoadedLongSideIsRefused) {
  readLong("ACGTA");
  readShort("ACGTACGTACGT");
  EXPECT_EQ(form.Message, "short sequence longer than long sequence !");
  EXPECT_FALSE(st.f[1]);
  EXPECT_TRUE(st.f[0]);
  EXPECT_EQ(st.nbbases1, 12);
  EXPECT_EQ(form.EFWS, "12");  // written before the check
}

TEST_F(SequenceReader, LengthCheckIgnoresASideWithoutFile) {
  readShort("ACGTACGTAC");
  st.f[1].reset();  // a cancelled dialog: nbbases1 stays 10
  readLong("AC");
  EXPECT_EQ(form.Message, "Long sequence read 2 bases");
  EXPECT_TRUE(st.f[0]);
}

TEST_F(SequenceReader, EachSideUsesOnlyItsOwnOptions) {
  form.Comp0 = form.Reverse0 = form.CBRemoveN0 = true;
  readLong("ACNGT\n");
  readShort("ACNG\n");
  EXPECT_EQ(codes(st.m1, 4), (std::vector<int>{1, 3, 0, 4}));
  EXPECT_EQ(freq(st, 1), (std::vector<int>{1, 1, 0, 1, 1}));
  EXPECT_EQ(freq(st, 0), (std::vector<int>{0, 1, 1, 1, 1}));

  form.Comp1 = true;
  readShort("ACNG\n");
  EXPECT_EQ(codes(st.m1, 4), (std::vector<int>{2, 4, 0, 3}));
}

TEST_F(SequenceReader, UnreadableFileChangesNothing) {
  readLong("ACGTACGT");
  const std::string loaded = *st.f[0];
  readShort("ACG");
  form.EFSD = "55";
  const auto before = codes(st.m0, st.m0.size());

  st.f[0] = (dir.path() / "missing.fa").string();
  litlongue(st, form);
  EXPECT_EQ(form.Message, "Cannot read missing.fa: the file does not exist");
  EXPECT_EQ(st.f[0], (dir.path() / "missing.fa").string());
  EXPECT_EQ(st.nbbases, 8);
  EXPECT_EQ(codes(st.m0, st.m0.size()), before);
  EXPECT_EQ(freq(st, 0), (std::vector<int>{0, 2, 2, 2, 2}));
  EXPECT_EQ(form.EFSD, "55");

  std::filesystem::create_directory(dir.path() / "folder.fa");
  st.f[1] = (dir.path() / "folder.fa").string();
  litshort(st, form);
  EXPECT_EQ(form.Message, "Cannot read folder.fa: it is a folder, not a file");
  EXPECT_EQ(st.nbbases1, 3);
  EXPECT_EQ(freq(st, 1), (std::vector<int>{0, 1, 0, 1, 1}));
  EXPECT_EQ(form.EFWS, "3");

  st.f[0].reset();
  litlongue(st, form);
  EXPECT_EQ(form.Message, "Cannot read the sequence: no file is chosen");
  EXPECT_EQ(st.nbbases, 8);
}

namespace {
// A source whose passes give the texts in turn, as a file that changes
// between the two passes would.
detail::SequenceSource changingSource(std::vector<std::string> passes) {
  auto next = std::make_shared<std::size_t>(0);
  return {"changing.fa", [passes, next](LineReader& in, std::string& why) {
            if (*next >= passes.size()) {
              why = "the file does not exist";
              return false;
            }
            in.openMemory(passes[(*next)++]);
            return true;
          }};
}
}  // namespace

TEST_F(SequenceReader, FileGrowingBetweenPassesIsCutAtTheBlock) {
  detail::readSequence(st, form, 0, changingSource({"AC\n", "GGTTAA\nCC\n"}));
  EXPECT_EQ(st.nbbases, 2);
  EXPECT_EQ(st.m0.size(), 2 + 100);
  EXPECT_EQ(codes(st.m0, 4), (std::vector<int>{4, 4, 0, 0}));
  EXPECT_EQ(freq(st, 0), (std::vector<int>{0, 0, 0, 0, 2}));

  form.Reverse0 = true;
  detail::readSequence(st, form, 0, changingSource({"AC\n", "GTAA\n"}));
  EXPECT_EQ(st.nbbases, 2);
  EXPECT_EQ(codes(st.m0, 3), (std::vector<int>{2, 4, 0}));
  EXPECT_EQ(freq(st, 0), (std::vector<int>{0, 0, 1, 0, 1}));
}

TEST_F(SequenceReader, FileShrinkingBetweenPassesOrVanishing) {
  form.Reverse0 = true;
  detail::readSequence(st, form, 0, changingSource({"ACGT\n", "A\n"}));
  EXPECT_EQ(st.nbbases, 1);
  EXPECT_EQ(codes(st.m0, 4), (std::vector<int>{0, 0, 0, 1}));

  detail::readSequence(st, form, 0, changingSource({"GGGGGG\n"}));
  EXPECT_EQ(form.Message, "Cannot read changing.fa: the file does not exist");
  EXPECT_EQ(st.nbbases, 1);
}

TEST_F(SequenceReader, SequenceBeyondTheCountLimitIsRefused) {
  readLong("ACGT");
  detail::readSequence(st, form, 0, changingSource({"ACGTAC\nGT\n", "ACGTAC\nGT\n"}), 7);
  EXPECT_EQ(form.Message,
            "Cannot read changing.fa: the sequence is too long (more than 7 characters)");
  EXPECT_EQ(st.nbbases, 4);
  EXPECT_EQ(st.m0.size(), 104);

  detail::readSequence(st, form, 0, changingSource({"ACGTAC\nG\n", "ACGTAC\nG\n"}), 7);
  EXPECT_EQ(st.nbbases, 7);
}
