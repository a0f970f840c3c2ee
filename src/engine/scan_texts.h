// scan_texts.h -- what the scan writes of a position: its row with the tied starts, its alignments, its profile byte.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace trelvane {

struct RunContext;

// Str of a Single, kept for the next call: neighbouring positions often
// share their best score.
class ScoreTexts {
 public:
  std::string_view of(float s);

 private:
  std::optional<std::string> text_;
  uint32_t bits_ = 0;
};

// A start j of the tie list: j + 1 and a TAB.
void appendStart(std::string& tielist, int64_t j);
// The alignment of shortest window j against longest window i, both 0-based,
// into the report: the two starts, the two windows' letters and the line of
// matches.
void listAlignment(RunContext& c, int64_t j, int64_t i, const uint8_t* longWin);
// The same alignment appended to r, m1 the shortest sequence.
void alignmentText(std::string& r, const uint8_t* m1, int32_t W, int64_t j, int64_t i, const uint8_t* longWin);
// A position's row with its profile (m2 and the sums): a scored row with the
// tie list, or an N row.
void scoredRow(RunContext& c, int64_t i, uint8_t base, float s);
void nRow(RunContext& c, int64_t i, uint8_t base);
// scoredRow with the ties taken from stretch entries (j + 1 a tie, a negative
// entry a listed start, passed over) instead of the tie list.
void scoredRowOfEntries(RunContext& c, int64_t i, uint8_t base, float s, const int64_t* entries,
                        uint32_t count);
// The profile of a position alone, its row written apart: the sums take the
// positions' scores in their order.
void scoredProfile(RunContext& c, int64_t i, float s);
void nProfile(RunContext& c, int64_t i);
// The text of a row alone, appended to out: a part of the scan writes its
// rows on its own thread, and they join the run's rows in their order.
void scoredRowText(std::string& out, ScoreTexts& texts, int64_t i, uint8_t base, float s, const int64_t* entries,
                   uint32_t count);
void nRowText(std::string& out, int64_t i, uint8_t base);

}  // namespace trelvane
