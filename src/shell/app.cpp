// app.cpp -- start-up order, the application object, and the menus of every window.
#include "shell/app.h"

#include <QAction>
#include <QApplication>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QSysInfo>
#include <QTimer>

#include "platform/numtext.h"
#include "shell/aboutbox.h"
#include "shell/runhost.h"
#include "shell/stack_window.h"
#include "shell/window1.h"

#ifndef TRELVANE_VERSION_MAJOR
#define TRELVANE_VERSION_MAJOR 1
#define TRELVANE_VERSION_MINOR 0
#define TRELVANE_VERSION_PATCH 0
#endif

namespace trelvane::shell {

namespace {
App* theApp = nullptr;
}

const FileType& pTextPlain() {
  // Plain text, and the names that DNA files carry.
  static const FileType type{"text/plain", ".txt;.fa;.fasta;.fna;.fas;.seq", "TEXT", "????"};
  return type;
}

QStringList fileTypeExtensions() {
  QStringList out;
  for (const QString& e : QString::fromStdString(pTextPlain().Extensions).split(u';', Qt::SkipEmptyParts))
    out << e;
  return out;
}

QString openFilter() {
  QStringList patterns;
  for (const QString& e : fileTypeExtensions()) patterns << u'*' + e;
  return QStringLiteral("Sequence and text files (%1);;All files (*)").arg(patterns.join(u' '));
}

std::string versionText(int major, int minor, int bug, const std::string& packageInfo) {
  return Str(int32_t{major}) + "." + Str(int32_t{minor}) + "." + Str(int32_t{bug}) + " " + packageInfo;
}

App::App() { theApp = this; }

App::~App() {
  if (theApp == this) theApp = nullptr;
}

App* App::instance() { return theApp; }

void App::Event_Open() {
  version = versionText(TRELVANE_VERSION_MAJOR, TRELVANE_VERSION_MINOR, TRELVANE_VERSION_PATCH,
                        "Trelvane for " + QSysInfo::prettyProductName().toStdString());
  if (openAboutBox) openAboutBox(*this);
}

Window1* App::FileNew_Action() {
  auto* w = new Window1;
  w->show();
  return w;
}

namespace {

// Cut, Paste and Clear act on the text field that has the focus, and so does
// Copy where a field holds a selection; otherwise Copy is the window's.
template <class LineFn, class PlainFn>
bool onFocusedField(LineFn onLine, PlainFn onPlain) {
  QWidget* focus = QApplication::focusWidget();
  if (auto* line = qobject_cast<QLineEdit*>(focus)) {
    onLine(line);
    return true;
  }
  if (auto* plain = qobject_cast<QPlainTextEdit*>(focus)) {
    onPlain(plain);
    return true;
  }
  return false;
}

QAction* item(QMenu* menu, const char* name, const QString& text, const QKeySequence& shortcut) {
  QAction* a = menu->addAction(text);
  a->setObjectName(QString::fromLatin1(name));
  if (!shortcut.isEmpty()) a->setShortcut(shortcut);
  return a;
}

}  // namespace

void buildMenuBar1(QMenuBar* bar, Window1* window) {
  bar->setObjectName(QStringLiteral("MenuBar1"));
  QMenu* file = bar->addMenu(QStringLiteral("&File"));
  file->setObjectName(QStringLiteral("FileMenu"));
  QObject::connect(item(file, "FileNew", QStringLiteral("New window"), QKeySequence(Qt::CTRL | Qt::Key_N)),
                   &QAction::triggered, window, [] { App::FileNew_Action(); });
  QObject::connect(item(file, "FileClose", QStringLiteral("Close"), QKeySequence(Qt::CTRL | Qt::Key_W)),
                   &QAction::triggered, window, [window] { window->FileClose_Action(); });
  QMenu* exports = file->addMenu(QStringLiteral("Export"));
  exports->setObjectName(QStringLiteral("FileExport"));
  const std::pair<const char*, const char*> exportItems[] = {
      {"ExportBedGraph", "Profile as bedGraph..."},       {"ExportBigWig", "Profile as bigWig..."},
      {"ExportRandom", "Random expectation tracks..."},   {"ExportSegmentsBed", "Conserved segments as BED..."},
      {"ExportSegmentsTsv", "Conserved segments as table..."}, {"ExportIslandsBed", "CpG islands as BED..."},
      {"ExportIslandsGff", "CpG islands as GFF3..."}};
  for (int k = 0; k < 7; ++k)
    QObject::connect(item(exports, exportItems[k].first, QString::fromLatin1(exportItems[k].second), QKeySequence()),
                     &QAction::triggered, window,
                     [window, k] { window->FileExport_Action(static_cast<Window1::Export>(k)); });
  QObject::connect(item(file, "FileStack", QStringLiteral("Stack results..."), QKeySequence()), &QAction::triggered,
                   window, [window] { StackWindow::chooseAndOpen(window); });
  file->addSeparator()->setObjectName(QStringLiteral("UntitledMenu0"));
  QAction* quit = item(file, "FileQuit", QStringLiteral("Quit"), QKeySequence(Qt::CTRL | Qt::Key_Q));
  quit->setMenuRole(QAction::QuitRole);
  QObject::connect(quit, &QAction::triggered, qApp, [] {
    QApplication::closeAllWindows();
    QApplication::quit();
  });

  QMenu* edit = bar->addMenu(QStringLiteral("&Edit"));
  edit->setObjectName(QStringLiteral("EditMenu"));
  QObject::connect(item(edit, "EditCut", QStringLiteral("Cu&t"), QKeySequence(Qt::CTRL | Qt::Key_X)),
                   &QAction::triggered, window, [] {
                     onFocusedField([](QLineEdit* e) { e->cut(); }, [](QPlainTextEdit* e) { e->cut(); });
                   });
  QObject::connect(item(edit, "EditCopy", QStringLiteral("&Copy"), QKeySequence(Qt::CTRL | Qt::Key_C)),
                   &QAction::triggered, window, [window] {
                     QWidget* focus = QApplication::focusWidget();
                     auto* line = qobject_cast<QLineEdit*>(focus);
                     auto* plain = qobject_cast<QPlainTextEdit*>(focus);
                     if (line && line->hasSelectedText()) line->copy();
                     else if (plain && plain->textCursor().hasSelection()) plain->copy();
                     else window->EditCopy_Action();
                   });
  QObject::connect(item(edit, "EditPaste", QStringLiteral("&Paste"), QKeySequence(Qt::CTRL | Qt::Key_V)),
                   &QAction::triggered, window, [] {
                     onFocusedField([](QLineEdit* e) { e->paste(); }, [](QPlainTextEdit* e) { e->paste(); });
                   });
  QObject::connect(item(edit, "EditClear", QStringLiteral("Clear"), QKeySequence()), &QAction::triggered, window,
                   [] {
                     onFocusedField(
                         [](QLineEdit* e) {
                           if (e->hasSelectedText()) e->del();
                         },
                         [](QPlainTextEdit* e) { e->textCursor().removeSelectedText(); });
                   });
}

void openStartFiles(Window1& window, const QStringList& files) {
  if (files.size() > 0) window.GBLong_DropObject(files[0]);
  if (files.size() > 1) window.GBShort_DropObject(files[1]);
}

int runMain(const QStringList& files) {
  // 2: the file type table is built before anything else needs it.
  (void)pTextPlain();
  // 3-4: the application object; its menu handlers are bound per window.
  App app;
  installAboutBox(app);
  // 5: the first window, with the files it was started with
  openStartFiles(*App::FileNew_Action(), files);
  // 6: the event loop, whose start opens the application (Event_Open)
  QTimer::singleShot(0, [&app] { app.Event_Open(); });
  const int code = QApplication::exec();
  // A run still going in a closed window sees askclose soon; wait for it.
  runthreads::joinAll();
  return code;
}

}  // namespace trelvane::shell
