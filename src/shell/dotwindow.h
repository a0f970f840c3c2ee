// dotwindow.h -- DotWindow: the dot plot of a Window1's two sequences, redrawn from it on demand.
#pragma once

#include <QPointer>
#include <QWidget>

#include <memory>

#include "state/form.h"
#include "state/state.h"
#include "plots/picture.h"

class QPushButton;

namespace trelvane::shell {

class PictureCanvas;
class Window1;

// One window per press of PBDot. Its size is fixed when it opens (from the
// range then shown); Redraw reads the window's sequences and range afresh
// and draws into the same canvas, cut at its edge.
class DotWindow : public QWidget {
 public:
  explicit DotWindow(Window1* origine);

  // showPlot: the picture built anew from origine.
  void showPlot();
  const plots::Picture* picture() const { return pct2_.get(); }
  PictureCanvas* canvas() const { return Canvas2_; }

 private:
  QPointer<Window1> origine_;
  // The comparison outlives its window; a redraw after the window closed
  // uses the controls as they last stood.
  std::shared_ptr<ComparisonState> st_;
  Form lastForm_;
  std::shared_ptr<plots::Picture> pct2_;
  PictureCanvas* Canvas2_ = nullptr;
  QPushButton* PushButton1_ = nullptr;
};

}  // namespace trelvane::shell
