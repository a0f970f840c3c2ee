// runtime_test.cpp -- the zero-filled block and its edge guards, the line reader, the seeded generator.
#include <gtest/gtest.h>

#include <fstream>
#include <random>
#include <vector>

#include "platform/linereader.h"
#include "platform/memoryblock.h"
#include "platform/rnd.h"

using namespace trelvane;

TEST(MemoryBlock, ZeroFilledDeepCopiedAndGuardedAtItsEdges) {
  MemoryBlock a(1000);
  for (int i = 0; i < 1000; ++i) ASSERT_EQ(a.get(i), 0);
  EXPECT_TRUE(!a.isNil() && MemoryBlock().isNil() && a.size() == 1000);
  MemoryBlock b = a;
  b.set(0, 8);
  EXPECT_EQ(a.get(0) * 10 + b.get(0), 8);
  MemoryBlock c(4);
  for (std::ptrdiff_t at : {-1, 4, 1'000'000}) c.set(at, 9);
  EXPECT_EQ(c.get(-1) + c.get(4) + c.data()[-1] + c.data()[4], 0);  // the padding stays zero
  c.setBytes(2, "abcdef");
  c.setBytes(-2, "xyz");
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(c.data()), 5), std::string("z\0ab\0", 5));
  c.setBytes(0, std::string("ab\0d", 4));
  EXPECT_EQ(c.cstringAt(0), "ab");
  EXPECT_EQ(c.cstringAt(3), "d");
  c.set(2, 'c');
  EXPECT_EQ(c.cstringAt(0), "abcd");  // no zero: up to the end
}

std::vector<std::string> lines(const std::string& text) {
  LineReader r;
  r.openMemory(text);
  std::vector<std::string> out;
  do out.push_back(r.readLine());
  while (!r.eof());
  return out;
}

TEST(LineReader, LineEndsLastLinesAndRawBytesBehind) {
  const std::vector<std::string> want = {"ACGT", "", "TTA"};
  for (const char* text : {"ACGT\n\nTTA\n", "ACGT\r\n\r\nTTA\r\n", "ACGT\r\rTTA\r", "ACGT\n\r\nTTA"})
    EXPECT_EQ(lines(text), want) << text;
  EXPECT_EQ(lines(""), std::vector<std::string>{""});
  EXPECT_EQ(lines("A\xe9\xff" "C\n"), std::vector<std::string>{"A\xe9\xff" "C"});  // high bytes unconverted
  LineReader r;
  r.openMemory(std::string("#\n\n\r\x05", 5));
  EXPECT_EQ(r.readLine(), "#");
  EXPECT_EQ(r.readBytes(10), std::string("\n\r\x05", 3));
  EXPECT_TRUE(r.eof());
  r.openMemory("#\r\nabc");
  EXPECT_EQ(r.readLine(), "#");
  EXPECT_EQ(r.readBytes(2), "ab");
  // a file, with a line longer than the reader's chunks
  const std::string path = ::testing::TempDir() + "/long_line.txt", seq(300000, 'G');
  std::ofstream(path, std::ios::binary) << ">t\r" << seq << "\r\nX";
  ASSERT_TRUE(r.open(path));
  for (const std::string& line : {std::string(">t"), seq, std::string("X")}) EXPECT_EQ(r.readLine(), line);
  EXPECT_TRUE(r.eof());
  EXPECT_FALSE(r.open("/nonexistent/file.fa"));
  EXPECT_EQ(r.error(), "the file does not exist");
  EXPECT_FALSE(r.open(::testing::TempDir()));
  EXPECT_EQ(r.error(), "it is a folder, not a file");
}

TEST(Rnd, TopFiftyThreeBitsOfMt19937_64) {
  Rnd r(1);
  std::mt19937_64 g(1);
  for (int i = 0; i < 100; ++i) ASSERT_EQ(r(), static_cast<double>(g() >> 11) / 9007199254740992.0) << i;
}
