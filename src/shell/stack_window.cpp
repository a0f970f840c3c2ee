// stack_window.cpp -- the stacked figure in a window: its canvas, the read-out under the pointer,
// saving it as SVG, PDF or PNG.
#include "shell/stack_window.h"

#include <QFileDialog>
#include <QGuiApplication>
#include <QLabel>
#include <QMessageBox>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

#include "plots/picture_qt.h"
#include "shell/widgets.h"

namespace trelvane::shell {
namespace {

constexpr int kWidth = 1000;

// The value of the panel's profile at a reference position, if it has one.
std::optional<plots::StackValue> valueAt(const std::vector<plots::StackValue>& values, int64_t position) {
  auto it = std::upper_bound(values.begin(), values.end(), position,
                             [](int64_t p, const plots::StackValue& v) { return p < v.start; });
  if (it == values.begin()) return std::nullopt;
  --it;
  if (position >= it->end) return std::nullopt;
  return *it;
}

}  // namespace

StackWindow::StackWindow(stack::StackResult result)
    : QWidget(nullptr, Qt::Window), result_(std::move(result)), picture_(plots::drawStack(result_.figure, kWidth)) {
  setAttribute(Qt::WA_DeleteOnClose);
  setObjectName(QStringLiteral("StackWindow"));
  setWindowTitle(QString::fromStdString(result_.figure.title));
  auto* layout = new QVBoxLayout(this);
  auto* area = new QScrollArea(this);
  area->setFrameShape(QFrame::NoFrame);
  canvas_ = new PictureCanvas(nullptr);
  canvas_->setObjectName(QStringLiteral("CanvasStack"));
  canvas_->setFixedSize(picture_.width, picture_.height);
  canvas_->setMouseTracking(true);
  canvas_->installEventFilter(this);
  canvas_->draw = [this](QPainter& p) { plots::paintPicture(p, picture_); };
  canvas_->tip = [this](QPoint at) {
    const QString text = readOut(at);
    if (!text.isEmpty()) status_->setText(text);
    return text;
  };
  area->setWidget(canvas_);
  layout->addWidget(area, 1);
  auto* row = new QHBoxLayout;
  status_ = new QLabel(QStringLiteral("Point at a profile to read its position, identity and score."), this);
  status_->setObjectName(QStringLiteral("ST_stackInfo"));
  auto* save = new QPushButton(QStringLiteral("Save..."), this);
  save->setObjectName(QStringLiteral("PBSaveStack"));
  row->addWidget(status_, 1);
  row->addWidget(save);
  layout->addLayout(row);
  connect(save, &QPushButton::clicked, this, [this] {
    const QString path = QFileDialog::getSaveFileName(this, QStringLiteral("Save the figure"), QStringLiteral("stack.svg"),
                                                      QStringLiteral("Figures (*.svg *.pdf *.png)"));
    if (path.isEmpty()) return;
    std::string why;
    if (!plots::writePictureFile(picture_, path.toStdString(), &why))
      QMessageBox::warning(this, QStringLiteral("Save the figure"), QString::fromStdString(why));
  });
  QSize shown(picture_.width + 30, picture_.height + 70);
  if (QScreen* screen = QGuiApplication::primaryScreen()) shown = shown.boundedTo(screen->availableGeometry().size());
  resize(shown);
}

// The line under the figure follows the pointer; the tooltip tells the same where it rests.
bool StackWindow::eventFilter(QObject* watched, QEvent* event) {
  if (watched == canvas_ && event->type() == QEvent::MouseMove) {
    const QString text = readOut(static_cast<QMouseEvent*>(event)->position().toPoint());
    if (!text.isEmpty()) status_->setText(text);
  }
  return QWidget::eventFilter(watched, event);
}

QString StackWindow::statusText() const { return status_->text(); }

StackWindow* StackWindow::open(const stack::StackRequest& request, QString* why) {
  stack::StackResult result;
  std::string failed;
  if (!stack::buildStack(request, result, &failed)) {
    *why = QString::fromStdString(failed);
    return nullptr;
  }
  auto* w = new StackWindow(std::move(result));
  w->show();
  return w;
}

void StackWindow::chooseAndOpen(QWidget* parent) {
  const QStringList files = QFileDialog::getOpenFileNames(
      parent, QStringLiteral("Result files against one reference"), QString(),
      QStringLiteral("Results and profile tracks (*.txt *.bedGraph *.bedgraph *.bg);;All files (*)"));
  if (files.isEmpty()) return;
  stack::StackRequest request;
  for (const QString& f : files) request.panels.push_back({f.toStdString(), ""});
  const QString annotation = QFileDialog::getOpenFileName(
      parent, QStringLiteral("Annotation of the reference (Cancel for none)"), QString(),
      QStringLiteral("Gene models (*.gff3 *.gff *.bed);;All files (*)"));
  if (!annotation.isEmpty()) request.annotation = annotation.toStdString();
  QString why;
  if (!open(request, &why)) QMessageBox::warning(parent, QStringLiteral("Stack results"), why);
}

QString StackWindow::readOut(QPoint at) const {
  const auto point = plots::stackPointAt(result_.figure, kWidth, at.x(), at.y());
  if (!point) return {};
  const plots::StackPanel& panel = result_.figure.panels[point->panel];
  const stack::StackResult::PanelData& data = result_.data[point->panel];
  QString text = QStringLiteral("%1: position %2")
                     .arg(QString::fromStdString(panel.name),
                          QString::fromStdString(plots::groupedNumber(point->position + 1)));
  if (data.runFrom > 0 && data.runFrom != 1)
    text += QStringLiteral(" (run %1)").arg(QString::fromStdString(plots::groupedNumber(point->position + 2 - data.runFrom)));
  const auto v = valueAt(panel.values, point->position);
  if (!v) return text + QStringLiteral(", no score");
  text += QStringLiteral(", identity %1").arg(v->value, 0, 'f', 3);
  if (data.W > 0) text += QStringLiteral(" (score %1 of %2)").arg(v->value * data.W, 0, 'g', 4).arg(data.W);
  if (data.sd > 0)
    text += QStringLiteral(", %1 SD above the random mean").arg((v->value - data.mean) / data.sd, 0, 'f', 1);
  return text;
}

}  // namespace trelvane::shell
