// form_binding.cpp -- the pushers that show the form, and the user's changes that set it.
#include "shell/form_binding.h"

#include <QAbstractButton>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>

#include <memory>

#include "plots/graph_controls.h"
#include "shell/widgets.h"

namespace trelvane::shell {

void FormBinding::edited(const Handler& handler) {
  if (refreshing_) return;
  if (handler) handler();
  refresh();
}

void FormBinding::refresh() {
  refreshing_ = true;
  for (auto& push : pushers_) push();
  refreshing_ = false;
}

void FormBinding::pullChecks() {
  for (auto& pull : checkPullers_) pull();
}

void FormBinding::text(QLineEdit* e, std::string Form::*f, Handler onChange) {
  pushers_.push_back([this, e, f] {
    const QString text = toQ(form_.*f);
    if (e->text() != text) {
      QSignalBlocker block(e);
      e->setText(text);
    }
  });
  // Every change that is not the form's own (whose setText is blocked):
  // typing, and a value set by an assistive technology. Such a value comes
  // without the focus, so the field's leaving handler follows at once, as
  // if the user had typed it and moved on.
  QObject::connect(e, &QLineEdit::textChanged, context_, [this, e, f, onChange](const QString& text) {
    form_.*f = fromQ(text);
    edited(onChange);
    if (!e->hasFocus())
      if (auto leave = leaveHandlers_.find(e); leave != leaveHandlers_.end()) edited(leave->second);
  });
}

void FormBinding::plain(QPlainTextEdit* e, std::string Form::*f, Handler onChange) {
  // A report can be large: the text that the widget holds is remembered as
  // bytes, so that a refresh compares bytes and converts only on a change.
  auto shown = std::make_shared<std::string>(fromQ(e->toPlainText()));
  pushers_.push_back([this, e, f, shown] {
    if (form_.*f == *shown) return;
    *shown = form_.*f;
    QSignalBlocker block(e);
    e->setPlainText(toQ(*shown));
  });
  QObject::connect(e, &QPlainTextEdit::textChanged, context_, [this, e, f, shown, onChange] {
    form_.*f = fromQ(e->toPlainText());
    *shown = form_.*f;
    edited(onChange);
  });
}

void FormBinding::button(QAbstractButton* b, bool Form::*f) {
  pushers_.push_back([this, b, f] {
    if (b->isChecked() != form_.*f) {
      QSignalBlocker block(b);
      b->setChecked(form_.*f);
    }
  });
  checkPullers_.push_back([this, b, f] { form_.*f = b->isChecked(); });
}

void FormBinding::check(QAbstractButton* b, bool Form::*f, Handler onAction) {
  button(b, f);
  // toggled, not clicked: a toggle through the accessibility interface is
  // no click, and must act as one.
  QObject::connect(b, &QAbstractButton::toggled, context_, [this, onAction] {
    pullChecks();
    edited(onAction);
  });
}

void FormBinding::radio(QAbstractButton* b, bool Form::*f, Handler onAction) {
  button(b, f);
  // A click on the button already on is no action (the unit would be
  // converted twice); the partner turned off is none either.
  QObject::connect(b, &QAbstractButton::toggled, context_, [this, f, onAction](bool on) {
    if (!on || form_.*f) return;
    pullChecks();
    edited(onAction);
  });
}

void FormBinding::label(QLabel* l, std::string Form::*f) {
  pushers_.push_back([this, l, f] {
    const QString text = toQ(form_.*f);
    if (l->text() != text) l->setText(text);
  });
}

void FormBinding::enabled(QWidget* w, bool Form::*f) {
  pushers_.push_back([this, w, f] {
    if (w->isEnabled() != form_.*f) w->setEnabled(form_.*f);
  });
}

void FormBinding::visible(QWidget* w, bool Form::*f) {
  pushers_.push_back([this, w, f] {
    if (!w->isHidden() != form_.*f) w->setVisible(form_.*f);
  });
}

void FormBinding::leave(QLineEdit* e, Handler onLeave, QWidget* root) {
  leaveHandlers_[e] = onLeave;
  auto* hook = new EventHook(e);
  hook->lostFocus = [this, onLeave] { edited(onLeave); };
  const char* partner = returnKeyPartner(e->objectName().toLatin1().constData());
  if (!partner) return;
  const QString partnerName = QString::fromLatin1(partner);
  hook->keyDown = [root, partnerName](QKeyEvent* key) {
    if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) {
      if (auto* other = root->findChild<QLineEdit*>(partnerName)) {
        other->setFocus(Qt::TabFocusReason);
        other->selectAll();
      }
    }
    return false;  // the key still goes to the field
  };
}

}  // namespace trelvane::shell
