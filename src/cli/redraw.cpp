// redraw.cpp -- trelvane-cli redraw: a stored result drawn again in a new window's Graphic tab.
#include <cstdio>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "state/profile.h"
#include "cli/command_line.h"
#include "cli/commands.h"
#include "cli/console.h"
#include "cli/track_outputs.h"
#include "plots/picture_qt.h"
#include "state/form.h"
#include "state/state.h"
#include "input/panel.h"
#include "input/result_reader.h"
#include "input/text_fields.h"
#include "platform/linereader.h"
#include "platform/numtext.h"
#include "plots/graph.h"
#include "plots/graph_controls.h"
#include "plots/shapes_text.h"

namespace trelvane::cli {
namespace {

const char kRedrawHelp[] =
    "Usage: trelvane-cli redraw RESULT [OPTION]...\n"
    "Draw the result file RESULT again, as a new window's Graphic tab shows it\n"
    "with every control at its default; the options change those controls.\n"
    "\n"
    "  --long FILE           a longest sequence read first, for the N bars\n"
    "  --window N            the window size field (EFWS), which the unit\n"
    "                        conversion reads\n"
    "  --cpg                 CpG mode (a plain curve)\n"
    "  --size WxH            window width and height (400x450; Canvas1 is 48 x 200\n"
    "                        smaller)\n"
    "  --default-format      Y labels in the default format, not the decimal point\n"
    "  --mean-sd random|observed|symmetric\n"
    "                        the distribution of the mean and SD lines\n"
    "  --unit frequency|number\n"
    "                        the Y unit\n"
    "  --ymin T, --ymax T    the Y scale, in that unit\n"
    "  --no-maxmin           no maximum to minimum line in columns\n"
    "  --no-max-h0           no line at the maximum under the random distribution\n"
    "  --moving-average      moving average over the length of the shortest sequence\n"
    "  --from T, --to T      the first and last position shown (0-based; max)\n"
    "  --coordinates record|run   label the positions by the longest sequence's\n"
    "                        record (a result with a Long origin= line) or along\n"
    "                        the run (default run)\n"
    "  --svg FILE, --pdf FILE, --png FILE\n"
    "                        the drawing ('-' is standard output)\n"
    "  --shapes FILE         the shapes of the drawing as text lines\n"
    "  --help                display this help and exit\n"
    "  --version             output version information and exit\n";

// The tracks follow the drawing's --unit; segments and islands come from the
// stored profile, islands from the sequence given with --long.
std::string redrawHelp() {
  return kRedrawHelp + trackHelp(false, true, true);
}

struct RedrawOptions {
  std::optional<std::string> result;
  std::optional<std::string> longFile;
  std::optional<std::string> window;
  bool cpg = false;
  std::optional<std::string> width, height;
  bool defaultFormat = false;
  std::string meanSd = "random";
  std::string unit = "frequency";
  std::string coordinates = "run";
  std::optional<std::string> ymin, ymax;
  bool noMaxMin = false, noMaxH0 = false, movingAverage = false;
  std::optional<std::string> from, to;
  std::optional<std::string> svg, pdf, png, shapes;
  TrackOutputs tracks;
  bool help = false, version = false;
};

// Fills o from args; false with a sentence in *error on a usage error.
bool parse(const std::vector<std::string>& args, RedrawOptions& o, std::string* error) {
  std::vector<Option> table;
  for (const auto& [name, member] : std::initializer_list<std::pair<const char*, std::optional<std::string> RedrawOptions::*>>{
           {"long", &RedrawOptions::longFile}, {"window", &RedrawOptions::window},
           {"ymin", &RedrawOptions::ymin},     {"ymax", &RedrawOptions::ymax},
           {"from", &RedrawOptions::from},     {"to", &RedrawOptions::to},
           {"svg", &RedrawOptions::svg},       {"pdf", &RedrawOptions::pdf},
           {"png", &RedrawOptions::png},       {"shapes", &RedrawOptions::shapes}})
    table.push_back({name, 1, [&o, member](const std::vector<std::string>& v) {
                       o.*member = v[0];
                       return std::string();
                     }});
  for (const auto& [name, member] : std::initializer_list<std::pair<const char*, bool RedrawOptions::*>>{
           {"cpg", &RedrawOptions::cpg},
           {"default-format", &RedrawOptions::defaultFormat},
           {"no-maxmin", &RedrawOptions::noMaxMin},
           {"no-max-h0", &RedrawOptions::noMaxH0},
           {"moving-average", &RedrawOptions::movingAverage}})
    table.push_back({name, 0, [&o, member](const std::vector<std::string>&) {
                       o.*member = true;
                       return std::string();
                     }});
  table.push_back({"size", 1, [&o](const std::vector<std::string>& v) {
                     const std::string& size = v[0];
                     auto x = size.find_first_of("xX");
                     if (x == std::string::npos || x == 0 || x + 1 == size.size())
                       return "--size needs WIDTHxHEIGHT, such as 800x600, not '" + size + "'";
                     o.width = size.substr(0, x);
                     o.height = size.substr(x + 1);
                     return std::string();
                   }});
  table.push_back({"mean-sd", 1, [&o](const std::vector<std::string>& v) {
                     o.meanSd = v[0];
                     return oneOf("mean-sd", v[0], {"random", "observed", "symmetric"});
                   }});
  table.push_back({"unit", 1, [&o](const std::vector<std::string>& v) {
                     o.unit = v[0];
                     return oneOf("unit", v[0], {"frequency", "number"});
                   }});

  addTrackOptions(table, o.tracks, TrackCommand::Redraw);
  table.push_back({"coordinates", 1, [&o](const std::vector<std::string>& v) {
                     o.coordinates = v[0];
                     o.tracks.track.recordCoordinates = v[0] == "record";
                     return oneOf("coordinates", v[0], {"record", "run"});
                   }});

  CommandLine line;
  if (!parseCommandLine(args, table, line, error)) return false;
  o.help = line.help;
  o.version = line.version;
  if (o.help || o.version) return true;
  if (!checkOperands(line.operands, {"RESULT"}, error)) return false;
  o.result = line.operands[0];
  for (const auto* path : {&o.svg, &o.pdf, &o.png}) {
    plots::ImageFormat format;
    if (*path && **path != "-" && !plots::formatOfPath(**path, &format)) {
      *error = "'" + **path + "': a drawing's file name ends in .svg, .pdf or .png";
      return false;
    }
  }
  if (!checkTrackOutputs(o.tracks, TrackCommand::Redraw, o.longFile.has_value(), error)) return false;
  // The tracks take the drawing's unit and mode.
  o.tracks.track.unit = o.unit == "number" ? tracks::Unit::Score : tracks::Unit::Fraction;
  o.tracks.track.cpg = o.cpg;
  o.tracks.track.source = *o.result;
  return true;
}

// A text typed into a field, then the field left: the handler runs only
// where the text changes, as nothing happens to a field left as it was.
void typeInto(std::string& field, const std::optional<std::string>& text,
              const std::function<void()>& lostFocus) {
  if (text && setFieldText(field, *text)) lostFocus();
}

// A check box or radio button turned to on; false when it already was.
bool turnOn(bool& control) {
  if (control) return false;
  control = true;
  return true;
}

bool turnOff(bool& control) {
  if (!control) return false;
  control = false;
  return true;
}

// True where the file's first line begins as a stored result does.
bool isResultFile(const std::string& path) {
  LineReader reader;
  if (!reader.open(path)) return false;
  return isResultHead(reader.readLine());
}


}  // namespace

int runRedraw(const std::vector<std::string>& args, const Console& console) {
  RedrawOptions o;
  std::string error;
  if (!parse(args, o, &error)) return usageError(console, error, "redraw");
  if (o.help || o.version) return helpOrVersion(console, o.help, redrawHelp());
  auto bad = [&console](std::string_view text) { return badInput(console, text); };
  for (const auto* path : {&o.longFile, &o.result}) {
    if (*path && !canReadFile(**path, &error)) return bad("cannot read " + **path + ": " + error);
  }
  if (!isResultFile(*o.result)) return bad(*o.result + " is not a Trelvane result file");
  for (const std::string& out : o.tracks.files())
    if (!canCreateFile(out, &error)) return bad(error);

  // A new window: its open event, every control at its default.
  ComparisonState st;
  st.open();
  Form form;
  auto graph = [&st, &form] { Graph(st, form); };

  // 1. the longest sequence, as if dropped on GBLong, for the N bars only
  if (o.longFile) {
    if (isResultFile(*o.longFile)) return bad(*o.longFile + " is a result file, not a sequence file");
    const std::string why = openFile(st, form, Route::GBLongDrop, *o.longFile, graph);
    if (!why.empty()) return bad("cannot read " + *o.longFile + ": " + why);
  }

  const std::string why = litprevious(st, form, *o.result, graph);
  if (!why.empty()) return bad("cannot read " + *o.result + ": " + why);

  if (o.coordinates == "record") {
    if (!st.origin[0].known())
      return bad(*o.result + " tells no origin of its longest sequence: --coordinates record needs a run on a record or region, or --long FILE");
    form.AxisInRecord = true;
  }

  // 2. window size and CpG mode
  typeInto(form.EFWS, o.window, [&] { EFWS_LostFocus(form); });
  if (o.cpg && turnOn(form.CBCPG)) CBCPG_Action(st, form);

  // 3. the window's size, which Canvas1 follows
  typeInto(form.EFwidth, o.width, [&] { EFwidth_LostFocus(st, form); });
  typeInto(form.EFHeight, o.height, [&] { EFHeight_LostFocus(st, form); });
  fitCanvas1(form);

  // 4. number presentation
  if (o.defaultFormat && turnOn(form.CBUsePoint1)) {
    form.CBUsePoint = false;
    CBUsePoint1_Action(st, form);
  }

  // 5. mean and SD
  if (o.meanSd != "random" && turnOn(form.RadioButton1)) {
    form.CBHOSD = false;
    RadioButton1_Action(st, form);
  }
  if (o.meanSd == "symmetric" && turnOn(form.CBSymetrie)) CBSymetrie_Action(st, form);

  // 6. unit, converted through the text of EFWS
  if (o.unit == "number" && turnOn(form.CBFreqIB1)) {
    form.CBFreqIB = false;
    CBFreqIB1_Action(st, form);
  }

  // 7. the Y scale
  typeInto(form.EF_MinX, o.ymin, [&] { EF_MinX_LostFocus(st, form); });
  typeInto(form.EF_MaxX, o.ymax, [&] { EF_MaxX_LostFocus(st, form); });

  // 8. preferences of the curve
  if (o.noMaxMin && turnOff(form.CBMaxMin)) CBMaxMin_Action(st, form);
  if (o.noMaxH0 && turnOff(form.CBMaxIdent)) CBMaxIdent_Action(st, form);
  if (o.movingAverage && turnOn(form.CBMovingShort)) CBMovingShort_Action(st, form);

  // 9. the range
  typeInto(form.EFFrom, o.from, [&] { EFFrom_LostFocus(st, form); });
  typeInto(form.EFTo, o.to, [&] { EFTo_LostFocus(st, form); });

  // The drawing that is written: one more Graph, whatever changegraph says.
  // A nil picture afterwards means that this call stopped at its guard.
  st.pct.reset();
  Graph(st, form);

  int status = kExitOk;
  if (o.shapes && !writeOutput(console, *o.shapes, plots::shapesText(st.pct.get(), form), &error)) status = bad(error);
  const std::pair<const std::optional<std::string>*, plots::ImageFormat> pictures[] = {
      {&o.svg, plots::ImageFormat::Svg}, {&o.pdf, plots::ImageFormat::Pdf}, {&o.png, plots::ImageFormat::Png}};
  for (const auto& [path, format] : pictures) {
    if (!*path) continue;
    if (!st.pct) {
      status = bad("nothing to draw (no bases or window size 0): " + **path + " was not written");
      continue;
    }
    if (!writePictureOutput(console, *st.pct, format, **path, &error)) status = bad(error);
  }
  if (o.tracks.any() && writeTrackOutputs(st, o.tracks, console) != kExitOk) status = kExitBadInput;
  return status;
}

}  // namespace trelvane::cli
