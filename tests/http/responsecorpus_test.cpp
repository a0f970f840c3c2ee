// responsecorpus_test.cpp -- replays the fuzzing corpus of server streams through BasicHTTP.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "responsefeed.h"

using namespace trelvane::http::testing;

namespace {

std::vector<uint8_t> bytesOf(const std::filesystem::path& p) {
  std::ifstream in(p, std::ios::binary);
  return std::vector<uint8_t>(std::istreambuf_iterator<char>(in), {});
}

}  // namespace

// Every stream ends with the connection closed, at most one delivery per
// connection, and no more buffered than was sent.
TEST(ResponseCorpus, EveryStreamEndsCleanly) {
  int entries = 0;
  for (const auto& e : std::filesystem::directory_iterator(TRELVANE_HTTP_CORPUS)) {
    std::vector<uint8_t> bytes = bytesOf(e.path());
    FeedOutcome o = feedResponse(bytes.data(), bytes.size());
    EXPECT_GE(o.connections, 1) << e.path();
    EXPECT_LE(o.deliveries, o.connections) << e.path();
    EXPECT_LE(o.buffered, bytes.size()) << e.path();
    ++entries;
  }
  EXPECT_GE(entries, 10);
}

// The seeds whose outcome is known.
TEST(ResponseCorpus, KnownSeedsGiveTheirOutcome) {
  auto run = [](const char* name) {
    std::vector<uint8_t> bytes = bytesOf(std::filesystem::path(TRELVANE_HTTP_CORPUS) / name);
    return feedResponse(bytes.data(), bytes.size());
  };
  FeedOutcome redirect = run("redirect-then-page.http");
  EXPECT_EQ(redirect.connections, 2);
  EXPECT_EQ(redirect.deliveries, 1);
  FeedOutcome auth = run("auth-retry.http");
  EXPECT_EQ(auth.connections, 2);
  EXPECT_EQ(auth.deliveries, 1);
  EXPECT_EQ(run("not-found.http").deliveries, 0);
  EXPECT_EQ(run("header-never-ends.http").deliveries, 0);
  EXPECT_EQ(run("chunked-page.http").buffered, 31u);
}
