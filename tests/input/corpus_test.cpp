// corpus_test.cpp -- the fuzz corpus of the readers, replayed.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "fuzz/readers_fuzz.h"

TEST(ReadersCorpus, EveryInputKeepsTheStateRules) {
  const std::filesystem::path dir = std::filesystem::path(TRELVANE_INPUT_CORPUS);
  int inputs = 0;
  for (const auto& entry : std::filesystem::directory_iterator(dir)) {
    std::ifstream in(entry.path(), std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    const std::string bytes = s.str();
    EXPECT_EQ(trelvane::fuzz::readBoth(reinterpret_cast<const uint8_t*>(bytes.data()),
                                       bytes.size()),
              "")
        << entry.path().filename();
    ++inputs;
  }
  EXPECT_GE(inputs, 10);
}
