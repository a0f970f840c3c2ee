// run_transcript.h -- one run of rumcompute on a fresh window, and everything it leaves written out as text.
#pragma once

#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "engine/run.h"
#include "state/state.h"
#include "support/cases.h"
#include "support/files.h"

// The tests give RunSettings by designated fields; GCC 12 would warn about
// every field left to its default.
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"

namespace trelvane::testing {

inline uint8_t codeOf(char c) { return c == 'A' ? kA : c == 'T' ? kT : c == 'C' ? kC : c == 'G' ? kG : kN; }

// A sequence block as the readers leave it: one code a base, 100 zero bytes behind.
inline MemoryBlock blockOf(std::string_view letters) {
  MemoryBlock m(static_cast<std::ptrdiff_t>(letters.size()) + 100);
  for (std::size_t k = 0; k < letters.size(); ++k) m.set(static_cast<std::ptrdiff_t>(k), codeOf(letters[k]));
  return m;
}

// Records what a run tells its window; doEvents asks for a stop at its call stopAfter.
class RecordingHost : public RunHost {
 public:
  RecordingHost(ComparisonState& st, int stopAfter) : st_(st), stopAfter_(stopAfter) {}
  void message(const std::string& text) override { messages += (messages.empty() ? "" : "|") + text; }
  void progress(int value, int maximum) override { progress_.push_back(value), maximum_ = maximum; }
  void doEvents() override {
    if (++yields == stopAfter_) st_.askclose = true;
  }
  void setEFAnaTo(const std::string& text) override { efAnaTo += text + ";"; }
  void setClipboard(std::string text) override { clipboard = std::move(text), ++clipboardCalls; }
  void beep() override { ++beeps; }

  std::string messages, efAnaTo, clipboard;
  std::vector<int> progress_;
  int maximum_ = 0, yields = 0, clipboardCalls = 0, beeps = 0;

 private:
  ComparisonState& st_;
  int stopAfter_;
};

// A run described by its inputs: letters of both sides (none for CpG), the
// matrix, bytes poked into the blocks, and the fields.
struct RunInput {
  std::string lg, sh;
  float matrice[5][5] = {{0}, {0, 1}, {0, 0, 1}, {0, 0, 0, 1}, {0, 0, 0, 0, 1}};
  std::vector<std::tuple<int, int, uint8_t>> pokes;  // side, offset, byte
  int nbbases1 = -1;   // >= 0: nbbases1 rewritten without touching m1, as a stored result does
  bool m1nil = false;  // no shortest sequence was ever read
  bool noResultPath = false;  // the Save dialog was cancelled
  int stopAfter = -1;
  RunSettings s;
};

// A Single bit for bit: nine digits give every one back.
inline std::string single(float v) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "%.9g", static_cast<double>(v));
  return std::signbit(v) && std::isnan(v) ? std::string("-") + buf : buf;
}

// The run on a window with an earlier result (m2 of 3 bytes, maxgraph 12.5,
// nothing to redraw), then the end of the run as the main thread does it.
// progressValues: the bar's values (the default for a run on one thread), or their count only.
inline std::string runTranscript(const RunInput& in, std::optional<bool> progressValues = {}) {
  ComparisonState st;
  st.open();
  for (int side : {0, 1}) {
    const std::string& letters = side ? in.sh : in.lg;
    if (side && letters.empty()) break;
    (side ? st.m1 : st.m0) = blockOf(letters);
    (side ? st.nbbases1 : st.nbbases) = static_cast<int32_t>(letters.size());
    for (char c : letters) ++st.basesfreq[codeOf(c)][side];
  }
  for (auto [side, at, b] : in.pokes) (side ? st.m1 : st.m0).set(at, b);
  if (in.nbbases1 >= 0) st.nbbases1 = in.nbbases1;
  if (in.m1nil) st.m1 = MemoryBlock();
  std::memcpy(st.matrice, in.matrice, sizeof st.matrice);
  st.m2 = MemoryBlock(3);
  st.m2.set(0, 77);
  st.changegraph = false;
  st.maxgraph = 12.5f;

  RunSettings s = in.s;
  const std::string path = (std::filesystem::temp_directory_path() /
                            ("trelvane_run_" + std::to_string(::getpid()) + "_" + s.kernel + std::to_string(s.threads)))
                               .string();
  std::filesystem::remove(path);
  if (!in.noResultPath) s.resultPath = path;
  RecordingHost host(st, in.stopAfter);
  const RunOutcome out = rumcompute(st, s, host);
  Form form;
  form.EF_MaxX = "0.7";
  form.Results = "before";
  std::string graph = "not called";
  endOfRun(st, form, out, host, [&] {
    graph = "windgraph=" + std::to_string(st.windgraph) + " maxgraph=" + single(st.maxgraph) +
            " EF_MaxX=" + form.EF_MaxX + " Message=" + form.Message;
  });

  std::ostringstream t;
  if (out.refused) t << "refused: " << out.refusal << "\n";
  t << "stopped=" << out.stopped << " noRows=" << out.noRows << " written=" << out.resultWritten
    << " yields=" << host.yields << " clipboard calls=" << host.clipboardCalls << " beeps=" << host.beeps
    << " EFAnaTo=" << host.efAnaTo << "\nmessages: " << host.messages << "\nprogress of " << host.maximum_ << ": "
    // Beside the scan, the random expectation's thread adds its resamplings
    // to the bar as they are done: then only the count of updates is fixed.
    << (progressValues.value_or(s.threads == 1) ? cases::bytesText(host.progress_.data(), host.progress_.size())
                                                 : std::to_string(host.progress_.size()) + " updates")
    << "\ngraph: " << graph
    << "\nafter: windgraph=" << st.windgraph << " max=" << single(st.maxgraph) << " mean=" << single(st.meangraph)
    << " sd=" << single(st.sdgraph) << " H0 mean=" << single(st.omeangraph) << " H0 sd=" << single(st.osdgraph)
    << " H0 max=" << single(st.omaxgraph) << " SD low=" << single(st.sumu2bas) << " SD up=" << single(st.sumu2up)
    << " changegraph=" << st.changegraph << " running=" << st.running << " EF_MaxX=" << form.EF_MaxX
    << " Message=" << form.Message << " Results=" << (form.Results == out.report ? "report" : form.Results)
    << "\nm2 of " << st.m2.size() << ": " << cases::bytesText(st.m2.data(), static_cast<std::size_t>(st.m2.size()))
    << "\n[report]\n" << out.report << "[clipboard]\n" << host.clipboard << "[result file]\n";
  if (!std::filesystem::exists(path)) return t.str() + "(none)\n";
  const std::string file = readBytes(path);
  std::filesystem::remove(path);
  const std::size_t end = file.find("\n#\n"), hash = end == std::string::npos ? file.size() : end + 3;
  return t.str() + file.substr(0, hash) + "profile: " +
         cases::bytesText(reinterpret_cast<const uint8_t*>(file.data()) + hash, file.size() - hash) + "\n";
}

}  // namespace trelvane::testing
