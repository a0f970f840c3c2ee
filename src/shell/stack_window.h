// stack_window.h -- StackWindow: result files against one reference, stacked over its gene
// models, with the read-out of the point under the pointer.
#pragma once

#include <QWidget>

#include "plots/picture.h"
#include "stack/stack_figure.h"

class QLabel;

namespace trelvane::shell {

class PictureCanvas;

class StackWindow : public QWidget {
 public:
  // File > Stack results...: the result files (or profile tracks) and an
  // optional annotation, chosen in file dialogs; a message box where they
  // cannot be drawn.
  static void chooseAndOpen(QWidget* parent);
  // A window for the request, or none with why (nothing is opened).
  static StackWindow* open(const stack::StackRequest& request, QString* why);

  // The read-out of a point of the canvas: the panel, the position on the
  // reference, the identity and score, and how many SD above the random mean.
  QString readOut(QPoint at) const;
  const plots::Picture& picture() const { return picture_; }
  QString statusText() const;
  PictureCanvas* canvas() const { return canvas_; }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  explicit StackWindow(stack::StackResult result);

  stack::StackResult result_;
  plots::Picture picture_;
  PictureCanvas* canvas_ = nullptr;
  QLabel* status_ = nullptr;
};

}  // namespace trelvane::shell
