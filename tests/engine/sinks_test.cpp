// sinks_test.cpp -- a run whose rows and report go to sinks as they are made gives the bytes of a run that keeps them.
#include <gtest/gtest.h>

#include <random>

#include "run_transcript.h"

namespace trelvane::testing {
namespace {

class StringSink : public TextSink {
 public:
  explicit StringSink(std::size_t room = std::string::npos) : room_(room) {}
  void write(std::string_view bytes) override {
    ++writes;
    if (text.size() + bytes.size() > room_) failure_ = "the disk is full";
    if (failure_.empty()) text += bytes;
  }
  const std::string& failure() const override { return failure_; }
  std::string text;
  int writes = 0;

 private:
  std::size_t room_;
  std::string failure_;
};

// Random letters with an N every `nEvery` bases (none for 0).
std::string letters(std::size_t n, unsigned seed, std::size_t nEvery = 0) {
  std::mt19937 gen(seed);
  std::string s(n, 'A');
  for (std::size_t k = 0; k < n; ++k) s[k] = nEvery && k % nEvery == nEvery - 1 ? 'N' : "ACGT"[gen() % 4];
  return s;
}

struct RunTexts {
  RunOutcome out;
  std::string clipboard;
  int clipboardCalls;
};

RunTexts runOn(const std::string& lg, const std::string& sh, const RunSettings& s) {
  ComparisonState st;
  st.open();
  st.m0 = blockOf(lg);
  st.nbbases = static_cast<int32_t>(lg.size());
  st.m1 = blockOf(sh);
  st.nbbases1 = static_cast<int32_t>(sh.size());
  RecordingHost host(st, -1);
  RunOutcome out = rumcompute(st, s, host);
  return {std::move(out), host.clipboard, host.clipboardCalls};
}

struct SinkCase {
  const char* name;
  std::string lg, sh;
  RunSettings s;
};

// Texts of several megabytes, so that they go out in several pieces: the
// listing and the ties of a short window, the CpG rows cut where an N's zero
// byte stands (past the first piece), on one thread and two.
std::vector<SinkCase> sinkCases() {
  RunSettings listing{.EFWS = "8", .EFIdentities = "6", .EFSD = "5", .CBClipboard = true, .seed = 3};
  RunSettings two = listing;
  two.threads = 2;
  two.kernel = "generic";
  listing.threads = 1;
  RunSettings cpg{.EFWS = "20", .CBCPG = true, .CBClipboard = true, .seed = 1};
  return {{"ListingAndTies", letters(120000, 1, 5000), letters(400, 2), listing},
          {"TwoThreads", letters(120000, 1, 5000), letters(400, 2), two},
          {"CpgCutAtN", letters(300000, 3) + "N" + letters(100000, 4), "", cpg}};
}

TEST(Sinks, TakeTheBytesTheRunKeepsInMemory) {
  for (const SinkCase& c : sinkCases()) {
    SCOPED_TRACE(c.name);
    const RunTexts kept = runOn(c.lg, c.sh, c.s);
    StringSink rows, report;
    RunSettings s = c.s;
    s.rowsSink = &rows;
    s.reportSink = &report;
    const RunTexts sunk = runOn(c.lg, c.sh, s);
    ASSERT_FALSE(kept.out.stopped);
    ASSERT_FALSE(sunk.out.stopped);
    EXPECT_GT(rows.writes, 2);
    EXPECT_EQ(sunk.clipboardCalls, 0);
    EXPECT_TRUE(sunk.out.report.empty());
    EXPECT_EQ(sunk.out.rowsHead + rows.text, kept.clipboard);
    EXPECT_EQ(report.text, kept.out.report);
    EXPECT_EQ(sunk.out.listingEnd, kept.out.listingEnd);
    EXPECT_EQ(sunk.out.maxgraph, kept.out.maxgraph);
  }
}

TEST(Sinks, AFailedWriteFailsTheRunWithItsReason) {
  const SinkCase c = sinkCases()[0];
  // a failure in the scan, and one at the last rows, after the scan
  for (std::size_t room : {std::size_t{10}, std::size_t{5} << 19}) {
    StringSink rows(room), report;
    RunSettings s = c.s;
    s.rowsSink = &rows;
    s.reportSink = &report;
    const RunTexts r = runOn(c.lg, c.sh, s);
    EXPECT_TRUE(r.out.stopped);
    EXPECT_EQ(r.out.failure, "the disk is full");
  }
}

}  // namespace
}  // namespace trelvane::testing
