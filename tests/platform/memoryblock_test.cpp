// memoryblock_test.cpp -- the zero-filled block and its edge guards.
#include "platform/memoryblock.h"

#include <gtest/gtest.h>

using namespace trelvane;

TEST(MemoryBlock, NewBlockIsZeroFilledAndCopiesAreDeep) {
  MemoryBlock a(1000);
  EXPECT_EQ(a.size(), 1000);
  for (int i = 0; i < 1000; ++i) ASSERT_EQ(a.get(i), 0);
  EXPECT_FALSE(a.isNil());
  EXPECT_TRUE(MemoryBlock().isNil());
  MemoryBlock b = a;
  b.set(0, 8);
  EXPECT_EQ(a.get(0), 0);
  EXPECT_EQ(b.get(0), 8);
}

TEST(MemoryBlock, ReadsOutsideGiveZeroAndWritesOutsideAreDropped) {
  MemoryBlock b(4);
  b.set(-1, 9);
  b.set(4, 9);
  b.set(1'000'000, 9);
  EXPECT_EQ(b.get(-1), 0);
  EXPECT_EQ(b.get(4), 0);
  EXPECT_EQ(b.data()[-1], 0);  // the padding stays zero
  EXPECT_EQ(b.data()[4], 0);
  b.setBytes(2, "abcdef");
  EXPECT_EQ(b.get(2), 'a');
  EXPECT_EQ(b.get(3), 'b');
  EXPECT_EQ(b.data()[4], 0);
  b.setBytes(-2, "xyz");
  EXPECT_EQ(b.get(0), 'z');
}

TEST(MemoryBlock, CStringStopsAtFirstZero) {
  MemoryBlock b(10);
  b.setBytes(0, std::string("ab\0cd", 5));
  EXPECT_EQ(b.cstringAt(0), "ab");
  EXPECT_EQ(b.cstringAt(3), "cd");
  MemoryBlock full(3);
  full.setBytes(0, "xyz");
  EXPECT_EQ(full.cstringAt(0), "xyz");
}
