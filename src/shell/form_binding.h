// form_binding.h -- widgets bound to the form: a user's change into its field and handler, then the form back into every widget.
#pragma once

#include <QObject>

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "state/form.h"

class QAbstractButton;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QWidget;

namespace trelvane::shell {

class EventHook;

// The form is the truth: a user's edit (typed, clicked, or set through the
// accessibility interface) sets its field, runs the logic's handler, then
// every widget is refreshed from the form with its signals blocked, so that
// what the logic changed shows and no refresh counts as an edit.
class FormBinding {
 public:
  using Handler = std::function<void()>;
  FormBinding(QObject* context, Form& form) : context_(context), form_(form) {}

  void text(QLineEdit* e, std::string Form::*f, Handler onChange = {});
  void plain(QPlainTextEdit* e, std::string Form::*f, Handler onChange = {});
  void check(QAbstractButton* b, bool Form::*f, Handler onAction = {});
  // One of an exclusive pair: acts only when turned on.
  void radio(QAbstractButton* b, bool Form::*f, Handler onAction);
  void label(QLabel* l, std::string Form::*f);
  void enabled(QWidget* w, bool Form::*f);
  void visible(QWidget* w, bool Form::*f);
  // The field's leaving handler; Return or Enter moves the focus to its
  // partner field (EFFrom and EFTo, ...), all its text selected.
  void leave(QLineEdit* e, Handler onLeave, QWidget* root);
  // A refresh step of the caller's own, for what the kinds above do not cover.
  void push(std::function<void()> pusher) { pushers_.push_back(std::move(pusher)); }

  // A user's change: the handler, then the refresh; nothing while refreshing.
  void edited(const Handler& handler);
  // Form to widgets, signals blocked.
  void refresh();

 private:
  // The pusher and the puller of a check box or radio button.
  void button(QAbstractButton* b, bool Form::*f);
  void pullChecks();

  QObject* context_;
  Form& form_;
  std::vector<std::function<void()>> pushers_;
  std::vector<std::function<void()>> checkPullers_;
  std::map<QLineEdit*, Handler> leaveHandlers_;
  bool refreshing_ = false;
};

}  // namespace trelvane::shell
