// main.cpp -- trelvane: the desktop application, the files it is started with, and its screenshot mode for the documentation.
#include <QApplication>
#include <QStringList>

#include <cstdio>
#include <cstring>

#include "shell/app.h"
#include "shell/screenshots.h"

#ifndef TRELVANE_VERSION
#error "TRELVANE_VERSION comes from the CMake project version"
#endif

namespace {

const char kHelp[] =
    "Usage: trelvane [OPTION]... [LONG [SHORT]]\n"
    "Draw how similar two DNA sequences are, as an identity profile along the\n"
    "longest one, in a window.\n"
    "\n"
    "LONG is put on the window's longest sequence side and SHORT on its shortest\n"
    "sequence side, as if each had been dropped there: a sequence file is read,\n"
    "and a result file (one whose first line is \"Trelvane comparison\") is drawn\n"
    "again. Further files are left out.\n"
    "\n"
    "  --screenshot DIR [EXAMPLES]\n"
    "                        run the bundled example (HUMHBB.fa and V00508.fa\n"
    "                        of EXAMPLES, by default ./examples) and save a\n"
    "                        picture of each tab into DIR, then exit\n"
    "  --help                display this help and exit\n"
    "  --version             output version information and exit\n"
    "\n"
    "Qt's own options, such as -platform NAME or -style NAME, are also taken.\n"
    "trelvane-cli runs the same comparisons without a window.\n";

int usageError(const char* option) {
  std::fprintf(stderr, "trelvane: unrecognized option '%s'\nTry 'trelvane --help' for more information.\n", option);
  return 2;
}

}  // namespace

int main(int argc, char** argv) {
  // Answered before Qt starts, so that they need no display.
  for (int i = 1; i < argc && std::strcmp(argv[i], "--") != 0; ++i) {
    if (std::strcmp(argv[i], "--help") == 0) {
      std::fputs(kHelp, stdout);
      return 0;
    }
    if (std::strcmp(argv[i], "--version") == 0) {
      std::puts("trelvane (Trelvane) " TRELVANE_VERSION);
      return 0;
    }
  }

  // Takes Qt's own options (-platform or --platform, and so on) out of argv;
  // what is left is ours.
  QApplication application(argc, argv);
  QApplication::setApplicationName(QStringLiteral("Trelvane"));
  // --screenshot DIR [EXAMPLES]: runs the bundled example (from the
  // examples folder of the working directory by default) and saves a
  // picture of each tab.
  if ((argc == 3 || argc == 4) && std::strcmp(argv[1], "--screenshot") == 0)
    return trelvane::shell::takeScreenshots(QString::fromLocal8Bit(argv[2]),
                                            QString::fromLocal8Bit(argc == 4 ? argv[3] : "examples"));

  QStringList files;
  bool optionsEnd = false;
  for (int i = 1; i < argc; ++i) {
    if (!optionsEnd && std::strcmp(argv[i], "--") == 0) optionsEnd = true;
    else if (!optionsEnd && argv[i][0] == '-' && argv[i][1] != '\0') return usageError(argv[i]);
    else files << QString::fromLocal8Bit(argv[i]);
  }
  if (files.size() > 2)
    std::fprintf(stderr, "trelvane: two files at most, one a side; '%s' and after are left out\n",
                 files[2].toLocal8Bit().constData());
  return trelvane::shell::runMain(files);
}
