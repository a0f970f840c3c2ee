// content_census.h -- what a sequence file looks like: letters that are no DNA base, binary bytes, FASTQ or protein.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace trelvane {

// Counts, over the lines of a file as the reader takes them, the letters of
// its sequence lines that are not A, C, G, T or N (either case), and the
// bytes that no text holds. The file still reads by the reader's rules;
// this only says what a user should be told of it.
class ContentCensus {
 public:
  void add(std::string_view line);

  int64_t letters() const { return letters_; }
  int64_t otherLetters() const { return other_; }

  // "" for a file that looks like DNA, a few odd letters included; else
  // what it looks like (binary, FASTQ, protein) and how many of its letters
  // are no base, to follow the reader's message.
  std::string remark() const;

 private:
  int64_t lines_ = 0, bytes_ = 0, letters_ = 0, other_ = 0, control_ = 0;
  bool nul_ = false, fastqHead_ = false, fastqPlus_ = false;
};

}  // namespace trelvane
