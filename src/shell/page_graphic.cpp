// page_graphic.cpp -- the Graphic tab: the profile's canvas and range, and the drawing that Graph makes for it.
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>

#include <algorithm>

#include "plots/graph.h"
#include "plots/graph_controls.h"
#include "plots/picture_qt.h"
#include "shell/controls.h"
#include "shell/dotwindow.h"
#include "shell/widgets.h"
#include "shell/window1.h"

namespace trelvane::shell {

void Window1::buildGraphicTab(QWidget* p) {
  Canvas1 = make_.add(new PictureCanvas(p), "Canvas1", 24, 67, 352, 250, L | T | R | B);
  Canvas1->draw = [this](QPainter& painter) { paintCanvas(painter); };
  // The position under the pointer, in the run's and the record's numbers,
  // its score and how far it lies above the random mean.
  Canvas1->tip = [this](QPoint at) {
    syncCanvasSize();
    const auto pt = profilePointAt(*st_, form_, at.x());
    return pt ? QString::fromStdString(profilePointText(*st_, *pt)) : QString();
  };
  QLineEdit* from = make_.field(p, "EFFrom", "0", 67, 401, 73, 22, L | B, 7);
  bind_.text(from, &Form::EFFrom);
  bind_.leave(from, [this] { graphHandler(EFFrom_LostFocus); }, content_);
  make_.label(p, "StaticText1_21", "From", 24, 402, 45, 20, L | B);
  make_.label(p, "StaticText1_22", "to", 145, 402, 28, 20, L | B);
  QLineEdit* to = make_.field(p, "EFTo", "max", 172, 401, 73, 22, L | B);
  bind_.text(to, &Form::EFTo);
  bind_.leave(to, [this] { graphHandler(EFTo_LostFocus); }, content_);
  setPixelSize(make_.label(p, "StaticText1_20", "Tip: You can resize this window", 24, 40, 315, 20, 0), 10);
  // conserved segments: shaded under the profile, and File > Export's rule; beside the tip,
  // over the drawing they change
  bind_.check(make_.check(p, "CBShadeSegments", "Shade at", 185, 38, 72, 20, R), &Form::CBShadeSegments,
              [this] { graphHandler(CBShadeSegments_Action); });
  QLineEdit* threshold = make_.field(p, "EFSegThreshold", "0.70", 262, 37, 46, 22, R, 0, 12);
  threshold->setToolTip(QStringLiteral(
      "Segments: windows at or above this fraction of identities (0.70), or above the random expectation "
      "(mean, mean+3sd, max), over at least the number of positions on the right"));
  bind_.text(threshold, &Form::EFSegThreshold);
  bind_.leave(threshold, [this] { graphHandler(EFSegThreshold_LostFocus); }, content_);
  make_.label(p, "StaticText18", "over", 311, 38, 28, 20, R);
  QLineEdit* length = make_.field(p, "EFSegLength", "100", 340, 37, 36, 22, R, 9, 0, true);
  length->setToolTip(QStringLiteral("The least number of positions of a segment"));
  bind_.text(length, &Form::EFSegLength);
  bind_.leave(length, [this] { graphHandler(EFSegLength_LostFocus); }, content_);
  auto* mess = make_.label(p, "ST_messGraph", "", 24, 365, 343, 20, L | R | B);
  setPixelSize(mess, 10);
  setTextColor(mess, QColor(255, 0, 0));
  bind_.label(mess, &Form::ST_messGraph);
  PBDot = make_.add(new QPushButton(QStringLiteral("Dot Plot"), p), "PBDot", 279, 400, 97, 22, R | B);
  PBDot->setEnabled(false);
  bind_.enabled(PBDot, &Form::PBDotEnabled);
  connect(PBDot, &QPushButton::clicked, this, [this] { PBDot_Action(); });
}

// drawing

void Window1::graphHandler(void (*handler)(ComparisonState&, Form&)) {
  syncCanvasSize();
  handler(*st_, form_);
  Canvas1->update();
}

void Window1::syncCanvasSize() {
  form_.Canvas1Width = Canvas1->width();
  form_.Canvas1Height = Canvas1->height();
}

void Window1::graph() {
  syncCanvasSize();
  Graph(*st_, form_);
  dropStalePicture();
  Canvas1->update();
}

void Window1::dropStalePicture() {
  // Graph draws nothing without bases or a window size, and would leave an
  // earlier run's curve standing as if it were this one's.
  if (!st_->pct || (st_->nbbases != 0 && st_->windgraph != 0)) return;
  st_->pct = std::make_shared<plots::Picture>(std::max(1, form_.Canvas1Width), std::max(1, form_.Canvas1Height));
  form_.ST_messGraph = st_->nbbases == 0 ? "No profile to draw: the longest sequence is empty"
                                         : "No profile to draw: the window size of the run is 0";
}

void Window1::paintCanvas(QPainter& painter) {
  // Only the picture that Graph built: painting never draws anew.
  if (st_->pct) plots::paintPicture(painter, *st_->pct);
}

void Window1::PBDot_Action() {
  // The new window repairs EFTo and EFFrom as it reads the range.
  auto* dot = new DotWindow(this);
  refresh();
  dot->show();
}

}  // namespace trelvane::shell
