// readers_fuzz.cpp -- libFuzzer target: any bytes as a sequence file and as a result file, with the rules the state keeps.
#include <cstddef>
#include <cstdint>
#include <string>

#include "check.h"
#include "state/form.h"
#include "state/state.h"
#include "input/result_reader.h"
#include "input/sequence_reader.h"
#include "platform/linereader.h"

using namespace trelvane;

// Counts stay small enough for a fuzzer's memory limit.
constexpr int64_t kMaxFuzzBases = 1 << 24;

// The reader's options come from the first byte.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  const std::string bytes(reinterpret_cast<const char*>(data), size);
  ComparisonState st;
  st.open();
  Form form;
  const unsigned options = size ? data[0] : 0;
  form.Comp0 = options & 1, form.Reverse0 = options & 2, form.CBRemoveN0 = options & 4;
  st.f[0] = "fuzz.fa";
  detail::SequenceSource source{"fuzz.fa", [&bytes](LineReader& in, std::string&) {
                                  in.openMemory(bytes);
                                  return true;
                                }};
  detail::readSequence(st, form, 0, source, kMaxFuzzBases);
  FUZZ_CHECK(st.nbbases >= 0 && st.nbbases + 100 <= st.m0.size(), "nbbases lies inside m0");
  int64_t counted = 0;
  for (int c = 0; c < 5; ++c) counted += st.basesfreq[c][0];
  FUZZ_CHECK(counted == st.nbbases, "basesfreq adds up to nbbases");
  for (std::ptrdiff_t i = 0; i < st.m0.size(); ++i) FUZZ_CHECK(st.m0.get(i) <= 4, "every byte of m0 is a base code");

  int graphs = 0;
  LineReader in;
  in.openMemory(bytes);
  detail::readResult(st, form, in, "fuzz.txt", [&graphs] { ++graphs; }, kMaxFuzzBases);
  const bool refused = form.Message.rfind("Cannot read ", 0) == 0;
  FUZZ_CHECK(refused == (graphs == 0) && graphs <= 1, "a read file is drawn once, a refused one never");
  FUZZ_CHECK(st.m2.isNil() || st.m2.size() == static_cast<std::ptrdiff_t>(st.nbbases) + 410,
             "m2 is nbbases + 410 bytes");
  return 0;
}
