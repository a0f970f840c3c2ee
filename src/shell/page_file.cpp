// page_file.cpp -- the File tab: the two sequences, the range, the window size, the outputs; its file routes.
#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "input/fasta_file.h"
#include "input/panel.h"
#include "shell/app.h"
#include "shell/controls.h"
#include "shell/widgets.h"
#include "shell/window1.h"

namespace trelvane::shell {

void Window1::buildFileTab(QWidget* p) {
  auto& st = *st_;
  // EFWS and its label; PBRUN and ProgressBar1 are the window's (see build)
  QLineEdit* ws = make_.field(p, "EFWS", "30", 122, 340, 35, 21, 0, 3, 3);
  bind_.text(ws, &Form::EFWS);
  bind_.leave(ws, [this] { EFWS_LostFocus(form_); }, content_);
  make_.label(p, "StaticText1_6", "Window size", 27, 341, 83, 20, 0);
  setTextColor(make_.label(p, "StaticText1_2", "Trelvane comparison", 122, 39, 126, 20, 0), QColor(255, 0, 255));

  // outputs, and the run's message line
  auto* box1 = make_.add(new QGroupBox(QStringLiteral("Ouput"), p), "GroupBox1", 165, 341, 215, 46, 0);
  bind_.check(make_.check(box1, "CBFile", "To file", 173, 364, 80, 20, 0), &Form::CBFile);
  bind_.check(make_.check(box1, "CBClipboard", "To clipboard", 262, 364, 111, 20, 0), &Form::CBClipboard);
  Message = make_.add(new ElidedLabel(QStringLiteral("Message"), p), "Message", 22, 386, 262, 20, L | R | B);
  bind_.push([this] {
    if (Message->fullText() != toQ(form_.Message)) Message->setFullText(toQ(form_.Message));
  });

  // the longest sequence
  GBLong = make_.add(new DropBox(QStringLiteral("Longest sequence"), p), "GBLong", 16, 61, 364, 132, L | T | R);
  auto* open0 = make_.add(new QPushButton(QStringLiteral("Filename"), GBLong), "BevelButton0", 28, 84, 60, 22, L);
  EditField0 = make_.field(GBLong, "EditField0", "Drop a sequence file or output file", 100, 84, 265, 22, L | R);
  bind_.text(EditField0, &Form::EditField0);
  bind_.check(make_.check(GBLong, "Comp0", "Complement", 170, 109, 153, 20, 0), &Form::Comp0);
  bind_.check(make_.check(GBLong, "Reverse0", "Reverse", 170, 131, 80, 20, 0), &Form::Reverse0);
  bind_.check(make_.check(GBLong, "display0", "Display read seq.", 28, 109, 130, 20, 0), &Form::display0);
  bind_.check(make_.check(GBLong, "CBRemoveN0", "Remove Ns", 27, 131, 126, 20, 0), &Form::CBRemoveN0);
  make_.label(GBLong, "StaticText1_4", "Analysis from", 52, 162, 84, 20, 0);
  make_.label(GBLong, "StaticText1_5", "to", 208, 162, 23, 20, 0);
  bind_.text(make_.field(GBLong, "EFAnaFrom", "1", 143, 161, 54, 22, 0), &Form::EFAnaFrom,
             [this, &st] { EFAnaFrom_TextChange(st, form_); });
  bind_.text(make_.field(GBLong, "EFAnaTo", "max", 232, 161, 54, 22, 0), &Form::EFAnaTo,
             [this, &st] { EFAnaTo_TextChange(st, form_); });

  // the shortest sequence
  GBShort = make_.add(new DropBox(QStringLiteral("Shortest sequence"), p), "GBShort", 16, 217, 364, 91, L | T | R);
  bind_.check(make_.check(GBShort, "CBRemoveN1", "Remove Ns", 27, 284, 126, 20, 0), &Form::CBRemoveN1);
  auto* open1 = make_.add(new QPushButton(QStringLiteral("Filename"), GBShort), "BevelButton1", 28, 236, 60, 22, 0);
  EditField1 = make_.field(GBShort, "EditField1", "Drop a sequence file or output file", 100, 236, 265, 22, L | R);
  bind_.text(EditField1, &Form::EditField1);
  bind_.check(make_.check(GBShort, "Display1", "Display read seq.", 27, 261, 130, 20, 0), &Form::Display1);
  bind_.check(make_.check(GBShort, "Reverse1", "Reverse", 170, 284, 80, 20, 0), &Form::Reverse1);
  bind_.check(make_.check(GBShort, "Comp1", "Complement", 170, 261, 118, 20, 0), &Form::Comp1);
  bind_.visible(GBShort, &Form::GBShortVisible);
  // record choosers: all records joined by default; "NAME:FROM-TO" typed in reads a region
  for (int side : {0, 1}) {
    QComboBox*& box = side == 0 ? Region0 : Region1;
    box = make_.add(new QComboBox(side == 0 ? GBLong : GBShort), side == 0 ? "Region0" : "Region1", 255,
                    side == 0 ? 131 : 284, 110, 20, R);
    box->setEditable(true);
    // A typed region is read, not added to the records: one that cannot be
    // read would stay in the list.
    box->setInsertPolicy(QComboBox::NoInsert);
    box->setToolTip(QStringLiteral("Record or region read (NAME, NAME:FROM-TO); empty joins every record"));
    box->setVisible(false);
    connect(box, &QComboBox::activated, this, [this, side] { chooseRegion(side); });
    connect(box->lineEdit(), &QLineEdit::returnPressed, this, [this, side] { chooseRegion(side); });
  }
  bind_.push([this] {
    if (GBLong->fullTitle() != toQ(form_.GBLongCaption)) GBLong->setFullTitle(toQ(form_.GBLongCaption));
    if (GBShort->fullTitle() != toQ(form_.GBShortCaption)) GBShort->setFullTitle(toQ(form_.GBShortCaption));
  });

  // A file dropped anywhere on a group box is the box's, fields included.
  for (QGroupBox* box : {static_cast<QGroupBox*>(GBLong), static_cast<QGroupBox*>(GBShort)})
    for (QLineEdit* e : box->findChildren<QLineEdit*>()) e->setAcceptDrops(false);
  connect(open0, &QAbstractButton::clicked, this, [this] { BevelButton0_Action(); });
  connect(open1, &QAbstractButton::clicked, this, [this] { BevelButton1_Action(); });
  GBLong->onDrop = [this](const QString& path) { GBLong_DropObject(path); };
  GBShort->onDrop = [this](const QString& path) { GBShort_DropObject(path); };

  bind_.check(make_.check(p, "CBCPG", "Show CpG islands", 47, 195, 300, 20, 0), &Form::CBCPG,
              [this, &st] { CBCPG_Action(st, form_); });
  auto* note = make_.label(p, "StaticText17",
                           "The options \"Complement, Reverse, and Remove Ns\" are taken into account only at "
                           "the time of sequence reading.",
                           23, 314, 357, 24, 0);
  multiLine(note);
  setPixelSize(note, 9);
  setTextColor(note, QColor(255, 0, 0));
}

// the routes of a file

void Window1::openRoute(Route route, const std::optional<std::string>& path) {
  const int side = route == Route::GBLongDrop || route == Route::BevelButton0 ? 0 : 1;
  // A new file is read whole: the region chosen belonged to the file before.
  if (path != st_->f[side]) (side == 0 ? form_.Region0 : form_.Region1).clear();
  const std::string why = openFile(*st_, form_, route, path, [this] { graph(); });
  if (why.empty() && path) fillRecordChooser(side);
  refresh();
  QLineEdit* pathField = route == Route::GBLongDrop || route == Route::BevelButton0 ? EditField0 : EditField1;
  pathField->setCursorPosition(static_cast<int>(pathField->text().size()));
}

void Window1::fillRecordChooser(int side) {
  QComboBox* box = side == 0 ? Region0 : Region1;
  const std::vector<std::string> names = st_->f[side] ? recordNames(*st_->f[side]) : std::vector<std::string>();
  box->clear();
  box->addItem(QString());
  for (const std::string& name : names) box->addItem(toQ(name));
  box->setEditText(toQ(side == 0 ? form_.Region0 : form_.Region1));
  box->setVisible(names.size() > 1 || !(side == 0 ? form_.Region0 : form_.Region1).empty());
}

void Window1::chooseRegion(int side) {
  if (!st_->f[side]) return;
  std::string& region = side == 0 ? form_.Region0 : form_.Region1;
  const std::string before = region;
  region = fromQ((side == 0 ? Region0 : Region1)->currentText().trimmed());
  // Return on a record's name also activates its item: one reading is enough.
  if (region == before) return;
  const std::string why = openFile(*st_, form_, side == 0 ? Route::BevelButton0 : Route::BevelButton1,
                                   st_->f[side], [this] { graph(); });
  // A region that cannot be read leaves the chooser at the one read before.
  if (!why.empty()) {
    region = before;
    (side == 0 ? Region0 : Region1)->setEditText(toQ(before));
  }
  refresh();
}

std::optional<std::string> Window1::askOpenFile() {
  if (openDialog) return openDialog();
  const QString path = QFileDialog::getOpenFileName(this, QString(), QString(), openFilter());
  if (path.isEmpty()) return std::nullopt;
  return fromQ(path);
}

void Window1::BevelButton0_Action() { openRoute(Route::BevelButton0, askOpenFile()); }
void Window1::BevelButton1_Action() { openRoute(Route::BevelButton1, askOpenFile()); }
void Window1::GBLong_DropObject(const QString& path) { openRoute(Route::GBLongDrop, fromQ(path)); }
void Window1::GBShort_DropObject(const QString& path) { openRoute(Route::GBShortDrop, fromQ(path)); }

}  // namespace trelvane::shell
