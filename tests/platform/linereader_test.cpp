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

TEST(LineReader, AcceptsLfCrLfAndCrAndALastLineWithoutLineEnd) {
  const std::vector<std::string> want = {"ACGT", "", "TTA"};
  for (const char* text : {"ACGT\n\nTTA\n", "ACGT\r\n\r\nTTA\r\n", "ACGT\r\rTTA\r", "ACGT\n\r\nTTA"})
    EXPECT_EQ(lines(text), want) << text;
  EXPECT_EQ(lines(""), (std::vector<std::string>{""}));
  EXPECT_EQ(lines("A\xe9\xff" "C\n"), (std::vector<std::string>{"A\xe9\xff" "C"}));  // high bytes unconverted
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

TEST(LineReader, LongLineAcrossChunks) {
  const std::string path = ::testing::TempDir() + "/long_line.txt", seq(300000, 'G');
  std::ofstream(path, std::ios::binary) << ">t\r" << seq << "\r\nX";
  LineReader r;
  ASSERT_TRUE(r.open(path));
  for (const std::string& want : {std::string(">t"), seq, std::string("X")}) EXPECT_EQ(r.readLine(), want);
  EXPECT_TRUE(r.eof());
}

TEST(LineReader, UnreadableFilesSayWhy) {
  LineReader r;
  EXPECT_FALSE(r.open("/nonexistent/file.fa"));
  EXPECT_EQ(r.error(), "the file does not exist");
  EXPECT_FALSE(r.open(::testing::TempDir()));
  EXPECT_EQ(r.error(), "it is a folder, not a file");
}
