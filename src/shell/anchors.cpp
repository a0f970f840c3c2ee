// anchors.cpp -- placing controls by their locks for the window's present size.
#include "shell/anchors.h"

#include <QCheckBox>
#include <QEvent>
#include <QLabel>
#include <QRadioButton>

#include <algorithm>

#include "shell/widgets.h"

namespace trelvane::shell {

Anchors::Anchors(QWidget* root, QSize designSize) : QObject(root), root_(root), design_(designSize) {
  root_->installEventFilter(this);
}

QRect Anchors::anchored(const QRect& r, int locks, QSize design, QSize now) {
  const int dw = now.width() - design.width();
  const int dh = now.height() - design.height();
  int left = r.left(), top = r.top(), width = r.width(), height = r.height();
  if ((locks & kLockR) && (locks & kLockL)) width += dw;
  else if (locks & kLockR) left += dw;
  if ((locks & kLockB) && (locks & kLockT)) height += dh;
  else if (locks & kLockB) top += dh;
  return QRect(left, top, std::max(0, width), std::max(0, height));
}

void Anchors::place(QWidget* w, const QRect& designRect, int locks) {
  entries_.push_back({w, designRect, locks});
  // A container between the control and the window that no entry places
  // (a tab page, the tab panel's stack) may move on its own; follow it.
  for (QWidget* p = w->parentWidget(); p && p != root_; p = p->parentWidget()) {
    bool anchoredParent = false;
    for (const Entry& e : entries_)
      if (e.widget == p) anchoredParent = true;
    if (!anchoredParent) p->installEventFilter(this);
  }
  placeOne(entries_.back(), root_->size());
}

void Anchors::placeOne(const Entry& e, QSize now) {
  QRect r = anchored(e.design, e.locks, design_, now);
  QWidget* parent = e.widget->parentWidget();
  if (parent && parent != root_) r.translate(-parent->mapTo(root_, QPoint(0, 0)));
  // The sizes were made for another font: a check box, a radio button or a
  // one-line label whose text is wider takes the room it needs, as far as
  // its parent allows, rather than cut its text.
  const auto* label = qobject_cast<const QLabel*>(e.widget);
  if ((qobject_cast<const QCheckBox*>(e.widget) || qobject_cast<const QRadioButton*>(e.widget) ||
       (label && !label->wordWrap() && !dynamic_cast<const ElidedLabel*>(label))) &&
      parent) {
    const int need = e.widget->sizeHint().width();
    if (need > r.width()) r.setWidth(std::max(r.width(), std::min(need, parent->width() - r.left())));
  }
  if (e.widget->geometry() != r) e.widget->setGeometry(r);
}

void Anchors::apply() {
  if (applying_) return;
  applying_ = true;
  const QSize now = root_->size();
  // Entries are in creation order, so a group box is placed before its content.
  for (const Entry& e : entries_) placeOne(e, now);
  applying_ = false;
}

bool Anchors::eventFilter(QObject* watched, QEvent* event) {
  const auto type = event->type();
  if (watched == root_ ? type == QEvent::Resize : type == QEvent::Move) apply();
  return QObject::eventFilter(watched, event);
}

}  // namespace trelvane::shell
