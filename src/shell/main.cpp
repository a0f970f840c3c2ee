// main.cpp -- trelvane: the desktop application, and its screenshot mode for the documentation.
#include <QApplication>

#include <cstring>

#include "shell/app.h"
#include "shell/screenshots.h"

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  QApplication::setApplicationName(QStringLiteral("Trelvane"));
  // --screenshot DIR [EXAMPLES]: runs the bundled example (from the
  // examples folder of the working directory by default) and saves a
  // picture of each tab.
  if ((argc == 3 || argc == 4) && std::strcmp(argv[1], "--screenshot") == 0)
    return trelvane::shell::takeScreenshots(QString::fromLocal8Bit(argv[2]),
                                            QString::fromLocal8Bit(argc == 4 ? argv[3] : "examples"));
  return trelvane::shell::runMain();
}
