// reader_tables.h -- what the two routes of the sequence reader share: the cara table, base codes by byte, the side's store.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/memoryblock.h"
#include "state/form.h"
#include "state/state.h"

namespace trelvane::detail {

using CaraTable = std::array<std::string, 257>;

// Base codes by byte: A 1, T 2, C 3, G 4 in either case, every other byte 0.
constexpr std::array<uint8_t, 256> makeCodes() {
  std::array<uint8_t, 256> codes{};
  codes['A'] = codes['a'] = kA;
  codes['T'] = codes['t'] = kT;
  codes['C'] = codes['c'] = kC;
  codes['G'] = codes['g'] = kG;
  return codes;
}
inline constexpr std::array<uint8_t, 256> kCodes = makeCodes();

// The base code that each byte becomes through cara, kVanish where its entry
// is empty, kRemovedN for an N that Remove Ns takes out (it vanishes too,
// and leaves a gap in the record's coordinates).
constexpr int16_t kVanish = -1;
constexpr int16_t kRemovedN = -2;
using CodeTable = std::array<int16_t, 256>;

// False where an entry holds more than one letter (no reader sets one).
bool makeCodeTable(const CaraTable& cara, bool removeN, CodeTable& table);

// The cara entries of one side's options: A, T, G, C, U in both cases, and N.
void setLetters(CaraTable& cara, bool complement);
void setN(CaraTable& cara, const std::string& entry);

// Stretches of removed letters, counted in file order as "length letters
// before the base numbered next", turned into the run's order.
struct RemovedTally {
  std::vector<RemovedRun> runs;
  int64_t pending = 0;
  void remove() { ++pending; }
  // Before writing base number `next` (1-based, file order).
  void base(int64_t next) {
    if (pending == 0) return;
    runs.push_back({next, pending});
    pending = 0;
  }
  // The runs along the run: reversed, the letters before base j come after
  // it, just before base j - 1, which sits at run position gap + count - j + 2.
  std::vector<RemovedRun> inRunOrder(int64_t count, bool reverse, int64_t gap);
};

// What one reading gives its side, stored all at once (a refused file
// leaves the state as it was): block, count, frequencies, table and
// origin; then EFSD or EFWS, the length check and Message.
struct SideReading {
  MemoryBlock block;
  int64_t count = 0;
  int64_t freq[5] = {};
  CaraTable cara;
  SequenceOrigin origin;
  std::string remark;  // what the user should know of the file's content
};
void storeSide(ComparisonState& st, Form& form, int side, SideReading&& r);

}  // namespace trelvane::detail
