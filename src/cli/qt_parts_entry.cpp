// qt_parts_entry.cpp -- the one symbol that the module trelvane-cli-qt.so exports.
#include "cli/qt_parts.h"

extern "C" __attribute__((visibility("default"))) const trelvane::cli::QtParts* trelvane_cli_qt_parts() {
  return &trelvane::cli::linkedQtParts();
}
