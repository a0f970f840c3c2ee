// content_census.cpp -- the census of a sequence file's letters and bytes, and what the user is told of it.
#include "input/content_census.h"

#include <array>

#include "platform/numtext.h"

namespace trelvane {

namespace {

enum : uint8_t { kBase, kLetter, kControl, kOther };

constexpr std::array<uint8_t, 256> makeKinds() {
  std::array<uint8_t, 256> kinds{};
  for (int b = 0; b < 256; ++b) {
    const bool letter = (b >= 'A' && b <= 'Z') || (b >= 'a' && b <= 'z');
    const bool space = b == '\t' || b == '\n' || b == '\v' || b == '\f' || b == '\r';
    kinds[b] = letter ? kLetter : (b < 32 && !space) || b == 127 ? kControl : kOther;
  }
  for (char c : {'A', 'C', 'G', 'T', 'N', 'a', 'c', 'g', 't', 'n'}) kinds[static_cast<uint8_t>(c)] = kBase;
  return kinds;
}
constexpr std::array<uint8_t, 256> kKinds = makeKinds();

}  // namespace

void ContentCensus::add(std::string_view line) {
  ++lines_;
  bytes_ += static_cast<int64_t>(line.size()) + 1;
  // FASTQ: "@name", the bases, "+", the qualities
  if (lines_ == 1) fastqHead_ = !line.empty() && line[0] == '@';
  if (lines_ == 3) fastqPlus_ = !line.empty() && line[0] == '+';
  const bool title = !line.empty() && (line[0] == '>' || line[0] == '%');
  // Counted in registers: an array indexed by kind made each byte wait on
  // the count of the byte before, most bytes being bases.
  int64_t bases = 0, letters = 0, control = 0;
  bool nul = false;
  for (unsigned char b : line) {
    const uint8_t kind = kKinds[b];
    bases += kind == kBase;
    letters += kind == kLetter;
    control += kind == kControl;
    nul |= b == 0;
  }
  nul_ |= nul;
  control_ += control;
  if (title) return;
  letters_ += bases + letters;
  other_ += letters;
}

std::string ContentCensus::remark() const {
  std::string looks;
  if (nul_ || control_ * 100 > bytes_) looks = "binary data, not text";
  else if (fastqHead_ && fastqPlus_) looks = "FASTQ (reads with their qualities), not FASTA";
  else if (other_ * 4 > letters_) looks = "a protein sequence or another format, not DNA";
  // A few letters of another alphabet (IUPAC codes) make no remark.
  if (looks.empty()) return "";
  std::string text = "; the file looks like " + looks + ": ";
  text += Str(static_cast<double>(other_)) + " of its " + Str(static_cast<double>(letters_)) +
          " letters are not A, C, G, T or N";
  return text;
}

}  // namespace trelvane
