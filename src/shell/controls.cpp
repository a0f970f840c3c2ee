// controls.cpp -- making the window's controls, and their sizes, colours and wrapping.
#include "shell/controls.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>

#include "shell/widgets.h"

namespace trelvane::shell {

QLabel* Controls::label(QWidget* parent, const char* name, const char* text, int l, int t, int w, int h,
                        int locks) {
  auto* lab = new QLabel(QString::fromUtf8(text), parent);
  lab->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
  return add(lab, name, l, t, w, h, locks);
}

QLineEdit* Controls::field(QWidget* parent, const char* name, const char* text, int l, int t, int w, int h,
                           int locks, int maskDigits, int limitText, bool alignRight) {
  auto* e = new QLineEdit(QString::fromUtf8(text), parent);
  if (maskDigits > 0 || limitText > 0) e->setValidator(new FieldValidator(maskDigits, limitText, e));
  if (alignRight) e->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  return add(e, name, l, t, w, h, locks);
}

QCheckBox* Controls::check(QWidget* parent, const char* name, const char* text, int l, int t, int w, int h,
                           int locks) {
  return add(new QCheckBox(QString::fromUtf8(text), parent), name, l, t, w, h, locks);
}

void setPixelSize(QWidget* w, int size) {
  QFont f = w->font();
  f.setPixelSize(size);
  w->setFont(f);
}

void setTextColor(QWidget* w, QColor c) {
  QPalette p = w->palette();
  p.setColor(QPalette::WindowText, c);
  p.setColor(QPalette::Text, c);
  w->setPalette(p);
}

void multiLine(QLabel* l) {
  l->setWordWrap(true);
  l->setAlignment(Qt::AlignTop | (l->alignment() & Qt::AlignHorizontal_Mask));
}

void centred(QLabel* l) { l->setAlignment(Qt::AlignHCenter | (l->alignment() & Qt::AlignVertical_Mask)); }

QPlainTextEdit* multiLineField(QWidget* parent) {
  auto* e = new QPlainTextEdit(parent);
  e->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
  e->setTabChangesFocus(true);
  return e;
}

}  // namespace trelvane::shell
