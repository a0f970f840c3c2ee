// linereader_test.cpp -- line ends, last lines, raw bytes behind a line.
#include "platform/linereader.h"

#include <gtest/gtest.h>

#include <fstream>
#include <vector>

using namespace trelvane;

namespace {
std::vector<std::string> lines(const std::string& text) {
  LineReader r;
  r.openMemory(text);
  std::vector<std::string> out;
  do {
    out.push_back(r.readLine());
  } while (!r.eof());
  return out;
}
}  // namespace

TEST(LineReader, AcceptsLfCrLfAndCr) {
  std::vector<std::string> want = {"ACGT", "", "TTA"};
  EXPECT_EQ(lines("ACGT\n\nTTA\n"), want);
  EXPECT_EQ(lines("ACGT\r\n\r\nTTA\r\n"), want);
  EXPECT_EQ(lines("ACGT\r\rTTA\r"), want);
  EXPECT_EQ(lines("ACGT\n\r\nTTA"), want);
}

TEST(LineReader, LastLineWithoutLineEndAndEmptyStream) {
  EXPECT_EQ(lines("A\nC"), (std::vector<std::string>{"A", "C"}));
  EXPECT_EQ(lines(""), (std::vector<std::string>{""}));
}

TEST(LineReader, RawBytesStartRightBehindTheLineEnd) {
  LineReader r;
  r.openMemory(std::string("#\n\n\r\x05", 5));
  EXPECT_EQ(r.readLine(), "#");
  EXPECT_EQ(r.readBytes(10), std::string("\n\r\x05", 3));
  EXPECT_TRUE(r.eof());
  r.openMemory("#\r\nabc");
  EXPECT_EQ(r.readLine(), "#");
  EXPECT_EQ(r.readBytes(2), "ab");
}

TEST(LineReader, KeepsHighBytesUnconverted) {
  LineReader r;
  r.openMemory("A\xe9\xff" "C\n");
  EXPECT_EQ(r.readLine(), "A\xe9\xff" "C");
}

TEST(LineReader, LongLineAcrossChunks) {
  std::string path = ::testing::TempDir() + "/long_line.txt";
  std::string seq(300000, 'G');
  {
    std::ofstream o(path, std::ios::binary);
    o << ">t\r" << seq << "\r\nX";
  }
  LineReader r;
  ASSERT_TRUE(r.open(path));
  EXPECT_EQ(r.readLine(), ">t");
  EXPECT_EQ(r.readLine(), seq);
  EXPECT_EQ(r.readLine(), "X");
  EXPECT_TRUE(r.eof());
}

TEST(LineReader, UnreadableFilesSayWhy) {
  LineReader r;
  EXPECT_FALSE(r.open("/nonexistent/file.fa"));
  EXPECT_EQ(r.error(), "the file does not exist");
  EXPECT_FALSE(r.open(::testing::TempDir()));
  EXPECT_EQ(r.error(), "it is a folder, not a file");
}
