// readers_fuzz.cpp -- the readers on bytes from memory, with the rules their state keeps.
#include "readers_fuzz.h"

#include "state/form.h"
#include "state/state.h"
#include "input/result_reader.h"
#include "input/sequence_reader.h"
#include "platform/linereader.h"

namespace trelvane::fuzz {
namespace {
// Counts stay small enough for a fuzzer's memory limit.
constexpr int64_t kMaxFuzzBases = 1 << 24;
}  // namespace

std::string readBoth(const uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  ComparisonState st;
  st.open();
  Form form;

  // sequence file
  const unsigned options = size ? data[0] : 0;
  form.Comp0 = options & 1;
  form.Reverse0 = options & 2;
  form.CBRemoveN0 = options & 4;
  st.f[0] = "fuzz.fa";
  detail::SequenceSource source{"fuzz.fa", [&bytes](LineReader& in, std::string&) {
                                  in.openMemory(bytes);
                                  return true;
                                }};
  detail::readSequence(st, form, 0, source, kMaxFuzzBases);
  if (st.nbbases < 0 || st.nbbases + 100 > st.m0.size()) return "nbbases outside m0";
  int64_t counted = 0;
  for (int c = 0; c < 5; ++c) counted += st.basesfreq[c][0];
  if (counted != st.nbbases) return "basesfreq does not add up to nbbases";
  for (std::ptrdiff_t i = 0; i < st.m0.size(); ++i)
    if (st.m0.get(i) > 4) return "a byte of m0 is no base code";

  // result file
  int graphs = 0;
  LineReader in;
  in.openMemory(bytes);
  detail::readResult(st, form, in, "fuzz.txt", [&graphs] { ++graphs; }, kMaxFuzzBases);
  const bool refused = form.Message.rfind("Cannot read ", 0) == 0;
  if (refused != (graphs == 0)) return "graph called for a refused file, or not for a read one";
  if (graphs > 1) return "graph called twice";
  if (!st.m2.isNil() && st.m2.size() != static_cast<std::ptrdiff_t>(st.nbbases) + 410)
    return "m2 is not nbbases + 410 bytes";
  return "";
}

}  // namespace trelvane::fuzz
