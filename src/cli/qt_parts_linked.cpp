// qt_parts_linked.cpp -- the Qt parts linked into the program itself (the in-process tests).
#include "cli/qt_parts.h"

namespace trelvane::cli {

const QtParts* qtParts(std::string*) { return &linkedQtParts(); }

}  // namespace trelvane::cli
