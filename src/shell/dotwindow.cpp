// dotwindow.cpp -- the dot plot window: its size from the range, its canvas, Redraw.
#include "shell/dotwindow.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QStyle>

#include "plots/dotplot.h"
#include "plots/picture_qt.h"
#include "shell/widgets.h"
#include "shell/window1.h"

namespace trelvane::shell {

DotWindow::DotWindow(Window1* origine)
    : QWidget(nullptr, Qt::Window | Qt::WindowCloseButtonHint | Qt::WindowMinimizeButtonHint |
                           Qt::WindowTitleHint | Qt::CustomizeWindowHint),
      origine_(origine),
      st_(origine->sharedState()) {
  setAttribute(Qt::WA_DeleteOnClose);
  setObjectName(QStringLiteral("DotWindow"));
  setWindowTitle(QStringLiteral("Dot Plot"));
  // PBDot_Action: the range (EFTo and EFFrom repaired), the window's size.
  const plots::DotPlot plot = plots::PBDot_Action(*st_, origine->form());
  const plots::DotWindowSize& size = plot.size;
  lastForm_ = origine->form();
  pct2_ = plot.picture;

  // The window is as large as the range (one pixel a base, up to 32000 on a
  // side). Its controls stand on a page of that size, seen through a
  // scroll area no larger than the screen, so that only what is shown is
  // ever painted; a plot that fits the screen shows no scroll bar.
  auto* area = new QScrollArea(this);
  area->setFrameShape(QFrame::NoFrame);
  auto* page = new QWidget;
  page->setFixedSize(size.width, size.height);
  area->setWidget(page);
  QSize shown(size.width, size.height);
  if (QScreen* screen = QGuiApplication::primaryScreen()) {
    // A scroll bar takes room from the other side: that side grows by its
    // width, where the screen allows, so that the axis labels along the
    // bottom and the right are never under a bar.
    const QSize screenSize = screen->availableGeometry().size();
    const int bar = area->style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, area);
    bool wide = shown.width() > screenSize.width(), tall = shown.height() > screenSize.height();
    // a bar on one side narrows the other, which may then need its own
    if (wide && !tall) tall = shown.height() + bar > screenSize.height();
    if (tall && !wide) wide = shown.width() + bar > screenSize.width();
    shown = (shown + QSize(tall ? bar : 0, wide ? bar : 0)).boundedTo(screenSize);
  }
  setFixedSize(shown);
  area->setGeometry(0, 0, shown.width(), shown.height());

  Canvas2_ = new PictureCanvas(page);
  Canvas2_->setObjectName(QStringLiteral("Canvas2"));
  Canvas2_->setGeometry(0, 50, size.canvasWidth, size.canvasHeight);
  Canvas2_->setFocusPolicy(Qt::NoFocus);
  Canvas2_->draw = [this](QPainter& painter) {
    if (pct2_) plots::paintPicture(painter, *pct2_);
  };
  PushButton1_ = new QPushButton(QStringLiteral("Redraw"), page);
  PushButton1_->setObjectName(QStringLiteral("PushButton1"));
  PushButton1_->setGeometry(14, 16, 94, 22);
  connect(PushButton1_, &QPushButton::clicked, this, [this] { showPlot(); });
}

void DotWindow::showPlot() {
  if (origine_) lastForm_ = origine_->form();
  pct2_ = plots::showPlot(*st_, lastForm_, Canvas2_->width(), Canvas2_->height());
  Canvas2_->show();
  Canvas2_->repaint();
}

}  // namespace trelvane::shell
