// window1_layout.cpp -- the controls of Window1: kind, name, place, locks, caption, default.
#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QFontDatabase>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>

#include "model/estimation.h"
#include "shell/anchors.h"
#include "shell/widgets.h"
#include "shell/window1.h"

namespace trelvane::shell {

namespace {

constexpr int L = kLockL, T = kLockT, R = kLockR, B = kLockB;

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

// A static text that wraps onto several lines.
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

}  // namespace

template <class W>
W* Window1::add(W* w, const char* name, int left, int top, int width, int height, int locks) {
  w->setObjectName(QString::fromLatin1(name));
  anchors_->place(w, QRect(left, top, width, height), locks);
  return w;
}

QLabel* Window1::label(QWidget* parent, const char* name, const char* text, int l, int t, int w, int h,
                       int locks) {
  auto* lab = new QLabel(QString::fromUtf8(text), parent);
  lab->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
  return add(lab, name, l, t, w, h, locks);
}

QLineEdit* Window1::field(QWidget* parent, const char* name, const char* text, int l, int t, int w,
                          int h, int locks, int maskDigits, int limitText, bool alignRight) {
  auto* e = new QLineEdit(QString::fromUtf8(text), parent);
  if (maskDigits > 0 || limitText > 0) e->setValidator(new FieldValidator(maskDigits, limitText, e));
  if (alignRight) e->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  return add(e, name, l, t, w, h, locks);
}

QCheckBox* Window1::check(QWidget* parent, const char* name, const char* text, int l, int t, int w,
                          int h, int locks) {
  return add(new QCheckBox(QString::fromUtf8(text), parent), name, l, t, w, h, locks);
}

void Window1::build() {
  QFont base = content_->font();
  if (QFontDatabase::families().contains(QStringLiteral("Liberation Sans")))
    base.setFamily(QStringLiteral("Liberation Sans"));
  // The controls' sizes are those of the system font at 12 points of 72 dpi.
  base.setPixelSize(12);
  content_->setFont(base);

  TabPanel1 = add(new QTabWidget(content_), "TabPanel1", 8, 4, 383, 430, L | T | R | B);
  const char* tabs[5] = {"File", "Model", "Results", "Graphic", "Pref"};
  QWidget* pages[5];
  for (int i = 0; i < 5; ++i) {
    pages[i] = new QWidget;
    pages[i]->setObjectName(QStringLiteral("TabPanel1_page%1").arg(i + 1));
    TabPanel1->addTab(pages[i], QString::fromLatin1(tabs[i]));
  }
  buildFileTab(pages[0]);
  buildModelTab(pages[1]);
  buildResultsTab(pages[2]);
  buildGraphicTab(pages[3]);
  buildPrefTab(pages[4]);
}

void Window1::buildFileTab(QWidget* p) {
  // PBRUN and ProgressBar1 belong to the window itself, not to the panel:
  // they stay usable while a run keeps the panel disabled.
  PBRUN = add(new QPushButton(QStringLiteral("Run"), content_), "PBRUN", 311, 403, 69, 20, R | B);
  PBRUN->setEnabled(false);
  PBRUN->setDefault(true);
  field(p, "EFWS", "30", 122, 340, 35, 21, 0, 3, 3);
  label(p, "StaticText1_6", "Window size", 27, 341, 83, 20, 0);
  setTextColor(label(p, "StaticText1_2", "Trelvane comparison", 122, 39, 126, 20, 0), QColor(255, 0, 255));
  ProgressBar1 = add(new QProgressBar(content_), "ProgressBar1", 22, 411, 262, 12, L | R | B);
  ProgressBar1->setRange(0, 100);
  ProgressBar1->setValue(0);
  ProgressBar1->setTextVisible(false);
  auto* box1 = add(new QGroupBox(QStringLiteral("Ouput"), p), "GroupBox1", 165, 341, 215, 46, 0);
  check(box1, "CBFile", "To file", 173, 364, 80, 20, 0);
  check(box1, "CBClipboard", "To clipboard", 262, 364, 111, 20, 0);
  Message = add(new ElidedLabel(QStringLiteral("Message"), p), "Message", 22, 386, 262, 20, L | R | B);

  GBLong = add(new DropBox(QStringLiteral("Longest sequence"), p), "GBLong", 16, 61, 364, 132, L | T | R);
  add(new QPushButton(QStringLiteral("Filename"), GBLong), "BevelButton0", 28, 84, 60, 22, L);
  EditField0 = field(GBLong, "EditField0", "Drop a sequence file or output file", 100, 84, 265, 22, L | R);
  check(GBLong, "Comp0", "Complement", 170, 109, 153, 20, 0);
  check(GBLong, "Reverse0", "Reverse", 170, 131, 80, 20, 0);
  check(GBLong, "display0", "Display read seq.", 28, 109, 130, 20, 0);
  check(GBLong, "CBRemoveN0", "Remove Ns", 27, 131, 126, 20, 0);
  label(GBLong, "StaticText1_4", "Analysis from", 52, 162, 84, 20, 0);
  label(GBLong, "StaticText1_5", "to", 208, 162, 23, 20, 0);
  field(GBLong, "EFAnaFrom", "1", 143, 161, 54, 22, 0);
  field(GBLong, "EFAnaTo", "max", 232, 161, 54, 22, 0);

  GBShort = add(new DropBox(QStringLiteral("Shortest sequence"), p), "GBShort", 16, 217, 364, 91, L | T | R);
  check(GBShort, "CBRemoveN1", "Remove Ns", 27, 284, 126, 20, 0);
  add(new QPushButton(QStringLiteral("Filename"), GBShort), "BevelButton1", 28, 236, 60, 22, 0);
  EditField1 = field(GBShort, "EditField1", "Drop a sequence file or output file", 100, 236, 265, 22, L | R);
  check(GBShort, "Display1", "Display read seq.", 27, 261, 130, 20, 0);
  check(GBShort, "Reverse1", "Reverse", 170, 284, 80, 20, 0);
  check(GBShort, "Comp1", "Complement", 170, 261, 118, 20, 0);

  // A file dropped anywhere on a group box is the box's, fields included.
  for (QGroupBox* box : {static_cast<QGroupBox*>(GBLong), static_cast<QGroupBox*>(GBShort)})
    for (QLineEdit* e : box->findChildren<QLineEdit*>()) e->setAcceptDrops(false);

  check(p, "CBCPG", "Show CpG islands", 47, 195, 300, 20, 0);
  auto* note = label(p, "StaticText17",
                     "The options \"Complement, Reverse, and Remove Ns\" are taken into account only at "
                     "the time of sequence reading.",
                     23, 314, 357, 24, 0);
  multiLine(note);
  setPixelSize(note, 9);
  setTextColor(note, QColor(255, 0, 0));
}

void Window1::buildModelTab(QWidget* p) {
  multiLine(label(p, "StaticText5",
                  "Enter two aligned sequences to estimate the parameters of the substution model.", 17,
                  268, 363, 43, 0));
  auto* head = label(p, "StaticText14", "Parameters of the substitution model", 65, 44, 253, 29, 0);
  multiLine(head);
  centred(head);
  setTextColor(head, QColor(0, 0, 255));
  auto* st0 = label(p, "ST_0", "Sequence 1 (from longest one)", 17, 308, 80, 41, 0);
  multiLine(st0);
  setPixelSize(st0, 10);
  auto* st1 = label(p, "ST_1", "Sequence 2 (from shortest one)", 17, 353, 81, 41, 0);
  multiLine(st1);
  setPixelSize(st1, 10);
  SeqModel1 = add(multiLineField(p), "SeqModel1", 105, 309, 275, 40, 0);
  SeqModel2 = add(multiLineField(p), "SeqModel2", 105, 354, 275, 40, 0);
  PupModel = add(new QComboBox(p), "PupModel", 29, 406, 155, 20, 0);
  PupModel->addItems({QStringLiteral("Identity"), QStringLiteral("TS/TV"), QStringLiteral("General model")});
  PupModel->setCurrentIndex(0);
  PupModel->setEnabled(false);
  add(new QPushButton(QStringLiteral("Apply"), p), "Apply", 203, 406, 97, 22, 0);
  auto* mess = label(p, "messModel", "", 32, 399, 169, 16, 0);
  multiLine(mess);
  setPixelSize(mess, 10);
  setTextColor(mess, QColor(255, 0, 0));
  label(p, "StaticText15", "Sum", 305, 71, 35, 33, 0);

  // the matrix grid: backgrounds, cell values, heads, sums
  const QRect grid = ModelGrid::bounds();
  add(new ModelGrid(p), "ModelGrid", grid.left(), grid.top(), grid.width(), grid.height(), 0);
  static const char* kLetters4[4] = {"A", "T", "C", "G"};
  for (int r = 0; r < 4; ++r)
    for (int c = 0; c < 4; ++c) {
      const char* name = kCellNames[4 * r + c];
      // CC stands 4 pixels left of its column.
      const int left = std::string(name) == "CC" ? 200 : 88 + 58 * c;
      auto* cell = label(p, name, r == c ? "1" : "0", left, 110 + 38 * r, 30, 22, 0);
      cell->setAlignment(Qt::AlignCenter);
      setPixelSize(cell, 10);
    }
  for (int r = 0; r < 4; ++r) {
    const std::string name = "StaticText" + std::to_string(6 + r);
    label(p, name.c_str(), kLetters4[r], 46, 110 + 38 * r, 22, 22, 0)->setAlignment(Qt::AlignCenter);
  }
  for (int c = 0; c < 4; ++c) {
    const std::string name = "StaticText" + std::to_string(10 + c);
    label(p, name.c_str(), kLetters4[c], 92 + 58 * c, 76, 22, 22, 0)->setAlignment(Qt::AlignCenter);
  }
  for (int r = 0; r < 4; ++r) {
    const std::string name = "Somme_" + std::to_string(r + 1);
    setPixelSize(label(p, name.c_str(), "1", 312, 110 + 38 * r, 33, 22, 0), 10);
  }
}

void Window1::buildResultsTab(QWidget* p) {
  Results = add(multiLineField(p), "Results", 26, 49, 346, 352, L | T | R | B);
  QFont courier(QStringLiteral("Courier"));
  courier.setStyleHint(QFont::TypeWriter);
  courier.setPixelSize(12);
  Results->setFont(courier);
  Results->setLineWrapMode(QPlainTextEdit::NoWrap);
}

void Window1::buildGraphicTab(QWidget* p) {
  Canvas1 = add(new PictureCanvas(p), "Canvas1", 24, 67, 352, 250, L | T | R | B);
  field(p, "EFFrom", "0", 67, 401, 73, 22, L | B, 7);
  label(p, "StaticText1_21", "From", 24, 402, 45, 20, L | B);
  label(p, "StaticText1_22", "to", 145, 402, 28, 20, L | B);
  field(p, "EFTo", "max", 172, 401, 73, 22, L | B);
  setPixelSize(label(p, "StaticText1_20", "Tip: You can resize this window", 24, 40, 315, 20, 0), 10);
  auto* mess = label(p, "ST_messGraph", "", 24, 365, 343, 20, L | R | B);
  setPixelSize(mess, 10);
  setTextColor(mess, QColor(255, 0, 0));
  PBDot = add(new QPushButton(QStringLiteral("Dot Plot"), p), "PBDot", 279, 400, 97, 22, R | B);
  PBDot->setEnabled(false);
}

void Window1::buildPrefTab(QWidget* p) {
  field(p, "EFHeight", "450", 235, 46, 69, 22, 0, 4, 4, true);
  label(p, "StaticText1_0", "Window width", 16, 47, 85, 20, 0);
  label(p, "StaticText1_1", "Height", 187, 47, 42, 20, 0);
  field(p, "EFwidth", "400", 106, 45, 69, 22, 0, 4, 4, true);
  check(p, "CBMovingShort", "Moving average using length of shortest sequence", 16, 309, 319, 20, L | B);
  label(p, "StaticText2", "Display alignements with more than\r", 16, 378, 218, 20, L | B);
  field(p, "EFIdentities", "20", 235, 376, 30, 22, L | B, 3, 0, true);
  label(p, "StaticText3", "identities", 270, 377, 65, 20, L | B);
  label(p, "StaticText4", "Number of resamplings for SD ", 16, 402, 179, 20, L | B);
  field(p, "EFSD", "100", 197, 401, 80, 22, L | B, 7, 0, true);
  check(p, "CBMaxIdent", "Show maximum identity based on random distribution", 16, 355, 356, 20, L | B)
      ->setChecked(true);
  add(new QGroupBox(QStringLiteral("Number presentation"), p), "GroupBox2", 16, 74, 364, 52, L | R);
  auto* usePoint = add(new QRadioButton(QStringLiteral("Uses decimal point"), p), "CBUsePoint", 21, 99, 137, 20, 0);
  auto* usePoint1 =
      add(new QRadioButton(QStringLiteral("Uses default format"), p), "CBUsePoint1", 169, 99, 151, 20, 0);
  add(new QGroupBox(QStringLiteral("Mean and SD"), p), "GroupBox3", 16, 134, 364, 79, L | R);
  auto* symetrie = check(p, "CBSymetrie", "Symmetric SD", 210, 183, 105, 20, L | B);
  symetrie->setEnabled(false);
  auto* hosd = add(new QRadioButton(QStringLiteral("Mean and SD based on random distribution"), p), "CBHOSD",
                   26, 163, 280, 20, L | B);
  auto* radio1 =
      add(new QRadioButton(QStringLiteral("Observed Mean and SD"), p), "RadioButton1", 26, 182, 172, 20, L | B);
  add(new QGroupBox(QStringLiteral("Unit"), p), "GroupBox4", 16, 222, 364, 84, L | R);
  auto* freq = add(new QRadioButton(QStringLiteral("Show frequencies"), p), "CBFreqIB", 30, 252, 128, 19, L | B);
  auto* freq1 = add(new QRadioButton(QStringLiteral("Show number"), p), "CBFreqIB1", 187, 252, 128, 19, L | B);
  check(p, "CBMaxMin", "Show observed max and min on curve", 16, 332, 316, 20, L | B)->setChecked(true);
  label(p, "StaticText1_3", "Scale Y Min", 30, 278, 76, 20, L | B);
  label(p, "StaticText16", "Max", 192, 278, 36, 20, L | B);
  field(p, "EF_MinX", "0", 107, 277, 50, 22, L | B, 0, 0, true);
  field(p, "EF_MaxX", "1", 227, 277, 50, 20, L | B, 0, 3, true);

  // The three pairs lie on one page but are independent of each other.
  QRadioButton* pairs[3][2] = {{usePoint, usePoint1}, {hosd, radio1}, {freq, freq1}};
  for (auto& pair : pairs) {
    auto* group = new QButtonGroup(p);
    group->addButton(pair[0]);
    group->addButton(pair[1]);
    pair[0]->setChecked(true);
  }
}

}  // namespace trelvane::shell
