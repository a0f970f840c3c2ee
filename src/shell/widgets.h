// widgets.h -- the small widgets of the main window: drop boxes, field rules, canvases, the matrix grid.
#pragma once

#include <QColor>
#include <QGroupBox>
#include <QLabel>
#include <QRect>
#include <QString>
#include <QValidator>
#include <QWidget>

#include <array>
#include <functional>
#include <optional>
#include <string>

class QKeyEvent;
class QMimeData;
class QPainter;

namespace trelvane::shell {

// The logic's texts are bytes; the widgets show them as UTF-8.
QString toQ(const std::string& text);
std::string fromQ(const QString& text);

// What the user may type in an edit field: its Mask of nines (digits only,
// one per nine) and its LimitText. Text that the program sets is not held to
// either, so a longer value written by the logic stays whole.
class FieldValidator : public QValidator {
 public:
  FieldValidator(int maskDigits, int limitText, QObject* parent);
  State validate(QString& input, int& pos) const override;

 private:
  int digits_;  // 0: no mask
  int limit_;   // 0: no limit
};

// A text shown whole where it fits, else cut at its right end with "...":
// the whole text is then the widget's tooltip.
QString elided(const QWidget* w, const QString& text, int width);
// Shows text elided to width through show, the whole text in w's tooltip
// where it was cut.
void showElided(QWidget* w, const QString& full, int width, const std::function<void(const QString&)>& show);

// A one-line label whose text never runs past it (Message): elided, whole in
// its tooltip, again at each resize.
class ElidedLabel : public QLabel {
 public:
  ElidedLabel(const QString& text, QWidget* parent);
  void setFullText(const QString& text);
  const QString& fullText() const { return full_; }

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  void fit();
  QString full_;
};

// A group box that takes a dropped file. Only the first item of a drag
// counts, and only a file of plain text; anything else is not accepted.
class DropBox : public QGroupBox {
 public:
  DropBox(const QString& title, QWidget* parent);
  std::function<void(const QString& path)> onDrop;

  // The path of the drag's first item when it is a local plain-text file.
  static std::optional<QString> droppedFile(const QMimeData* mime);

  // The caption, elided to the box's width (a title line can be long).
  void setFullTitle(const QString& title);
  const QString& fullTitle() const { return full_; }

 protected:
  void resizeEvent(QResizeEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dragMoveEvent(QDragMoveEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  void fit();
  QString full_;
};

// A canvas that paints what its owner draws (Canvas1, Canvas2).
class PictureCanvas : public QWidget {
 public:
  explicit PictureCanvas(QWidget* parent);
  std::function<void(QPainter&)> draw;
  // The tooltip for a point of the canvas; empty for none.
  std::function<QString(QPoint)> tip;

 protected:
  void paintEvent(QPaintEvent* event) override;
  bool event(QEvent* event) override;
};

// The sixteen rounded cell backgrounds of the matrix on the Model tab.
class ModelGrid : public QWidget {
 public:
  struct Cell {
    QRect rect;  // window coordinates
    QColor fill;
  };
  // Row by row in A, T, C, G order: yellow where both bases are of one
  // chemical class (identities, transitions), green elsewhere.
  static std::array<Cell, 16> cells();
  // The rectangle that holds all cells, in window coordinates.
  static QRect bounds();

  explicit ModelGrid(QWidget* parent);

 protected:
  void paintEvent(QPaintEvent* event) override;
};

// Key and focus events of one control, handed to the window's handlers.
class EventHook : public QObject {
 public:
  explicit EventHook(QWidget* target);
  std::function<bool(QKeyEvent*)> keyDown;  // true swallows the key
  std::function<void()> lostFocus;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
};

}  // namespace trelvane::shell
