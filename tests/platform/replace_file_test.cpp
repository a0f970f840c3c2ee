// replace_file_test.cpp -- a finished file moved onto its target: over a file, onto nothing, never onto a directory.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "platform/replace_file.h"
#include "support/files.h"

namespace fs = std::filesystem;
using namespace trelvane;
using trelvane::testing::readBytes;

namespace {

void put(const fs::path& p, const std::string& text) { std::ofstream(p, std::ios::binary) << text; }

class ReplaceFile : public ::testing::Test {
 protected:
  trelvane::testing::ScratchDir scratch_{"replace"};
  const fs::path& dir_ = scratch_.path;
};

TEST_F(ReplaceFile, TakesThePlaceOfAFileOrOfNothingAndLeavesNoOtherName) {
  const fs::path part = dir_ / "out.part", out = dir_ / "out";
  put(out, "old bytes, longer than the new ones");
  const fs::path other = dir_ / "other";
  fs::create_hard_link(out, other);  // a second name of the old file keeps it
  put(part, "new");
  EXPECT_FALSE(replaceFile(part.string(), out.string()));
  EXPECT_EQ(readBytes(out), "new");
  EXPECT_EQ(readBytes(other), "old bytes, longer than the new ones");
  EXPECT_FALSE(fs::exists(part));

  put(part, "first");
  const fs::path fresh = dir_ / "fresh";
  EXPECT_FALSE(replaceFile(part.string(), fresh.string()));
  EXPECT_EQ(readBytes(fresh), "first");
  EXPECT_EQ(std::distance(fs::directory_iterator(dir_), fs::directory_iterator()), 3);  // out, other, fresh
}

TEST_F(ReplaceFile, ReplacesALinkItselfAndRefusesADirectory) {
  const fs::path part = dir_ / "out.part", pointee = dir_ / "pointee", link = dir_ / "link";
  put(pointee, "kept");
  fs::create_symlink(pointee, link);
  put(part, "new");
  EXPECT_FALSE(replaceFile(part.string(), link.string()));
  EXPECT_FALSE(fs::is_symlink(link));
  EXPECT_EQ(readBytes(link), "new");
  EXPECT_EQ(readBytes(pointee), "kept");

  const fs::path folder = dir_ / "folder";
  fs::create_directories(folder / "inside");
  put(part, "new");
  EXPECT_TRUE(replaceFile(part.string(), folder.string()));
  EXPECT_TRUE(fs::is_directory(folder / "inside"));
  EXPECT_EQ(readBytes(part), "new");  // nothing lost

  EXPECT_TRUE(replaceFile((dir_ / "missing").string(), (dir_ / "target").string()));
  EXPECT_FALSE(fs::exists(dir_ / "target"));
}

}  // namespace
