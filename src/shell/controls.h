// controls.h -- the window's controls made at their design places: name, rectangle, locks, and the few styles they take.
#pragma once

#include <QColor>
#include <QRect>

#include "shell/anchors.h"

class QCheckBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QWidget;

namespace trelvane::shell {

// The locks, as the layout tables write them.
inline constexpr int L = kLockL, T = kLockT, R = kLockR, B = kLockB;

// Makes each control with its objectName (the name the logic and the tests
// know it by), and gives its rectangle in window coordinates and its locks
// to the window's anchors.
class Controls {
 public:
  explicit Controls(Anchors* anchors) : anchors_(anchors) {}

  template <class W>
  W* add(W* w, const char* name, int left, int top, int width, int height, int locks) {
    w->setObjectName(QString::fromLatin1(name));
    anchors_->place(w, QRect(left, top, width, height), locks);
    return w;
  }
  QLabel* label(QWidget* parent, const char* name, const char* text, int l, int t, int w, int h, int locks);
  // An edit field; its Mask of nines and LimitText hold what the user types.
  QLineEdit* field(QWidget* parent, const char* name, const char* text, int l, int t, int w, int h, int locks,
                   int maskDigits = 0, int limitText = 0, bool alignRight = false);
  QCheckBox* check(QWidget* parent, const char* name, const char* text, int l, int t, int w, int h, int locks);

 private:
  Anchors* anchors_;
};

void setPixelSize(QWidget* w, int size);
void setTextColor(QWidget* w, QColor c);
// A static text that wraps onto several lines.
void multiLine(QLabel* l);
void centred(QLabel* l);
// A multi-line edit field: a scroll bar always, Tab leaves it.
QPlainTextEdit* multiLineField(QWidget* parent);

}  // namespace trelvane::shell
