// run.h -- rumcompute: one comparison run, and the narrow host it reports through.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "engine/text_sink.h"
#include "state/form.h"
#include "state/state.h"

namespace trelvane {

// The controls a run reads, taken from the form on the main thread when
// PBRUN is pressed (the Save dialog's answer too), so that the worker
// thread never touches a widget.
struct RunSettings {
  std::string EFWS = "30";
  std::string EFAnaFrom = "1";
  std::string EFAnaTo = "max";
  std::string EFIdentities = "20";
  std::string EFSD = "100";
  bool display0 = false;
  bool Display1 = false;
  bool CBCPG = false;
  bool CBFile = false;
  bool CBClipboard = false;
  bool CBFreqIB = true;
  // The file chosen in the Save dialog of CBFile; none when cancelled.
  std::optional<std::string> resultPath;
  // ProgressBar1's width in pixels: its Maximum during the run.
  int progressWidth = 262;
  // The seed of the run's one random generator (Rnd).
  uint64_t seed = 0;
  // The row kernel of the scans: "auto" (the fastest this processor has),
  // "scalar" (the reference, cell by cell), "generic", "sse2", "avx2" or
  // "avx512". A name the processor cannot run is taken as "auto". Every
  // kernel gives the same bytes.
  std::string kernel = "auto";
  // The most threads a run may use; 0 for every core. With two or more, the
  // random expectation runs beside the scan along the longest sequence.
  int threads = 0;
  // The most bytes the run's texts (the report and the rows) may hold; past
  // it the run stops with a failure that says so. 0 for no bound.
  uint64_t textLimit = 0;
  // Where the rows (of a run with CBClipboard) and the report go as the run
  // makes them; none keeps them in memory, as the window does. A rows sink
  // takes the rows alone: the clipboard is not set, and the head that goes
  // before them is RunOutcome::rowsHead. A report sink takes the whole
  // report: RunOutcome::report stays empty. A sink that fails to write
  // fails the run.
  TextSink* rowsSink = nullptr;
  TextSink* reportSink = nullptr;

  // The controls of the form, with a seed from the clock; resultPath and
  // progressWidth are the window's to fill in.
  static RunSettings fromForm(const Form& form);
};

// What a run tells the window. The Qt host posts each call to the main
// thread; the CLI and the tests answer directly.
class RunHost {
 public:
  virtual ~RunHost() = default;
  // A stage text in Message, repainted at once.
  virtual void message(const std::string& text) = 0;
  // ProgressBar1's Value and Maximum.
  virtual void progress(int value, int maximum) = 0;
  // Application.DoEvents: let pending user events through.
  virtual void doEvents() {}
  // The run sets EFAnaTo to "max"; the window runs the field's change
  // handler when the text changes.
  virtual void setEFAnaTo(const std::string& text) = 0;
  // The clipboard text of the run (head, "#", rows).
  virtual void setClipboard(std::string text) = 0;
  virtual void beep() {}
};

// What the worker hands back for the main thread's end of the run.
struct RunOutcome {
  bool stopped = false;        // askclose was set when the scans ended
  bool refused = false;        // the run did not start (see refusal)
  std::string refusal;         // why, as shown in Message
  bool noRows = false;         // the run wrote no row: no clipboard text, no file
  bool resultWritten = false;  // the result file was created and written
  std::string resultError;     // why the result file could not be written
  // Why the run ended before its end (its texts past settings.textLimit, or
  // out of memory): the run then ends as a stopped one.
  std::string failure;
  // Where the report's listing ends: the result block and the closing
  // lines follow from here.
  std::size_t listingEnd = 0;
  std::string report;          // the text for Results
  std::string rowsHead;        // with a rows sink: the clipboard text's head, up to "#"
  // The result properties (set on the window only when not stopped).
  int32_t windgraph = 0;
  float maxgraph = 0, meangraph = 0, sdgraph = 0;
  float omeangraph = 0, osdgraph = 0, omaxgraph = 0;
  float sumu2bas = 0, sumu2up = 0;
  std::string EF_MaxX;         // the new upper limit of the scale
};

// One comparison run, on the calling thread (the window's worker, the CLI,
// a test): the set-up, the substitution scan and the random expectation or
// the CpG scan, then the rows, the statistics, the report, the clipboard
// (through host.setClipboard) and the result file (at s.resultPath). It reads
// no control: everything comes from s; it polls st.askclose at its stop
// points. It replaces st.m2 and sets st.changegraph and st.running; the other
// result properties are set by endOfRun. A longest sequence without any base
// is refused before anything changes.
RunOutcome rumcompute(ComparisonState& st, const RunSettings& s, RunHost& host);

// The end of a run, on the main thread. A finished run sets the result
// properties and EF_MaxX, calls graph (the drawing), then shows "End..." in
// Message (the failure instead where the run failed), puts the report into
// Results and beeps; a stopped run does only the last three. A refused run changes nothing. What Event_Run does after
// (caption, panel, running, askclose) is the caller's.
void endOfRun(ComparisonState& st, Form& form, const RunOutcome& out, RunHost& host,
              const std::function<void()>& graph);

// The failure of a run out of memory, with its remedy.
std::string outOfMemoryText(const RunSettings& s);

// The text of EF_MaxX for a highest score: with CBFreqIB "1" when it equals
// W, else the next tenth strictly above maxgraph / W; without, maxgraph.
std::string scaleLimit(float maxgraph, int32_t W, bool CBFreqIB);

}  // namespace trelvane
