// region_reader.cpp -- one side read from a record or region of a FASTA file, by the reader's table.
#include <algorithm>
#include <cstring>
#include <filesystem>

#include "input/content_census.h"
#include "input/fasta_file.h"
#include "input/reader_tables.h"
#include "input/region.h"
#include "input/sequence_reader.h"
#include "platform/numtext.h"

namespace trelvane::detail {
namespace {

// "chr1, chr2, chr3 and 21 more": enough names to see what the file holds.
std::string someNames(const std::vector<FastaRecord>& records) {
  std::string out;
  const std::size_t shown = std::min<std::size_t>(records.size(), 5);
  for (std::size_t i = 0; i < shown; ++i) out += (i ? ", " : "") + records[i].name;
  if (records.size() > shown) out += " and " + std::to_string(records.size() - shown) + " more";
  return out;
}

}  // namespace

std::string readRegion(ComparisonState& st, Form& form, int side, const std::string& path,
                       const std::string& text) {
  const bool comp = side == 0 ? form.Comp0 : form.Comp1;
  const bool reverse = side == 0 ? form.Reverse0 : form.Reverse1;
  const bool removeN = side == 0 ? form.CBRemoveN0 : form.CBRemoveN1;
  form.Message = "Read the sequence...";
  auto refuse = [&](const std::string& why) {
    form.Message = cannotReadText(path, why);
    return why;
  };

  // the record and its range
  FastaFile file;
  std::string why;
  if (!file.open(path, why)) return refuse(why);
  if (file.records().empty()) return refuse("it holds no FASTA record (no title line beginning with \">\")");
  const std::optional<Region> region =
      parseRegion(text, [&file](const std::string& name) { return file.find(name) != nullptr; }, why);
  if (!region) return refuse(why);
  const FastaRecord* record = file.find(region->record);
  if (!record)
    return refuse("it has no record '" + region->record + "' (it holds " + someNames(file.records()) + ")");
  if (record->length == 0) return refuse("its record '" + record->name + "' is empty");
  const int64_t to = region->to.value_or(record->length);
  if (region->from > record->length || to > record->length)
    return refuse("'" + text + "' runs past the end of " + record->name + ", which has " +
                  Str(static_cast<double>(record->length)) + " bases");
  const int64_t length = to - region->from + 1;
  if (length > kMaxBases)
    return refuse("the region is too long (more than " + Str(static_cast<double>(kMaxBases)) + " bases)");

  // the table of a plain file's reading, built aside
  CaraTable cara = st.cara;
  setLetters(cara, comp);
  setN(cara, removeN ? "" : "N");
  CodeTable table;
  makeCodeTable(cara, removeN, table);

  // The letters fill forward; a reversed reading is turned round after, as
  // the plain reader's back-to-front fill would have placed it.
  MemoryBlock block(length + 100);
  uint8_t* out = block.data();
  int64_t count = 0, removedN = 0, seen = 0, freq[5] = {};
  RemovedTally removed;
  ContentCensus census;
  bool ok = file.letters(record->name, region->from, to, [&](const char* p, std::size_t n) {
    census.add(std::string_view(p, n));
    const auto* b = reinterpret_cast<const unsigned char*>(p);
    for (std::size_t i = 0; i < n && seen < length; ++i, ++seen) {
      const int16_t c = table[b[i]];
      if (c < 0) {
        // every letter counts in the record's numbering, so any that vanishes leaves a gap
        removedN += c == kRemovedN;
        removed.remove();
        continue;
      }
      removed.base(count + 1);
      out[count++] = static_cast<uint8_t>(c);
      ++freq[c];
    }
  }, why);
  if (!ok) return refuse(why);
  if (census.otherLetters() * 4 > census.letters())
    return refuse("'" + text + "' looks like a protein sequence, not DNA: " +
                  Str(static_cast<double>(census.otherLetters())) + " of its " +
                  Str(static_cast<double>(census.letters())) + " letters are not A, C, G, T or N");

  // With Reverse the plain reader's first pass counts the Ns that Remove Ns
  // then takes out, and leaves that many zeros ahead: kept the same here.
  const int64_t gap = reverse && removeN ? removedN : 0;
  if (reverse) {
    std::reverse(out, out + count);
    std::memmove(out + gap, out, static_cast<std::size_t>(count));
    std::memset(out, 0, static_cast<std::size_t>(gap));
  }

  SideReading r;
  r.block = std::move(block);
  r.count = count;
  std::copy(freq, freq + 5, r.freq);
  r.cara = std::move(cara);
  r.origin.path = path;
  r.origin.record = record->name;
  r.origin.recordLength = record->length;
  r.origin.from = region->from;
  r.origin.to = to;
  r.origin.wholeFile = false;
  r.origin.complement = comp;
  r.origin.reverse = reverse;
  r.origin.removeN = removeN;
  r.origin.gap = gap;
  r.origin.removed = removed.inRunOrder(count, reverse, gap);
  storeSide(st, form, side, std::move(r));
  return "";
}

}  // namespace trelvane::detail
