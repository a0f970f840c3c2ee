// cli_rows_test.cpp -- bad inputs and bad destinations given to the trelvane-cli program, run as a user runs it.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>
#include <vector>

#include "robustness_util.h"

namespace trelvane::robustness {
namespace {

const std::string kCli = TRELVANE_CLI;
const std::string kExamples = TRELVANE_EXAMPLES;
const std::string kShort = kExamples + "/V00508.fa";
const std::string kGolden = std::string(TRELVANE_TEST_DATA) + "/golden";

ProcessResult cli(const std::vector<std::string>& args, const ChildSetup& setup = {}) {
  return runProgram(kCli, args, setup);
}

// A short comparison of a longest file against V00508, its report to report.
std::vector<std::string> compareArgs(const std::string& longFile, const std::string& report) {
  return {"compare", longFile, kShort, "--to", "3000", "--resamplings", "20", "--seed", "7",
          "--report", report, "--quiet"};
}

TEST(CliBadInput, MissingFolderAndUnreadableFilesAreNamedWithWhy) {
  TempDir dir;
  std::filesystem::create_directory(dir / "seqs");
  const std::string gone = (dir / "gone.fa").string();
  ProcessResult r = cli({"compare", gone, kShort});
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.err, "trelvane-cli: cannot read " + gone + ": the file does not exist\n");

  const std::string folder = (dir / "seqs").string();
  r = cli({"compare", folder, kShort});
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.err, "trelvane-cli: cannot read " + folder + ": it is a folder, not a file\n");

  const std::string locked = dir.file("locked.fa", ">x\nACGT\n");
  ::chmod(locked.c_str(), 0);
  ChildSetup nobody;
  nobody.asNobody = true;
  r = cli({"compare", locked, kShort}, nobody);
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.err, "trelvane-cli: cannot read " + locked + ": permission denied\n");
}

TEST(CliBadInput, SequencesWithoutBasesAreRefusedBeforeTheRun) {
  TempDir dir;
  const std::string report = (dir / "report.txt").string();
  for (const auto& [name, bytes] : std::vector<std::pair<std::string, std::string>>{
           {"empty.fa", ""}, {"titles.fa", ">a\n>b\n"}, {"n.fa", ">n\n" + std::string(3000, 'N')},
           {"rna.fa", std::string(100, 'U')}}) {
    const std::string path = dir.file(name, bytes);
    ProcessResult r = cli({"compare", path, kShort, "--report", report});
    EXPECT_EQ(r.status, 1) << name;
    EXPECT_EQ(r.err, "trelvane-cli: " + path + " holds no base (A, C, G or T): nothing to compare\n") << name;
    EXPECT_FALSE(std::filesystem::exists(report)) << name;
  }
}

// A binary file reads as the few base letters it happens to hold.
TEST(CliBadInput, BinaryFileRunsOnTheLettersItHolds) {
  TempDir dir;
  std::string bytes;
  uint32_t x = 99;
  for (int i = 0; i < 1 << 17; ++i) {
    x = x * 1664525u + 1013904223u;
    bytes.push_back(static_cast<char>(x >> 24));
  }
  const std::string report = (dir / "report.txt").string();
  ProcessResult r = cli({"cpg", dir.file("binary.bin", bytes), "--window", "20", "--seed", "1",
                         "--report", report, "--quiet"});
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(readAll(report).rfind("Trelvane comparison\n", 0), 0u);
}

// Carriage returns alone, and bytes 128 to 255 in every line, give the
// report of the plain file, byte for byte.
TEST(CliBadInput, CarriageReturnsAndHighBytesGiveThePlainReport) {
  TempDir dir;
  const std::string plain = readAll(kExamples + "/HUMHBB.fa");
  std::string cr = plain, high;
  for (char& c : cr)
    if (c == '\n') c = '\r';
  for (char c : plain) {
    high += c;
    if (c == '\n') high += "\x80\xff\xc3\xa9";
  }
  const std::string base = (dir / "plain.txt").string();
  ASSERT_EQ(cli(compareArgs(dir.file("plain.fa", plain), base)).status, 0);
  const std::string expected = readAll(base);
  ASSERT_NE(expected.find("Bases=73"), std::string::npos);
  for (const auto& [name, bytes] : {std::pair{"cr.fa", cr}, std::pair{"high.fa", high}}) {
    const std::string report = (dir / (std::string(name) + ".txt")).string();
    ProcessResult r = cli(compareArgs(dir.file(name, bytes), report));
    EXPECT_EQ(r.status, 0) << name << r.err;
    EXPECT_EQ(readAll(report), expected) << name;
  }
}

TEST(CliBadInput, FiftyMegabasesOnOneLineCompareInARange) {
  TempDir dir;
  std::string line;
  line.reserve(50'000'000);
  for (int i = 0; i < 12'500'000; ++i) line += "ACGT";
  const std::string big = dir.file("big.fa", line);
  line = std::string();
  const std::string report = (dir / "report.txt").string();
  ProcessResult r = cli({"compare", big, kShort, "--to", "1000", "--resamplings", "5", "--seed", "1",
                         "--report", report, "--quiet"});
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_NE(readAll(report).find("\nBases=50000000\n"), std::string::npos);
}

// Window 0 runs with no window at all; 255 above both lengths is clipped to
// the shortest sequence by its reading.
TEST(CliBadInput, WindowOfZeroAndAboveBothLengthsRun) {
  TempDir dir;
  const std::string longFile = dir.file("long.fa", readAll(kExamples + "/HUMHBB.fa").substr(0, 300));
  const std::string shortFile =
      dir.file("short.fa", ">s\nACGTTGCAACGTAGCTAGCTAGGATCGATCGATCGTAGCTAGCTAGCTAGCTAGCATCGA\n");
  const std::string report = (dir / "report.txt").string();
  for (const auto& [window, head] : {std::pair{"0", "Window size=0\n"}, std::pair{"255", "Window size=60\n"}}) {
    ProcessResult r = cli({"compare", longFile, shortFile, "--window", window, "--resamplings", "5",
                           "--seed", "1", "--report", report, "--quiet"});
    EXPECT_EQ(r.status, 0) << window << r.err;
    EXPECT_NE(readAll(report).find(head), std::string::npos) << window;
  }
}

TEST(CliBadInput, EmptyAndNegativeRangesRunWithoutScores) {
  TempDir dir;
  const std::string report = (dir / "report.txt").string();
  for (const auto& range : {std::pair{"2000", "1000"}, std::pair{"-50", "-10"}}) {
    ProcessResult r = cli({"compare", kExamples + "/HUMHBB.fa", kShort, "--from", range.first, "--to",
                           range.second, "--resamplings", "5", "--seed", "1", "--report", report, "--quiet"});
    EXPECT_EQ(r.status, 0) << range.first << r.err;
    EXPECT_EQ(readAll(report).rfind("Trelvane comparison\nWindow size=30\n", 0), 0u) << range.first;
  }
}

// The stored result S2 as the base of the result rows.
std::pair<std::string, std::string> storedResult() {
  const std::string all = readAll(kGolden + "/S2.result");
  const std::size_t hash = all.find("\n#\n");
  return {all.substr(0, hash + 3), all.substr(hash + 3)};
}

TEST(CliBadResult, TruncatedAndGarbageResultsDrawOrSayWhyNot) {
  TempDir dir;
  const auto [head, section] = storedResult();
  const std::string svg = (dir / "p.svg").string();
  ProcessResult r = cli({"redraw", dir.file("cut.txt", head + section.substr(0, 777)), "--svg", svg});
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(readAll(svg).find("<svg") != std::string::npos, true);

  std::filesystem::remove(svg);
  r = cli({"redraw", dir.file("garbage.txt", "Trelvane comparison\nWindow size=x\nBases=\x01\n#\n\xff\xfe"),
           "--svg", svg});
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.err, "trelvane-cli: nothing to draw (no bases or window size 0): " + svg + " was not written\n");
  EXPECT_FALSE(std::filesystem::exists(svg));
}

TEST(CliBadResult, HugeBasesIsRefusedWithoutDrawing) {
  TempDir dir;
  auto [head, section] = storedResult();
  head.replace(head.find("Bases=48502"), 11, "Bases=99999999999");
  const std::string path = dir.file("huge.txt", head + section);
  const std::string svg = (dir / "p.svg").string();
  ProcessResult r = cli({"redraw", path, "--svg", svg});
  EXPECT_EQ(r.status, 1);
  // said once, not wrapped in the window's own words
  EXPECT_EQ(r.err, "trelvane-cli: cannot read " + path + ": Bases=99999999999 is no count of bases\n");
  EXPECT_FALSE(std::filesystem::exists(svg));
}

// The program copied alone, one file, to a machine without a display: it
// compares and draws its pictures all the same.
TEST(CliAlone, OneFileComparesAndDrawsWithoutADisplay) {
  TempDir dir;
  namespace fs = std::filesystem;
  fs::create_directory(dir / "alone");
  const fs::path alone = dir / "alone" / "trelvane-cli";
  fs::copy_file(kCli, alone);
  const std::string report = (dir / "report.txt").string();
  const std::string svg = (dir / "profile.svg").string();
  std::vector<std::string> args = compareArgs(kExamples + "/HUMHBB.fa", report);
  args.insert(args.end(), {"--svg", svg});
  unsetenv("DISPLAY");
  unsetenv("WAYLAND_DISPLAY");
  unsetenv("QT_QPA_PLATFORM");
  ProcessResult r = runProgram(alone.string(), args);
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(readAll(svg).rfind("<?xml", 0), 0u);
  const std::string reportAlone = readAll(report);
  ASSERT_EQ(cli(compareArgs(kExamples + "/HUMHBB.fa", report)).status, 0);
  EXPECT_EQ(reportAlone, readAll(report));
}

TEST(CliBadDestination, FullDeviceIsReportedAsNoSpace) {
  ProcessResult r = cli(compareArgs(kExamples + "/HUMHBB.fa", "/dev/full"));
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.err, "trelvane-cli: cannot write /dev/full: No space left on device\n");
}

// A disk that fills while the result file is written (a file size limit
// stands in for it): the result file written before stays as it was.
TEST(CliBadDestination, ResultFileThatCannotBeWrittenKeepsTheEarlierOne) {
  TempDir dir;
  const std::string result = dir.file("old.result", "Trelvane comparison\nthe earlier result\n");
  ChildSetup full;
  full.fileSizeLimit = 1024;  // the result file of this run is 3574 bytes
  ProcessResult r = cli({"compare", kExamples + "/HUMHBB.fa", kShort, "--to", "3000", "--resamplings", "5",
                         "--seed", "1", "--result", result, "--quiet"},
                        full);
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.err.find(result), std::string::npos) << r.err;
  EXPECT_EQ(readAll(result), "Trelvane comparison\nthe earlier result\n");
  int files = 0;
  for ([[maybe_unused]] const auto& e : std::filesystem::directory_iterator(dir.path())) ++files;
  EXPECT_EQ(files, 1) << "a staging file was left behind";
}

// A destination the user may not write: refused before the run, and a file
// that stands there is kept.
TEST(CliBadDestination, ReadOnlyDestinationIsRefusedBeforeTheRun) {
  TempDir dir;
  std::filesystem::create_directory(dir / "closed");
  // Read-only for everyone: the unprivileged user (or, when the tests do
  // not run as root, their owner) may not write either.
  ::chmod((dir / "closed").c_str(), 0555);
  const std::string inClosed = (dir / "closed" / "out.result").string();
  const std::string kept = dir.file("kept.result", "the earlier result\n");
  ::chmod(kept.c_str(), 0444);
  ChildSetup nobody;
  nobody.asNobody = true;
  for (const std::string& target : {inClosed, kept}) {
    ProcessResult r = cli({"compare", kExamples + "/HUMHBB.fa", kShort, "--result", target, "--quiet"}, nobody);
    EXPECT_EQ(r.status, 1) << target;
    EXPECT_EQ(r.err, "trelvane-cli: cannot write " + target + ": permission denied\n");
  }
  EXPECT_FALSE(std::filesystem::exists(inClosed));
  EXPECT_EQ(readAll(kept), "the earlier result\n");
}

}  // namespace
}  // namespace trelvane::robustness
