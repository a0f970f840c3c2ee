// comparison.cpp -- compare and cpg: the window's fields filled in a user's order, one run, the outputs.
#include <unistd.h>

#include <charconv>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <optional>
#include <new>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "state/profile.h"
#include "cli/cli.h"
#include "cli/commands.h"
#include "cli/console_host.h"
#include "cli/interrupt.h"
#include "cli/options.h"
#include "cli/output_spool.h"
#include "plots/picture_qt.h"
#include "state/form.h"
#include "engine/run.h"
#include "state/state.h"
#include "platform/linereader.h"
#include "platform/numtext.h"
#include "platform/replace_file.h"
#include "platform/rnd.h"

#include "input/panel.h"
#include "input/region.h"
#include "input/text_fields.h"
#include "model/aligned.h"
#include "plots/dotplot.h"
#include "plots/graph.h"

namespace trelvane::cli {
namespace {

// The first line of a stored result, which the panel diverts to the result
// reader: the comparison commands take sequences only.
bool isStoredResult(const std::string& path) {
  LineReader in;
  if (!in.open(path)) return false;
  return isResultHead(in.readLine());
}

// A sequence without any of A, T, C, G (empty, all N, all U ...).
bool holdsNoBase(const ComparisonState& st, int side) {
  int64_t bases = 0;
  for (int code = kA; code <= kG; ++code) bases += st.basesfreq[code][side];
  return bases == 0;
}


// A staging file that is removed when it goes out of scope, on every road
// out of the command (a stop, a failure, an exception), unless it was renamed.
class StagingFile {
 public:
  explicit StagingFile(std::string path) : path_(std::move(path)) { removeQuietly(path_); }
  ~StagingFile() {
    if (!path_.empty()) removeQuietly(path_);
  }
  StagingFile(const StagingFile&) = delete;
  StagingFile& operator=(const StagingFile&) = delete;
  const std::string& path() const { return path_; }
  // Moves the file to target; the staging name is then gone.
  bool renameTo(const std::string& target, std::string* why) {
    const std::error_code ec = replaceFile(path_, target);
    if (ec) {
      *why = "cannot write " + target + ": " + ec.message();
      return false;
    }
    path_.clear();
    return true;
  }

 private:
  std::string path_;
};

// Checks what must hold before anything is read: the inputs can be read and
// hold sequences, the outputs can be created, the build can draw.
bool checkFiles(const ComparisonOptions& o, const Console& console, int& status) {
  std::string why;
  std::vector<std::string> inputs = {o.longPath};
  if (!o.cpg) inputs.push_back(o.shortPath);
  if (o.aligned1) inputs.insert(inputs.end(), {*o.aligned1, *o.aligned2});
  for (const std::string& path : inputs) {
    if (!canReadFile(path, &why)) {
      status = badInput(console, "cannot read " + path + ": " + why);
      return false;
    }
  }
  for (std::size_t k = 0; k < (o.cpg ? 1u : 2u); ++k) {
    if (isStoredResult(inputs[k])) {
      status = badInput(console, inputs[k] +
                                     " is a stored result, not a sequence: draw it with '" +
                                     kProgram + " redraw'");
      return false;
    }
  }
  for (const auto* out : {&o.report, &o.rows, &o.result, &o.svg, &o.pdf, &o.png, &o.dotplot}) {
    if (*out && !canCreateFile(**out, &why)) {
      status = badInput(console, why);
      return false;
    }
  }
  for (const std::string& out : o.tracks.files()) {
    if (!canCreateFile(out, &why)) {
      status = badInput(console, why);
      return false;
    }
  }
  return true;
}


// LONG:REGION and SHORT:REGION, where no file has the whole name: the
// file and its region apart, the region beside --long-region refused.
bool splitRegions(ComparisonOptions& o, const Console& console, int& status) {
  const std::pair<std::string*, std::optional<std::string>*> sides[] = {
      {&o.longPath, &o.longRegion}, {&o.shortPath, &o.shortRegion}};
  for (const auto& [path, region] : sides) {
    if (path->empty() || canReadFile(*path, nullptr)) continue;
    std::string file, part, why;
    if (!splitFileRegion(*path, file, part, why)) {
      status = badInput(console, why);
      return false;
    }
    if (part.empty()) continue;
    if (*region) {
      status = badInput(console, *path + " names a region, and --" +
                                     (path == &o.longPath ? "long" : "short") +
                                     "-region another: give one");
      return false;
    }
    *path = file;
    *region = part;
  }
  return true;
}

// Rows with each position in the record's own coordinates ("-" where a
// position holds no base of the record), appended to out.
void appendRowsInRecordCoordinates(std::string& out, std::string_view rows, const SequenceOrigin& origin) {
  for (std::size_t at = 0; at < rows.size();) {
    std::size_t end = rows.find('\n', at);
    end = end == std::string_view::npos ? rows.size() : end + 1;
    const std::size_t tab = rows.find('\t', at);
    if (tab == std::string_view::npos || tab >= end) {
      out.append(rows, at, end - at);
    } else {
      int64_t run = 0;
      std::from_chars(rows.data() + at, rows.data() + tab, run);
      const std::optional<int64_t> pos = recordPosition(origin, run);
      out += pos ? std::to_string(*pos) : "-";
      out.append(rows, tab, end - tab);
    }
    at = end;
  }
}

}  // namespace

namespace {

int comparison(bool cpg, const std::vector<std::string>& args, const Console& console,
               const DoEventsHook& hook) {
  ComparisonOptions o;
  std::string error;
  if (!parseComparisonOptions(cpg, args, o, &error)) return usageError(console, error, cpg ? "cpg" : "compare");
  if (o.help || o.version) return helpOrVersion(console, o.help, comparisonHelp());
  int status = kExitOk;
  if (!splitRegions(o, console, status) || !checkFiles(o, console, status)) return status;

  // A new window: its open event, every control at its default.
  ComparisonState st;
  st.open();
  Form form;
  std::function<void()> graph = [&st, &form] {
    Graph(st, form);
  };

  // The window size first, left as a user leaves the field.
  if (o.window) {
    form.EFWS = *o.window;
    EFWS_LostFocus(form);
  }
  form.Comp0 = o.longComplement;
  form.Reverse0 = o.longReverse;
  form.CBRemoveN0 = o.longRemoveN;
  form.Comp1 = o.shortComplement;
  form.Reverse1 = o.shortReverse;
  form.CBRemoveN1 = o.shortRemoveN;
  form.Region0 = o.longRegion.value_or("");
  form.Region1 = o.shortRegion.value_or("");
  form.AxisInRecord = o.coordinates == Coordinates::Record;
  if (cpg) {
    form.CBCPG = true;
    CBCPG_Action(st, form);
  }

  // The sequences, through the file dialogs of the two sides.
  std::string why = openFile(st, form, Route::BevelButton0, o.longPath, graph);
  if (!why.empty()) return badInput(console, "cannot read " + o.longPath + ": " + why);
  if (holdsNoBase(st, 0))
    return badInput(console, o.longPath + " holds no base (A, C, G or T): nothing to compare");
  if (!cpg) {
    why = openFile(st, form, Route::BevelButton1, o.shortPath, graph);
    if (!why.empty()) return badInput(console, "cannot read " + o.shortPath + ": " + why);
    if (!st.f[1]) {
      // The length check of litshort cleared the side.
      return badInput(console, o.shortPath + ": " + form.Message + " (" + Str(st.nbbases1) +
                                   " bases against " + Str(st.nbbases) + " in " + o.longPath +
                                   ")");
    }
    if (holdsNoBase(st, 1))
      return badInput(console, o.shortPath + " holds no base (A, C, G or T): nothing to compare");
  }

  // The range and the preferences, each as typed.
  if (o.from && setFieldText(form.EFAnaFrom, *o.from)) EFAnaFrom_TextChange(st, form);
  if (o.to && setFieldText(form.EFAnaTo, *o.to)) EFAnaTo_TextChange(st, form);
  if (o.resamplings) form.EFSD = *o.resamplings;
  if (o.identities) form.EFIdentities = *o.identities;
  form.display0 = o.showLong;
  form.Display1 = o.showShort;
  form.CBClipboard = o.rows.has_value();
  form.CBFile = o.result.has_value();

  // The substitution model, estimated as Apply would after a paste.
  if (o.model) {
    std::string seq1, seq2;
    if (o.aligned1) {
      seq1 = readAlignedFile(*o.aligned1, &error);
      if (!error.empty()) return badInput(console, error);
      seq2 = readAlignedFile(*o.aligned2, &error);
      if (!error.empty()) return badInput(console, error);
    }
    if (!applyModelFromTexts(st, form, *o.model, seq1, seq2, &error))
      return badInput(console, error);
  }

  // The run, as PBRUN starts it, with the Save dialog answered by --result.
  RunSettings settings = RunSettings::fromForm(form);
  settings.seed = o.seed ? *o.seed : Rnd::clockSeed();
  settings.kernel = o.kernel.value_or("auto");
  settings.threads = o.threads.value_or(0);
  // One unit a percent: the console bar needs no pixels.
  settings.progressWidth = 100;
  std::optional<StagingFile> staging;
  // A device or a pipe (/dev/stdout, a FIFO) takes the file in place.
  std::error_code ec;
  const auto targetStatus = o.result ? std::filesystem::status(*o.result, ec) : std::filesystem::file_status{};
  if (o.result && std::filesystem::exists(targetStatus) && !std::filesystem::is_regular_file(targetStatus)) {
    settings.resultPath = *o.result;
  } else if (o.result) {
    staging.emplace(stagingPathFor(*o.result));
    settings.resultPath = staging->path();
  }

  // The rows and the report go to their files as the run makes them.
  std::optional<OutputSpool> rowsSpool, reportSpool;
  if (o.rows) {
    OutputSpool::Rewrite rewrite;
    if (o.coordinates == Coordinates::Record)
      rewrite = [&st](std::string& out, std::string_view rows) {
        appendRowsInRecordCoordinates(out, rows, st.origin[0]);
      };
    rowsSpool.emplace(*o.rows, "rows", std::move(rewrite));
    if (!rowsSpool->open(&error)) return badInput(console, error);
    settings.rowsSink = &*rowsSpool;
  }
  if (o.report) {
    reportSpool.emplace(*o.report, "report");
    if (!reportSpool->open(&error)) return badInput(console, error);
    settings.reportSink = &*reportSpool;
  }

  ConsoleHost host(st, form, console, console.errIsTerminal && !o.quiet, hook);
  RunOutcome outcome;
  {
    InterruptGuard interrupt(st.askclose);
    outcome = rumcompute(st, settings, host);
  }
  if (outcome.refused) {
    host.finish();
    return badInput(console, outcome.refusal.empty() ? host.lastMessage() : outcome.refusal);
  }
  // The profile is drawn only for the pictures that are written from it: a
  // run's texts and files do not depend on the drawing.
  const bool drawing = o.svg || o.pdf || o.png || o.dotplot;
  endOfRun(st, form, outcome, host, drawing ? graph : std::function<void()>());
  host.finish();
  if (!outcome.failure.empty()) return badInput(console, outcome.failure);
  if (outcome.stopped) {
    std::fprintf(console.err, "%s: interrupted: the run was stopped, no output written\n",
                 kProgram);
    std::fflush(console.err);
    return kExitInterrupted;
  }

  // The outputs, in a fixed order (several may go to standard output).
  auto fail = [&](const std::string& why) { status = badInput(console, why); };
  if (reportSpool && !reportSpool->commit(console, {}, &error)) fail(error);
  if (rowsSpool) {
    if (outcome.noRows)
      fail("the run gave no rows: " + *o.rows + " was not written");
    else if (!rowsSpool->commit(console, outcome.rowsHead, &error))
      fail(error);
  }
  if (o.result) {
    if (outcome.noRows)
      fail("the run gave no rows: no result file was written to " + *o.result);
    else if (!outcome.resultWritten)
      fail("cannot write the result file " + *o.result + ": " + outcome.resultError);
    else if (staging && (*o.result == "-" ? !copyFileToOut(console, staging->path(), &error)
                                          : !staging->renameTo(*o.result, &error)))
      fail(error);
  }
  const std::pair<const std::optional<std::string>*, plots::ImageFormat> pictures[] = {
      {&o.svg, plots::ImageFormat::Svg},
      {&o.pdf, plots::ImageFormat::Pdf},
      {&o.png, plots::ImageFormat::Png}};
  for (const auto& [path, format] : pictures) {
    if (!*path) continue;
    if (!st.pct) {
      fail("no profile was drawn (window size " + Str(st.windgraph) + "): " + **path +
           " was not written");
      continue;
    }
    if (!writePictureOutput(console, *st.pct, format, **path, &error)) fail(error);
  }
  if (o.dotplot) {
    plots::DotPlot dots = plots::PBDot_Action(st, form);
    if (!plots::writeDotPlotFile(dots, *o.dotplot, &error)) fail(error);
  }
  if (o.tracks.any() && writeTrackOutputs(st, o.tracks, console) != kExitOk) status = kExitBadInput;
  return status;
}

}  // namespace

int runComparison(bool cpg, const std::vector<std::string>& args, const Console& console,
                  const DoEventsHook& hook) {
  try {
    return comparison(cpg, args, console, hook);
  } catch (const std::bad_alloc&) {
    // The alignment listing is the one output without a bound.
    return badInput(console,
                    "out of memory: the report outgrew the memory (a low --identities with a "
                    "wide --window lists nearly every pair of windows)");
  }
}

int runCompare(const std::vector<std::string>& args, const Console& console) {
  return runComparison(false, args, console);
}

int runCpg(const std::vector<std::string>& args, const Console& console) {
  return runComparison(true, args, console);
}

}  // namespace trelvane::cli
