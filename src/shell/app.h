// app.h -- the application: start-up, the file type table, App and its version, MenuBar1.
#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <string>

class QMenuBar;

namespace trelvane::shell {

class Window1;

// The one entry of the file type table: what the group boxes take, what the
// open dialogs filter on, and the type of the result file.
struct FileType {
  std::string Name;
  std::string Extensions;
  std::string MacType;
  std::string MacCreator;
};
const FileType& pTextPlain();
// Its extensions, ".txt" and those of DNA files, each with its dot.
QStringList fileTypeExtensions();
// The dialogs' filter: the table's files first, then all files, so that a
// sequence file of any name can be chosen.
QString openFilter();

// "major.minor.bug packageInfo".
std::string versionText(int major, int minor, int bug, const std::string& packageInfo);

// The application object: its version, and the window that its File menu
// makes. It owns no comparison.
class App {
 public:
  App();
  ~App();
  static App* instance();

  std::string version;
  // Opens the about window; set by whoever provides one.
  std::function<void(App&)> openAboutBox;

  // Event_Open: the version text, then the about window.
  void Event_Open();
  // FileNew: a new Window1, independent of the others.
  static Window1* FileNew_Action();
};

// MenuBar1 on a window: File (New window, Close, Quit) and Edit (Cut, Copy,
// Paste, Clear), each item named as the menu names it.
void buildMenuBar1(QMenuBar* bar, Window1* window);

// The files a window is started with: the first goes to the longest side and
// the second to the shortest side, each by the route of a drop on its group
// box (so a result file is drawn again); any further ones are left out.
void openStartFiles(Window1& window, const QStringList& files);

// _Main after the platform's own start: the file types, App, the first
// window with the files of the command line, the event loop. Returns the
// loop's exit code.
int runMain(const QStringList& files = {});

}  // namespace trelvane::shell
