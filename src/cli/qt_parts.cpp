// qt_parts.cpp -- the table of the Qt parts of trelvane-cli.
#include "cli/qt_parts.h"

#include "cli/commands.h"
#include "plots/picture_qt.h"

#ifndef TRELVANE_VERSION
#error "TRELVANE_VERSION comes from the CMake project version"
#endif

namespace trelvane::cli {

const QtParts& linkedQtParts() {
  static const QtParts parts{TRELVANE_VERSION, &plots::writePicture, &plots::writeDotPlotFile,
                             &runCheckUpdate};
  return parts;
}

}  // namespace trelvane::cli
