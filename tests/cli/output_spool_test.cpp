// output_spool_test.cpp -- a spooled output put in place behind its head: the same bytes into a file or a pipe, nothing left beside.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>

#include <unistd.h>

#include "cli/output_spool.h"
#include "support/files.h"

namespace trelvane::testing {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> names(const fs::path& dir) {
  std::vector<std::string> out;
  for (const auto& e : fs::directory_iterator(dir)) out.push_back(e.path().filename().string());
  std::sort(out.begin(), out.end());
  return out;
}

class Spool : public ::testing::Test {
 protected:
  // The pieces as a run hands them over, an empty one among them.
  void feed(cli::OutputSpool& s) {
    for (const char* piece : {"1\tA\t3\n", "2\tC\t4\t17\n", "", "3\tG\t2\n"}) s.write(piece);
  }
  ScratchDir scratch{"spool"};
  const fs::path& dir = scratch.path;
  const std::string target = (dir / "rows.txt").string();
};

TEST_F(Spool, PutsHeadAndTextInPlaceAndLeavesNothingBeside) {
  for (std::string head : {"Trelvane comparison\nW=30\n", ""}) {
    cli::OutputSpool s(target, "rows");
    std::string why;
    ASSERT_TRUE(s.open(&why)) << why;
    feed(s);
    ASSERT_TRUE(s.commit(cli::Console{}, head, &why)) << why;
    EXPECT_EQ(readBytes(target), head + "1\tA\t3\n2\tC\t4\t17\n3\tG\t2\n");
    EXPECT_EQ(names(dir), std::vector<std::string>{"rows.txt"});
  }
}

TEST_F(Spool, RewritesEveryPieceOnItsWay) {
  auto upper = [](std::string& out, std::string_view in) {
    for (char ch : in) out += static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
  };
  cli::OutputSpool s(target, "rows", upper);
  std::string why;
  ASSERT_TRUE(s.open(&why)) << why;
  s.write("chr1\t5\n");
  s.write("chr1\t6\n");
  ASSERT_TRUE(s.commit(cli::Console{}, "head\n", &why)) << why;
  EXPECT_EQ(readBytes(target), "head\nCHR1\t5\nCHR1\t6\n");
}

TEST_F(Spool, AnUncommittedRunLeavesTheFileOfBefore) {
  { std::ofstream(target) << "the earlier rows\n"; }
  {
    cli::OutputSpool s(target, "rows");
    std::string why;
    ASSERT_TRUE(s.open(&why)) << why;
    feed(s);
  }
  EXPECT_EQ(readBytes(target), "the earlier rows\n");
  EXPECT_EQ(names(dir), std::vector<std::string>{"rows.txt"});
}

// A file takes the spool through the kernel's copy; a pipe through a buffer.
TEST_F(Spool, WritesStandardOutputAfterTheHead) {
  for (bool pipe : {false, true}) {
    int ends[2] = {-1, -1};
    std::FILE* out = nullptr;
    if (pipe) {
      ASSERT_EQ(::pipe(ends), 0);
      out = ::fdopen(ends[1], "w");
    } else {
      out = std::tmpfile();
    }
    ASSERT_NE(out, nullptr);
    cli::Console console;
    console.out = out;
    cli::OutputSpool s("-", "rows");
    std::string why;
    ASSERT_TRUE(s.open(&why)) << why;
    feed(s);
    ASSERT_TRUE(s.commit(console, "H\n", &why)) << why;
    std::string got(64, '\0');
    if (pipe) {
      std::fclose(out);
      got.resize(static_cast<std::size_t>(std::max<ssize_t>(::read(ends[0], got.data(), got.size()), 0)));
      ::close(ends[0]);
    } else {
      std::rewind(out);
      got.resize(std::fread(got.data(), 1, got.size(), out));
      std::fclose(out);
    }
    EXPECT_EQ(got, "H\n1\tA\t3\n2\tC\t4\t17\n3\tG\t2\n") << (pipe ? "pipe" : "file");
    EXPECT_EQ(names(dir).size(), 0u);
  }
}

}  // namespace
}  // namespace trelvane::testing
