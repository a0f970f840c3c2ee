// shell_fixture.h -- the application object, temporary files and a shown window for the shell's tests.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QComboBox>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QPointer>
#include <QTemporaryDir>
#include <QThread>
#include <QUrl>
#include <QtTest/QTest>

#include <fstream>
#include <sstream>
#include <string>

#include "shell/runhost.h"
#include "shell/widgets.h"
#include "shell/window1.h"
#include "support/files.h"

namespace trelvane::shell::test {

inline QApplication& qtApp() {
  static int argc = 1;
  static char name[] = "trelvane_shell_tests", *argv[] = {name, nullptr};
  static QApplication* app = (qputenv("QT_QPA_PLATFORM", "offscreen"), new QApplication(argc, argv));
  return *app;
}

using trelvane::testing::readBytes;

const std::string kLong = ">long title\n" + std::string("ACGTTGCAACGTTGCAACGTTGCAACGTTGCAACGTTGCAACGTTGCAACGTTGCAACGT") + "\n";
const std::string kShort = ">short title\nACGTTGCAACGTTGCAACGTTGCAACGTTGCAACGTTGCA\n";

inline QList<QUrl> fileUrl(const std::string& path) { return {QUrl::fromLocalFile(QString::fromStdString(path))}; }
inline std::string examplePath(const char* name) { return std::string(TRELVANE_EXAMPLES) + "/" + name; }
inline std::string goldenPath(const char* name) { return std::string(TRELVANE_TEST_DATA) + "/golden/" + name; }

// A drag of these URLs onto a group box; true when the box took the drop.
inline bool dropOn(QWidget* box, const QList<QUrl>& urls) {
  QMimeData mime;
  mime.setUrls(urls);
  QDragEnterEvent enter(QPoint(20, 20), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(box, &enter);
  if (!enter.isAccepted()) return false;
  QDropEvent drop(QPointF(20, 20), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(box, &drop);
  return drop.isAccepted();
}

// Processes events until done() holds; the wait has a generous bound so that
// a fault shows as a failure, never as a hang.
template <class Pred>
bool waitFor(Pred done) {
  for (int i = 0; i < 12000 && !done(); ++i) {
    QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    if (!done()) QThread::msleep(5);
  }
  return done();
}

class ShellTest : public ::testing::Test {
 protected:
  void SetUp() override {
    qtApp();
    ASSERT_TRUE(dir_.isValid());
    window_ = new Window1;
    window_->show();
    window_->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window_));
  }
  void TearDown() override {
    if (window_) window_->close();
    runthreads::joinAll();
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }

  Window1& w() { return *window_; }
  template <class W = QWidget>
  W* find(const char* name) {
    return window_->content()->findChild<W*>(QString::fromLatin1(name));
  }
  std::string temp(const char* name, const std::string& bytes) {
    const std::string path = dir_.filePath(QString::fromLatin1(name)).toStdString();
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
  }
  std::string tempPath(const char* name) { return dir_.filePath(QString::fromLatin1(name)).toStdString(); }
  // Both sequences chosen through the Filename buttons.
  void chooseBoth() {
    choose(0, temp("long.fa", kLong));
    choose(1, temp("short.fa", kShort));
  }
  // The Filename buttons with a chosen path (or a cancel) instead of the dialog.
  void choose(int side, std::optional<std::string> path) {
    window_->openDialog = [path] { return path; };
    side == 0 ? window_->BevelButton0_Action() : window_->BevelButton1_Action();
  }
  // Text typed into a field, then the focus moved away.
  void typeInto(const char* name, const QString& text) {
    // an editable combo box is typed into through its line
    auto* combo = find<QComboBox>(name);
    auto* e = combo ? combo->lineEdit() : find<QLineEdit>(name);
    ASSERT_NE(e, nullptr) << name;
    e->setFocus(Qt::OtherFocusReason);
    e->selectAll();
    QTest::keyClicks(e, text);
  }
  // The field loses its focus to the tab bar.
  void leave(const char* name) {
    QWidget* e = find(name);
    ASSERT_NE(e, nullptr) << name;
    e->setFocus(Qt::OtherFocusReason);
    ASSERT_TRUE(e->hasFocus()) << name;
    window_->TabPanel1->setFocus(Qt::TabFocusReason);
    ASSERT_FALSE(e->hasFocus()) << name;
  }

  QTemporaryDir dir_;
  QPointer<Window1> window_;
};

}  // namespace trelvane::shell::test
