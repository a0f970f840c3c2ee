// regions_test.cpp -- records and regions of plain, gzip and BGZF copies of one FASTA file against the
// plain reader on the same letters cut out by hand; the origin of every run position.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "input/sequence_reader.h"
#include "support/desk.h"

namespace trelvane::testing {
namespace {

struct Record {
  std::string name, letters;
};

// Letters of every kind a genome holds: soft-masked runs, N gaps at the
// ends and inside, an IUPAC code, a U.
std::vector<Record> records() {
  std::vector<Record> out;
  uint32_t x = 7;
  auto letters = [&x](std::size_t n, const char* alphabet) {
    std::string s;
    for (std::size_t i = 0; i < n; ++i) x = x * 1664525u + 1013904223u, s += alphabet[(x >> 9) % std::strlen(alphabet)];
    return s;
  };
  out.push_back({"chr1", "NNNN" + letters(700, "ACGTACGTacgt") + "NNNNNNNNNN" + letters(300, "ACGTACGTACGTRu") + "NN"});
  out.push_back({"chr2", letters(61, "ACGT")});
  out.push_back({"chrM", letters(1, "A")});
  return out;
}

void write(const std::filesystem::path& path, const std::vector<Record>& recs, std::size_t width) {
  std::ofstream f(path, std::ios::binary);
  for (std::size_t r = 0; r < recs.size(); ++r) {
    f << ">" << recs[r].name << " record " << r << "\n";
    // a ragged file: every line a little longer than the one before
    for (std::size_t i = 0, w = width; i < recs[r].letters.size(); i += w, w += width == 7 ? 1 : 0)
      f << recs[r].letters.substr(i, w) << "\n";
  }
}

class Regions : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    dir = Desk::makeDir();
    write(dir / "g.fa", records(), 60);
    write(dir / "ragged.fa", records(), 7);  // no index can be built: read through
    const std::string sh = "cd '" + dir.string() + "' && gzip -c g.fa > gz.fa.gz && bgzip -c g.fa > bgzf.fa.gz"
                           " && samtools faidx bgzf.fa.gz && cp g.fa indexed.fa && samtools faidx indexed.fa";
    ASSERT_EQ(std::system(sh.c_str()), 0);
  }
  static void TearDownTestSuite() { std::filesystem::remove_all(dir); }
  static inline std::filesystem::path dir;
};

struct Reading {
  ComparisonState st;
  Form form;
  std::string why;
};

std::unique_ptr<Reading> read(const std::string& path, const std::string& region, unsigned options) {
  auto r = std::make_unique<Reading>();
  r->st.open();
  r->form.Comp0 = options & 1, r->form.Reverse0 = options & 2, r->form.CBRemoveN0 = options & 4;
  r->form.Region0 = region;
  r->st.f[0] = path;
  r->why = litlongue(r->st, r->form);
  return r;
}

// The code a letter of the record gives at a run position: what the
// origin's record coordinate must lead back to.
int expectedCode(char letter, bool complement) {
  const std::string from = "ACGTacgtUu", plain = "ACGTACGTUU", comp = "TGCATGCAAA";
  const std::size_t at = from.find(letter);
  if (at == std::string::npos) return 0;
  const char base = (complement ? comp : plain)[at];
  return std::string("NATCG").find(base) == std::string::npos ? 0 : static_cast<int>(std::string("NATCG").find(base));
}

TEST_F(Regions, EveryCopyGivesTheBasesOfTheLettersCutOutByHand) {
  const auto recs = records();
  struct Ask { std::size_t record; int64_t from, to; std::string text; };
  const std::vector<Ask> asks = {
      {0, 1, 1016, "chr1"},       {0, 1, 1, "chr1:1-1"},        {0, 1016, 1016, "chr1:1,016"},
      {0, 700, 1016, "chr1:700"}, {0, 3, 720, "chr1:3-720"},    {1, 1, 61, "chr2:1-61"},
      {1, 60, 61, "chr2:60-61"},  {2, 1, 1, "chrM"}};
  for (const std::string copy : {"g.fa", "gz.fa.gz", "bgzf.fa.gz", "ragged.fa", "indexed.fa"}) {
    for (const Ask& ask : asks) {
      const std::string cut = recs[ask.record].letters.substr(ask.from - 1, ask.to - ask.from + 1);
      std::ofstream(dir / "cut.fa", std::ios::binary) << ">cut\n" << cut << "\n";
      for (unsigned options = 0; options < 8; ++options) {
        SCOPED_TRACE(copy + " " + ask.text + " options " + std::to_string(options));
        const auto got = read((dir / copy).string(), ask.text, options);
        const auto want = read((dir / "cut.fa").string(), "", options);
        ASSERT_EQ(got->why, "");
        ASSERT_EQ(got->st.nbbases, want->st.nbbases);
        EXPECT_EQ(fieldText(got->st.basesfreq), fieldText(want->st.basesfreq));
        EXPECT_EQ(0, std::memcmp(got->st.m0.data(), want->st.m0.data(), static_cast<std::size_t>(got->st.nbbases)));
        EXPECT_EQ(got->form.Message, want->form.Message);
        // each run position leads back to the letter of the record it came from
        const SequenceOrigin& o = got->st.origin[0];
        EXPECT_EQ(o.record, recs[ask.record].name);
        EXPECT_EQ(o.recordLength, static_cast<int64_t>(recs[ask.record].letters.size()));
        for (int64_t p = 1; p <= got->st.nbbases; ++p) {
          const std::optional<int64_t> at = recordPosition(o, p);
          const int code = got->st.m0.get(p - 1);
          if (!at) {
            ASSERT_TRUE(got->form.Reverse0 && got->form.CBRemoveN0 && p <= o.gap && code == 0) << p;
            continue;
          }
          ASSERT_GE(*at, ask.from);
          ASSERT_LE(*at, ask.to);
          ASSERT_EQ(code, expectedCode(recs[ask.record].letters[*at - 1], options & 1)) << p << " at " << *at;
        }
      }
    }
  }
}

// The joined file's own numbering counts its base letters, the Ns taken out included.
TEST_F(Regions, WholeFileOriginLeadsEachPositionBackToItsLetter) {
  std::string joined;
  for (const Record& r : records())
    for (char c : r.letters)
      if (std::string("ACGTUNacgtun").find(c) != std::string::npos) joined += c;
  for (unsigned options = 0; options < 8; ++options) {
    for (const std::string copy : {"g.fa", "gz.fa.gz"}) {
      SCOPED_TRACE(copy + " options " + std::to_string(options));
      const auto got = read((dir / copy).string(), "", options);
      const SequenceOrigin& o = got->st.origin[0];
      EXPECT_EQ(o.record, "chr1");
      EXPECT_TRUE(o.wholeFile);
      EXPECT_EQ(o.to, static_cast<int64_t>(joined.size()));
      for (int64_t p = 1; p <= got->st.nbbases; ++p) {
        const std::optional<int64_t> at = recordPosition(o, p);
        if (!at) {
          ASSERT_TRUE(p <= o.gap) << p;
          continue;
        }
        ASSERT_EQ(got->st.m0.get(p - 1), expectedCode(joined[*at - 1], options & 1)) << p << " at " << *at;
      }
    }
  }
}

TEST(OriginText, ReadsBackWhatItWrites) {
  SequenceOrigin o;
  o.path = "/data/genome v2.fa.gz";
  o.record = "HLA:A*01";
  o.recordLength = 5000, o.from = 1001, o.to = 2000, o.wholeFile = false;
  o.reverse = o.removeN = true, o.gap = 3;
  o.removed = {{4, 3}, {90, 12}};
  SequenceOrigin back;
  ASSERT_TRUE(parseOriginText(originText(o), back));
  EXPECT_EQ(originText(back), originText(o));
  EXPECT_EQ(originLabel(back), "HLA:A*01:1001-2000");
  EXPECT_FALSE(parseOriginText("chr1:1-10\tx\tforward\t0\t-\tg.fa", back));
  EXPECT_FALSE(parseOriginText("chr1\t10\tforward\t0\t-\tg.fa", back));
}

}  // namespace
}  // namespace trelvane::testing
