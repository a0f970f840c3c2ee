// sequence_reader.cpp -- sequence text files into base codes, in two passes over the file.
#include "input/sequence_reader.h"

#include <algorithm>
#include <filesystem>
#include <optional>

#include "input/content_census.h"
#include "input/fasta_file.h"
#include "input/reader_tables.h"
#include "platform/linereader.h"
#include "platform/numtext.h"

namespace trelvane {
namespace detail {

bool makeCodeTable(const CaraTable& cara, bool removeN, CodeTable& table) {
  for (int b = 0; b < 256; ++b) {
    const std::string& entry = cara[b];
    if (entry.size() > 1) return false;
    table[b] = entry.empty() ? kVanish : kCodes[static_cast<unsigned char>(entry[0])];
  }
  if (removeN && table['N'] == kVanish) table['N'] = table['n'] = kRemovedN;
  return true;
}

// The ten entries of A, T, G, C, U in both cases. U is no synonym for T:
// it stays "U" (code 0) unless complemented into "A".
void setLetters(CaraTable& cara, bool complement) {
  struct Row { char letter, plain, comp; };
  static constexpr Row kRows[] = {
      {'A', 'A', 'T'}, {'T', 'T', 'A'}, {'G', 'G', 'C'}, {'C', 'C', 'G'}, {'U', 'U', 'A'}};
  for (const Row& r : kRows) {
    std::string entry(1, complement ? r.comp : r.plain);
    cara[static_cast<unsigned char>(r.letter)] = entry;
    cara[static_cast<unsigned char>(r.letter - 'A' + 'a')] = entry;
  }
}

void setN(CaraTable& cara, const std::string& entry) {
  cara['N'] = entry;
  cara['n'] = entry;
}

std::vector<RemovedRun> RemovedTally::inRunOrder(int64_t count, bool reverse, int64_t gap) {
  base(count + 1);
  if (!reverse) return std::move(runs);
  std::vector<RemovedRun> out;
  out.reserve(runs.size());
  for (auto r = runs.rbegin(); r != runs.rend(); ++r) out.push_back({gap + count - r->runPos + 2, r->length});
  return out;
}

void storeSide(ComparisonState& st, Form& form, int side, SideReading&& r) {
  const auto n32 = static_cast<int32_t>(r.count);
  st.cara = std::move(r.cara);
  st.origin[side] = std::move(r.origin);
  for (int c = 0; c < 5; ++c) st.basesfreq[c][side] = static_cast<int32_t>(r.freq[c]);
  if (side == 0) {
    st.m0 = std::move(r.block);
    st.nbbases = n32;
    // Each longest sequence resets the resamplings to its window positions.
    form.EFSD = Str(static_cast<double>(n32) - Val(form.EFWS));
  } else {
    st.m1 = std::move(r.block);
    st.nbbases1 = n32;
    if (Val(form.EFWS) > n32) form.EFWS = Str(n32);
  }

  // length check: equal lengths pass, and only a loaded other side counts
  if (st.nbbases < st.nbbases1 && st.f[1 - side]) {
    form.Message = side == 0 ? "Long sequence shorter than short sequence !"
                             : "short sequence longer than long sequence !";
    st.f[side].reset();
  } else {
    form.Message = (side == 0 ? "Long sequence read " : "Short sequence read ") + Str(n32) +
                   " bases" + r.remark;
  }
}

}  // namespace detail

namespace {

using detail::CaraTable;
using detail::CodeTable;
using detail::kCodes;
using detail::kRemovedN;
using detail::kVanish;
using detail::setLetters;
using detail::setN;

bool isTitle(std::string_view line) {
  return !line.empty() && (line[0] == '>' || line[0] == '%');
}

void formatInto(const CaraTable& cara, std::string_view line, std::string& out) {
  out.clear();
  if (isTitle(line)) return;
  for (unsigned char b : line) out += cara[b];
}

int64_t formattedLength(const CaraTable& cara, std::string_view line) {
  if (isTitle(line)) return 0;
  int64_t n = 0;
  for (unsigned char b : line) n += static_cast<int64_t>(cara[b].size());
  return n;
}

std::string readSide(ComparisonState& st, Form& form, int side) {
  if (!st.f[side]) {
    form.Message = "Cannot read the sequence: no file is chosen";
    return "no file is chosen";
  }
  const std::string path = *st.f[side];
  const std::string& region = side == 0 ? form.Region0 : form.Region1;
  if (!region.empty()) return detail::readRegion(st, form, side, path, region);
  // A compressed file reads by the very rules of the same file uncompressed.
  if (isCompressedFile(path)) {
    auto broken = std::make_shared<std::string>();
    detail::SequenceSource source{path,
                                  [path, broken](LineReader& in, std::string& why) {
                                    return openDecompressed(in, path, why, broken);
                                  },
                                  [broken] { return *broken; }};
    return detail::readSequence(st, form, side, source);
  }
  detail::SequenceSource source{path, [&path](LineReader& in, std::string& why) {
                                  if (in.open(path)) return true;
                                  why = in.error();
                                  return false;
                                }};
  return detail::readSequence(st, form, side, source);
}

}  // namespace

std::string formatseq(const ComparisonState& st, std::string_view line) {
  std::string out;
  formatInto(st.cara, line, out);
  return out;
}

std::string litlongue(ComparisonState& st, Form& form) { return readSide(st, form, 0); }

std::string litshort(ComparisonState& st, Form& form) { return readSide(st, form, 1); }

std::string cannotReadText(const std::string& path, const std::string& why) {
  std::string name = std::filesystem::path(path).filename().string();
  if (name.empty()) name = path;
  return "Cannot read " + name + ": " + why;
}

namespace detail {

std::string readSequence(ComparisonState& st, Form& form, int side, const SequenceSource& source,
                         int64_t maxTotal) {
  const bool comp = side == 0 ? form.Comp0 : form.Comp1;
  const bool reverse = side == 0 ? form.Reverse0 : form.Reverse1;
  const bool removeN = side == 0 ? form.CBRemoveN0 : form.CBRemoveN1;

  form.Message = "Read the sequence...";
  LineReader in;
  std::string why;
  if (!source.open(in, why)) {
    form.Message = cannotReadText(source.path, why);
    return why;
  }

  // The table is built aside and stored with the sequence at the end, so a
  // refused file leaves the whole state as it was.
  CaraTable cara = st.cara;
  setLetters(cara, comp);
  const std::string nEntry = removeN ? "" : "N";
  setN(cara, nEntry);
  // With Reverse on the first pass counts the Ns even when they are removed
  // later; the fill then starts that many bytes further back (kept as is).
  if (reverse) setN(cara, "N");

  // first pass: the size of the block, and what the file looks like
  int64_t total = 0;
  ContentCensus census;
  std::optional<std::string> firstTitle;
  std::string line;
  do {
    in.readLine(line);
    if (!firstTitle && isTitle(line)) firstTitle = line;
    total += reverse ? formattedLength(cara, line) : static_cast<int64_t>(line.size());
    census.add(line);
  } while (!in.eof() && total <= maxTotal);
  in.close();
  if (source.broken && !(why = source.broken()).empty()) {
    form.Message = cannotReadText(source.path, why);
    return why;
  }
  if (total > maxTotal) {
    why = "the sequence is too long (more than " + Str(maxTotal) + " characters)";
    form.Message = cannotReadText(source.path, why);
    return why;
  }
  setN(cara, nEntry);

  // second pass: the base codes
  if (!source.open(in, why)) {
    form.Message = cannotReadText(source.path, why);
    return why;
  }
  MemoryBlock block(total + 100);
  uint8_t* out = block.data();
  int64_t count = 0;
  int64_t freq[5] = {};
  CodeTable table;
  const bool direct = detail::makeCodeTable(cara, removeN, table);
  detail::RemovedTally removed;
  std::string clean;
  do {
    in.readLine(line);
    if (direct) {
      // the same bytes as formatseq and the code of each letter, in one pass
      if (isTitle(line)) continue;
      const auto* p = reinterpret_cast<const unsigned char*>(line.data());
      const std::size_t len = line.size();
      int64_t k = count;
      if (reverse) {
        uint8_t* end = out + (total - 1);  // the block fills from the back
        for (std::size_t i = 0; i < len && k < total; ++i) {
          const int16_t c = table[p[i]];
          if (c < 0) {
            if (c == kRemovedN) removed.remove();
            continue;
          }
          removed.base(k + 1);
          end[-k] = static_cast<uint8_t>(c);
          ++freq[c];
          ++k;
        }
      } else {
        for (std::size_t i = 0; i < len && k < total; ++i) {
          const int16_t c = table[p[i]];
          if (c < 0) {
            if (c == kRemovedN) removed.remove();
            continue;
          }
          removed.base(k + 1);
          out[k] = static_cast<uint8_t>(c);
          ++freq[c];
          ++k;
        }
      }
      count = k;
      continue;
    }
    formatInto(cara, line, clean);
    // A file that grew since the first pass is cut at the size of the block.
    const int64_t n = std::min<int64_t>(static_cast<int64_t>(clean.size()), total - count);
    const auto* p = reinterpret_cast<const unsigned char*>(clean.data());
    if (reverse) {
      uint8_t* dst = out + (total - count - 1);  // the block fills from the back
      for (int64_t k = 0; k < n; ++k) {
        const uint8_t c = kCodes[p[k]];
        dst[-k] = c;
        ++freq[c];
      }
    } else {
      uint8_t* dst = out + count;
      for (int64_t k = 0; k < n; ++k) {
        const uint8_t c = kCodes[p[k]];
        dst[k] = c;
        ++freq[c];
      }
    }
    count += n;
  } while (!in.eof());
  in.close();
  if (source.broken && !(why = source.broken()).empty()) {
    form.Message = cannotReadText(source.path, why);
    return why;
  }

  // the side's state, all at once; the joined file's own numbering counts
  // its letters, the Ns that Remove Ns took out included
  detail::SideReading r;
  r.block = std::move(block);
  r.count = count;
  std::copy(freq, freq + 5, r.freq);
  r.cara = std::move(cara);
  SequenceOrigin& origin = r.origin;
  origin.path = source.path;
  if (firstTitle) origin.record = recordNameOf(*firstTitle);
  // With Reverse the first pass counted the removed Ns: they stand as zeros ahead.
  origin.gap = reverse && removeN ? total - count : 0;
  int64_t letters = count + removed.pending;
  for (const RemovedRun& x : removed.runs) letters += x.length;
  origin.to = origin.recordLength = letters;
  origin.complement = comp;
  origin.reverse = reverse;
  origin.removeN = removeN;
  origin.removed = removed.inRunOrder(count, reverse, origin.gap);
  // A file that is no DNA still reads by the rules, but never unannounced.
  r.remark = census.remark();
  detail::storeSide(st, form, side, std::move(r));
  return "";
}

}  // namespace detail
}  // namespace trelvane
