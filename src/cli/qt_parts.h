// qt_parts.h -- what trelvane-cli draws and fetches through Qt, loaded only by the commands that need it.
#pragma once

#include <string>
#include <vector>

#include "plots/dotplot.h"
#include "plots/picture.h"

namespace trelvane::cli {

// The drawings (Qt's GUI and SVG libraries) and the update check (Qt's
// network library) live in the module trelvane-cli-qt.so beside the program.
// A comparison loads none of these libraries: it starts in a fraction of the
// time, and runs on a cluster node that has no display libraries at all.
struct QtParts {
  // The version of the program the module was built with; a module of
  // another version is refused, as the layout of this table may differ.
  const char* version;
  // plots::writePicture, on an offscreen GUI application made on first use.
  bool (*writePicture)(const plots::Picture& picture, plots::ImageFormat format,
                       const std::string& path, std::string* error);
  // plots::writeDotPlotFile: the format by the extension of path.
  bool (*writeDotPlotFile)(const plots::DotPlot& plot, const std::string& path,
                           std::string* error);
  // The check-update command.
  int (*runCheckUpdate)(const std::vector<std::string>& args);
};

// The parts, loaded on the first call; null with one sentence in *why when
// they cannot be had. The program loads the module; the tests link the parts in.
const QtParts* qtParts(std::string* why);

// The table itself, built into the module and into programs that link it.
const QtParts& linkedQtParts();

// The name of the module's function that returns its table.
inline constexpr const char* kQtPartsEntry = "trelvane_cli_qt_parts";
inline constexpr const char* kQtPartsModule = "trelvane-cli-qt.so";

}  // namespace trelvane::cli
