// main.cpp -- trelvane: the desktop application, and its screenshot mode for the documentation.
#include <QApplication>

#include <cstring>

#include "shell/app.h"
#include "shell/screenshots.h"

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  QApplication::setApplicationName(QStringLiteral("Trelvane"));
  // --screenshot DIR: runs the bundled example and saves a picture of each tab.
  if (argc == 3 && std::strcmp(argv[1], "--screenshot") == 0)
    return trelvane::shell::takeScreenshots(QString::fromLocal8Bit(argv[2]));
  return trelvane::shell::runMain();
}
