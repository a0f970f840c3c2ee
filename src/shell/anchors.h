// anchors.h -- keeps each control's distances to the window's sides as the window is resized.
#pragma once

#include <QObject>
#include <QRect>
#include <QSize>
#include <QWidget>

#include <vector>

namespace trelvane::shell {

// The sides of the window to which a control keeps its distance.
enum Lock : int { kLockNone = 0, kLockL = 1, kLockT = 2, kLockR = 4, kLockB = 8 };

// Every control is given once, at creation, with its rectangle in window
// coordinates at the design size and its locks. apply() places them all for
// the window's present size: locked left and right a control widens, right
// alone it moves, and likewise in height; with no lock it stays where it is
// relative to the top left corner. Controls nested in group boxes or tab
// pages are given in window coordinates too and mapped into their parent.
class Anchors : public QObject {
 public:
  Anchors(QWidget* root, QSize designSize);

  void place(QWidget* w, const QRect& designRect, int locks);
  void apply();

  // The rectangle of a control for a window of the given size.
  static QRect anchored(const QRect& designRect, int locks, QSize design, QSize now);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  struct Entry {
    QWidget* widget;
    QRect design;
    int locks;
  };
  void placeOne(const Entry& e, QSize now);

  QWidget* root_;
  QSize design_;
  std::vector<Entry> entries_;
  bool applying_ = false;
};

}  // namespace trelvane::shell
