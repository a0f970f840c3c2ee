// stack.cpp -- trelvane-cli stack: result files against one reference as stacked profiles over
// its gene models, with their segments shaded, and the segments as a table.
#include <string>
#include <vector>

#include "cli/command_line.h"
#include "cli/commands.h"
#include "cli/console.h"
#include "cli/track_outputs.h"
#include "plots/picture_qt.h"
#include "stack/stack_figure.h"

namespace trelvane::cli {
namespace {

const char kStackHelp[] =
    "Usage: trelvane-cli stack RESULT... [OPTION]...\n"
    "Draw result files of comparisons against the same longest sequence as stacked\n"
    "profiles on one axis, each with its random expectation and its conserved\n"
    "segments shaded, under the gene models of an annotation. A RESULT may also be\n"
    "a profile track written by compare's --bedgraph (FILE.bedGraph, such as the\n"
    "joined tracks of a comparison run in chunks); the random expectation is then\n"
    "read from FILE.mean.bedGraph, FILE.upper.bedGraph and FILE.max.bedGraph, as\n"
    "compare's --h0-tracks FILE writes them, where they exist.\n"
    "\n"
    "Outputs (FILE '-' is standard output):\n"
    "  --svg FILE --pdf FILE --png FILE   the figure\n"
    "  --table FILE          the segments of every panel: where, how long, their mean\n"
    "                        and maximum identity, and what they overlap\n"
    "\n"
    "The figure:\n"
    "  --annotation FILE     gene models of the reference, GFF3 or BED (exons as\n"
    "                        boxes, UTRs thinner, strand arrows); segments are\n"
    "                        coloured after what they overlap: exon, UTR, non-coding\n"
    "  --seqid NAME          the reference's name in the annotation (default: the\n"
    "                        record's name, the first word of its title line)\n"
    "  --name NAME           the name of a panel, given once for each RESULT in\n"
    "                        order (default: the shortest sequence's record)\n"
    "  --title TEXT          the title (default: Identity along REFERENCE)\n"
    "  --width N             width in pixels (default 1000)\n"
    "  --floor F             the identity at the bottom of each panel (default 0.5,\n"
    "                        about what windows of unrelated sequences reach)\n"
    "  --from N --to N       the part of the reference shown, 1-based, inclusive\n"
    "  --coordinates record|run   positions in the record's own numbering (default)\n"
    "                        or the run's, base 1 the first base read\n"
    "\n"
    "Conserved segments (default: 70 % identity over 100 windows):\n"
    "  --min-identity F      windows at or above this fraction of identities\n"
    "  --min-length N        at least N consecutive windows\n"
    "  --above mean+Ksd|max  windows above the random expectation instead\n"
    "  --no-segments         shade nothing\n"
    "\n"
    "  --help                display this help and exit\n"
    "  --version             output version information and exit\n"
    "\n"
    "Exit status: 0 on success, 1 on bad input, 2 on a usage error.\n";

struct StackOptions {
  stack::StackRequest request;
  std::vector<std::string> names;
  std::optional<std::string> svg, pdf, png, table;
  int width = 1000;
  std::optional<std::string> minIdentity, minLength, above;
};

std::vector<Option> stackTable(StackOptions& s) {
  auto text = [](const char* name, std::optional<std::string>& target) {
    return Option{name, 1, [&target](const std::vector<std::string>& v) {
                    target = v[0];
                    return std::string();
                  }};
  };
  auto position = [](const char* name, std::optional<int64_t>& target) {
    return Option{name, 1, [name, &target](const std::vector<std::string>& v) {
                    const auto n = wholeNumber(v[0], 1, INT64_MAX / 2);
                    if (!n) return "invalid --" + std::string(name) + " '" + v[0] + "': expected a position from 1";
                    target = static_cast<int64_t>(*n);
                    return std::string();
                  }};
  };
  stack::StackRequest& r = s.request;
  return {
      text("svg", s.svg), text("pdf", s.pdf), text("png", s.png), text("table", s.table),
      text("annotation", r.annotation),
      {"seqid", 1, [&r](const std::vector<std::string>& v) { r.seqid = v[0]; return std::string(); }},
      {"name", 1, [&s](const std::vector<std::string>& v) { s.names.push_back(v[0]); return std::string(); }},
      {"title", 1, [&r](const std::vector<std::string>& v) { r.title = v[0]; return std::string(); }},
      {"width", 1, [&s](const std::vector<std::string>& v) {
         const auto n = wholeNumber(v[0], 400, 20000);
         if (!n) return "invalid width '" + v[0] + "': expected a whole number of pixels from 400 to 20000";
         s.width = static_cast<int>(*n);
         return std::string();
       }},
      {"floor", 1, [&r](const std::vector<std::string>& v) {
         const auto f = decimalNumber(v[0], -1, 0.95);
         if (!f) return "invalid floor '" + v[0] + "': expected a fraction from 0 to 0.95";
         r.floor = *f;
         return std::string();
       }},
      position("from", r.from), position("to", r.to),
      {"coordinates", 1, [&r](const std::vector<std::string>& v) {
         r.recordCoordinates = v[0] == "record";
         return oneOf("coordinates", v[0], {"record", "run"});
       }},
      text("min-identity", s.minIdentity), text("min-length", s.minLength), text("above", s.above),
      {"no-segments", 0, [&r](const std::vector<std::string>&) { r.segments = false; return std::string(); }},
  };
}

// The segment rule and the panels from the options; false with a usage sentence.
bool complete(StackOptions& s, const std::vector<std::string>& operands, std::string* error) {
  if (!readSegmentRule(s.minIdentity, s.minLength, s.above, s.request.rule, error)) return false;
  if (!s.names.empty() && s.names.size() != operands.size()) {
    *error = "--name is given " + std::to_string(s.names.size()) + " times for " + std::to_string(operands.size()) +
             " panels: give it once for each RESULT, or not at all";
    return false;
  }
  if (!s.svg && !s.pdf && !s.png && !s.table) {
    *error = "nothing to write: give --svg, --pdf, --png or --table";
    return false;
  }
  for (std::size_t k = 0; k < operands.size(); ++k) {
    stack::PanelSource panel;
    panel.path = operands[k];
    if (!s.names.empty()) panel.name = s.names[k];
    s.request.panels.push_back(std::move(panel));
  }
  return true;
}

}  // namespace

int runStack(const std::vector<std::string>& args, const Console& console) {
  StackOptions s;
  CommandLine line;
  std::string error;
  if (!parseCommandLine(args, stackTable(s), line, &error)) return usageError(console, error, "stack");
  if (line.help || line.version) return helpOrVersion(console, line.help, kStackHelp);
  if (line.operands.empty()) return usageError(console, "missing operand: RESULT", "stack");
  if (!complete(s, line.operands, &error)) return usageError(console, error, "stack");
  for (const std::optional<std::string>* out : {&s.svg, &s.pdf, &s.png, &s.table})
    if (*out && !canCreateFile(**out, &error)) return badInput(console, error);

  stack::StackResult result;
  if (!stack::buildStack(s.request, result, &error)) return badInput(console, error);
  int status = kExitOk;
  const plots::Picture picture = plots::drawStack(result.figure, s.width);
  const std::pair<const std::optional<std::string>*, plots::ImageFormat> pictures[] = {
      {&s.svg, plots::ImageFormat::Svg}, {&s.pdf, plots::ImageFormat::Pdf}, {&s.png, plots::ImageFormat::Png}};
  for (const auto& [path, format] : pictures)
    if (*path && !writePictureOutput(console, picture, format, **path, &error)) status = badInput(console, error);
  if (s.table && !writeOutput(console, *s.table, stack::segmentsTable(result), &error)) status = badInput(console, error);
  return status;
}

}  // namespace trelvane::cli
