// screenshots.h -- pictures of every tab after a run of the bundled example, for the documentation.
#pragma once

#include <QString>

namespace trelvane::shell {

// Opens a window, reads HUMHBB.fa and V00508.fa from examplesDir (the
// bundled examples), runs the comparison, then saves screenshot-file.png,
// -model, -results, -graphic and -pref into dir. Returns 0 on success.
int takeScreenshots(const QString& dir, const QString& examplesDir);

}  // namespace trelvane::shell
