// input_rows_test.cpp -- bad sequence and result files through the File tab's logic, as a drop or a dialog brings them.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <cstdio>
#include <string>

#include "state/form.h"
#include "state/state.h"
#include "input/panel.h"
#include "robustness_util.h"

namespace trelvane::robustness {
namespace {

const std::string kExamples = TRELVANE_EXAMPLES;
const std::string kGolden = std::string(TRELVANE_TEST_DATA) + "/golden";

// A window with V00508 (3919 bases) read as its longest sequence: what a bad file must not lose.
struct Window {
  ComparisonState st;
  Form form;
  int graphs = 0;
  std::function<void()> graph = [this] { ++graphs; };

  Window() { st.open(); }
  void drop(const std::string& path, Route route = Route::GBLongDrop) {
    openFile(st, form, route, path, graph);
  }
  void loadGood() {
    drop(kExamples + "/V00508.fa");
    ASSERT_EQ(form.Message, "Long sequence read 3919 bases");
  }
};

// What stands after the good file was read, compared with what stands now.
void expectGoodKept(const Window& w) {
  ASSERT_TRUE(w.st.f[0].has_value());
  EXPECT_EQ(*w.st.f[0], kExamples + "/V00508.fa");
  EXPECT_EQ(w.st.nbbases, 3919);
  EXPECT_EQ(w.st.m0.size(), 3971 + 100);  // the block is sized by the raw line lengths
  EXPECT_EQ(w.st.m0.get(0), kG);  // V00508 begins with "GAATTC"
  EXPECT_EQ(w.st.m0.get(1), kA);
}

TEST(BadSequenceFile, MissingFileIsRefusedAndTheLoadedSequenceStays) {
  TempDir dir;
  Window w;
  w.loadGood();
  w.drop((dir / "gone.fa").string());
  EXPECT_EQ(w.form.Message, "Cannot read gone.fa: the file does not exist");
  expectGoodKept(w);
}

TEST(BadSequenceFile, FolderIsRefusedAndTheLoadedSequenceStays) {
  TempDir dir;
  std::filesystem::create_directory(dir / "seqs");
  Window w;
  w.loadGood();
  w.drop((dir / "seqs").string());
  EXPECT_EQ(w.form.Message, "Cannot read seqs: it is a folder, not a file");
  expectGoodKept(w);
}

// Root reads every file, so the reading runs as an unprivileged user.
TEST(BadSequenceFile, FileWithoutReadPermissionIsRefusedAndTheLoadedSequenceStays) {
  TempDir dir;
  const std::string locked = dir.file("locked.fa", ">x\nACGTACGT\n");
  ::chmod(locked.c_str(), 0);
  const int status = runAsNobody([&locked] {
    Window w;
    w.drop(kExamples + "/V00508.fa");
    if (w.st.nbbases != 3919) return 3;
    w.drop(locked);
    if (w.form.Message != "Cannot read locked.fa: permission denied") return 4;
    if (!w.st.f[0] || w.st.nbbases != 3919 || w.st.m0.size() != 4071) return 5;
    return 0;
  });
  EXPECT_EQ(status, 0) << "3: the example unreadable, 4: another message, 5: state changed";
}

TEST(BadSequenceFile, EmptyFileReadsAsNoBases) {
  TempDir dir;
  Window w;
  w.drop(dir.file("empty.fa", ""));
  EXPECT_EQ(w.form.Message, "Long sequence read 0 bases");
  EXPECT_EQ(w.st.nbbases, 0);
  EXPECT_EQ(w.st.m0.size(), 100);
}

// Every byte value, many times over, in a fixed pseudo-random order: only the
// letters of bases on lines that are no title lines become bases.
TEST(BadSequenceFile, BinaryFileKeepsOnlyItsBaseLetters) {
  TempDir dir;
  std::string bytes;
  uint32_t x = 12345;
  for (int i = 0; i < 1 << 16; ++i) {
    x = x * 1103515245u + 12345u;
    bytes.push_back(static_cast<char>(x >> 23));
  }
  // the same rule, counted here line by line
  int64_t expected = 0;
  bool lineStart = true, title = false;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const char c = bytes[i];
    if (c == '\n' || c == '\r') {
      lineStart = true;
      continue;
    }
    if (lineStart) title = c == '>' || c == '%';
    lineStart = false;
    if (!title && std::string("ACGTUNacgtun").find(c) != std::string::npos) ++expected;
  }
  Window w;
  w.drop(dir.file("binary.bin", bytes));
  EXPECT_EQ(w.st.nbbases, expected);
  // read by the rules, and said to be no text
  EXPECT_EQ(w.form.Message.rfind("Long sequence read " + std::to_string(expected) +
                                     " bases; the file looks like binary data, not text: ", 0),
            0u)
      << w.form.Message;
  for (int64_t i = 0; i < w.st.m0.size(); ++i) ASSERT_LE(w.st.m0.get(i), 4) << i;
}

// 50 MB on one line: one block of 50 000 100 bytes, counted once.
TEST(BadSequenceFile, FiftyMegabasesOnOneLineAreRead) {
  TempDir dir;
  const int64_t n = 50'000'000;
  std::string line;
  line.reserve(n);
  for (int64_t i = 0; i < n / 4; ++i) line += "ACGT";
  const std::string path = dir.file("long.fa", line);
  line.clear();
  line.shrink_to_fit();
  Window w;
  const auto start = std::chrono::steady_clock::now();
  w.drop(path);
  const double ms = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
  std::printf("[ measure  ] 50 MB single-line sequence read in %.0f ms\n", ms);
  EXPECT_EQ(w.form.Message, "Long sequence read 50000000 bases");
  EXPECT_EQ(w.st.nbbases, n);
  EXPECT_EQ(w.st.m0.size(), n + 100);
  for (int c = kA; c <= kG; ++c) EXPECT_EQ(w.st.basesfreq[c][0], n / 4) << c;
  EXPECT_EQ(w.st.m0.get(n - 1), kT);
  EXPECT_EQ(w.st.m0.get(n), 0);
  EXPECT_EQ(w.form.EFSD, "49999970");
}

TEST(BadSequenceFile, CarriageReturnLineEndsReadAsLines) {
  TempDir dir;
  Window cr, lf;
  cr.drop(dir.file("cr.fa", ">title\rACGT\r>second\rNNAC\rGT"));
  lf.drop(dir.file("lf.fa", ">title\nACGT\n>second\nNNAC\nGT"));
  EXPECT_EQ(cr.form.Message, "Long sequence read 10 bases");
  EXPECT_EQ(cr.st.nbbases, lf.st.nbbases);
  for (int i = 0; i < 10; ++i) EXPECT_EQ(cr.st.m0.get(i), lf.st.m0.get(i)) << i;
  EXPECT_EQ(cr.form.GBLongCaption, "title");
}

TEST(BadSequenceFile, BytesFrom128To255Vanish) {
  TempDir dir;
  std::string high;
  for (int b = 128; b <= 255; ++b) high.push_back(static_cast<char>(b));
  Window w;
  w.drop(dir.file("high.fa", "AC" + high + "GT\n" + high + "\n"));
  EXPECT_EQ(w.form.Message, "Long sequence read 4 bases");
  EXPECT_EQ(w.st.m0.get(0), kA);
  EXPECT_EQ(w.st.m0.get(3), kT);
  EXPECT_EQ(w.st.m0.get(4), 0);
}

TEST(BadSequenceFile, SequenceOfOnlyNReadsAsPositionsWithoutBases) {
  TempDir dir;
  Window w;
  w.drop(dir.file("n.fa", ">n\n" + std::string(500, 'N') + "\n" + std::string(500, 'n')));
  EXPECT_EQ(w.form.Message, "Long sequence read 1000 bases");
  EXPECT_EQ(w.st.basesfreq[kN][0], 1000);
  for (int c = kA; c <= kG; ++c) EXPECT_EQ(w.st.basesfreq[c][0], 0);
}

// The stored result S2 (48 502 profile bytes) as the base of the result rows.
struct StoredResult {
  std::string head;     // up to and with the "#" line
  std::string section;  // the profile bytes
  StoredResult() {
    const std::string all = readAll(kGolden + "/S2.result");
    const std::size_t hash = all.find("\n#\n");
    head = all.substr(0, hash + 3);
    section = all.substr(hash + 3);
  }
};

TEST(BadResultFile, TruncatedInTheProfileDrawsWhatCameAndKeepsTheFill) {
  TempDir dir;
  StoredResult s;
  Window w;
  w.drop(dir.file("cut.txt", s.head + s.section.substr(0, 300)));
  EXPECT_EQ(w.form.Message, "End...");
  EXPECT_EQ(w.graphs, 1);
  EXPECT_EQ(w.st.nbbases, 48502);
  ASSERT_EQ(w.st.m2.size(), 48502 + 410);
  EXPECT_EQ(w.st.m2.get(299), static_cast<uint8_t>(s.section[299]));
  // the fill of code 1 at offsets 0, 200 and 400 shows behind the cut
  EXPECT_EQ(w.st.m2.get(300), 1);
  EXPECT_EQ(w.st.m2.get(599), 1);
  EXPECT_EQ(w.st.m2.get(600), 0);
  EXPECT_EQ(w.st.m2.get(48502 + 409), 0);
}

TEST(BadResultFile, TruncatedInTheHeadKeepsTheProfileOfTheLastRun) {
  TempDir dir;
  StoredResult s;
  Window w;
  w.drop(dir.file("whole.txt", s.head + s.section));
  ASSERT_EQ(w.st.m2.size(), 48502 + 410);
  const uint8_t before = w.st.m2.get(500);
  // cut in the middle of "SD=": no "#" line, so no byte section
  w.drop(dir.file("cut.txt", s.head.substr(0, s.head.find("SD=") + 2)));
  EXPECT_EQ(w.form.Message, "End...");
  EXPECT_EQ(w.graphs, 2);
  EXPECT_EQ(w.st.m2.size(), 48502 + 410);
  EXPECT_EQ(w.st.m2.get(500), before);
}

TEST(BadResultFile, GarbageValuesReadAsWhatValAndCDblGive) {
  TempDir dir;
  Window w;
  w.drop(dir.file("garbage.txt",
                  "Trelvane comparison\nWindow size=thirty\nMax=\x01\x02\nMean=NaNa\nSD=--3\n"
                  "SD low=1e999999\nBases=12abc\nBases1=-\n#\n\x05\x06\x07"));
  EXPECT_EQ(w.form.Message, "End...");
  EXPECT_EQ(w.st.windgraph, 0);
  EXPECT_EQ(w.st.maxgraph, 0.0f);
  EXPECT_EQ(w.st.nbbases, 12);
  EXPECT_EQ(w.st.nbbases1, 0);
  EXPECT_EQ(w.st.sdgraph, 0.0f);
  ASSERT_EQ(w.st.m2.size(), 12 + 410);
  EXPECT_EQ(w.st.m2.get(2), 7);
  EXPECT_EQ(w.st.m2.get(3), 1);
}

TEST(BadResultFile, HugeBasesIsRefusedAndTheProfileStays) {
  TempDir dir;
  StoredResult s;
  Window w;
  w.drop(dir.file("whole.txt", s.head + s.section));
  ASSERT_EQ(w.st.m2.size(), 48502 + 410);
  for (const char* bases : {"99999999999", "2147483647", "-5"}) {
    std::string head = s.head;
    head.replace(head.find("Bases=48502"), 11, std::string("Bases=") + bases);
    w.drop(dir.file("huge.txt", head + s.section));
    EXPECT_EQ(w.form.Message, std::string("Cannot read huge.txt: Bases=") + bases + " is no count of bases");
    EXPECT_EQ(w.st.nbbases, 48502) << bases;
    EXPECT_EQ(w.st.m2.size(), 48502 + 410) << bases;
    EXPECT_EQ(w.graphs, 1) << bases;
  }
}

}  // namespace
}  // namespace trelvane::robustness
