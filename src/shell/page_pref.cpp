// page_pref.cpp -- the Pref tab: the window's size, the drawing's settings, the listing threshold, the resamplings.
#include <QButtonGroup>
#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>

#include "plots/graph_controls.h"
#include "shell/controls.h"
#include "shell/window1.h"

namespace trelvane::shell {

void Window1::buildPrefTab(QWidget* p) {
  // the window's size
  QLineEdit* height = make_.field(p, "EFHeight", "450", 235, 46, 69, 22, 0, 4, 4, true);
  bind_.text(height, &Form::EFHeight);
  bind_.leave(height, [this] { sizeHandler(EFHeight_LostFocus); }, content_);
  make_.label(p, "StaticText1_0", "Window width", 16, 47, 85, 20, 0);
  make_.label(p, "StaticText1_1", "Height", 187, 47, 42, 20, 0);
  QLineEdit* width = make_.field(p, "EFwidth", "400", 106, 45, 69, 22, 0, 4, 4, true);
  bind_.text(width, &Form::EFwidth);
  bind_.leave(width, [this] { sizeHandler(EFwidth_LostFocus); }, content_);

  // what a run reads, and the drawing's settings
  bind_.check(make_.check(p, "CBMovingShort", "Moving average using length of shortest sequence", 16, 309, 319, 20,
                          L | B),
              &Form::CBMovingShort, [this] { graphHandler(CBMovingShort_Action); });
  make_.label(p, "StaticText2", "Display alignements with more than\r", 16, 378, 218, 20, L | B);
  bind_.text(make_.field(p, "EFIdentities", "20", 235, 376, 30, 22, L | B, 3, 0, true), &Form::EFIdentities);
  make_.label(p, "StaticText3", "identities", 270, 377, 65, 20, L | B);
  make_.label(p, "StaticText4", "Number of resamplings for SD ", 16, 402, 179, 20, L | B);
  bind_.text(make_.field(p, "EFSD", "100", 197, 401, 80, 22, L | B, 7, 0, true), &Form::EFSD);
  QCheckBox* maxIdent =
      make_.check(p, "CBMaxIdent", "Show maximum identity based on random distribution", 16, 355, 356, 20, L | B);
  maxIdent->setChecked(true);
  bind_.check(maxIdent, &Form::CBMaxIdent, [this] { graphHandler(CBMaxIdent_Action); });
  make_.add(new QGroupBox(QStringLiteral("Number presentation"), p), "GroupBox2", 16, 74, 364, 52, L | R);
  auto* usePoint = make_.add(new QRadioButton(QStringLiteral("Uses decimal point"), p), "CBUsePoint", 21, 99, 137, 20, 0);
  auto* usePoint1 =
      make_.add(new QRadioButton(QStringLiteral("Uses default format"), p), "CBUsePoint1", 169, 99, 151, 20, 0);
  make_.add(new QGroupBox(QStringLiteral("Mean and SD"), p), "GroupBox3", 16, 134, 364, 79, L | R);
  QCheckBox* symetrie = make_.check(p, "CBSymetrie", "Symmetric SD", 210, 183, 105, 20, L | B);
  symetrie->setEnabled(false);
  auto* hosd = make_.add(new QRadioButton(QStringLiteral("Mean and SD based on random distribution"), p), "CBHOSD",
                         26, 163, 280, 20, L | B);
  auto* radio1 =
      make_.add(new QRadioButton(QStringLiteral("Observed Mean and SD"), p), "RadioButton1", 26, 182, 172, 20, L | B);
  make_.add(new QGroupBox(QStringLiteral("Unit"), p), "GroupBox4", 16, 222, 364, 84, L | R);
  auto* freq = make_.add(new QRadioButton(QStringLiteral("Show frequencies"), p), "CBFreqIB", 30, 252, 128, 19, L | B);
  auto* freq1 = make_.add(new QRadioButton(QStringLiteral("Show number"), p), "CBFreqIB1", 187, 252, 128, 19, L | B);
  QCheckBox* maxMin = make_.check(p, "CBMaxMin", "Show observed max and min on curve", 16, 332, 316, 20, L | B);
  maxMin->setChecked(true);
  make_.label(p, "StaticText1_3", "Scale Y Min", 30, 278, 76, 20, L | B);
  make_.label(p, "StaticText16", "Max", 192, 278, 36, 20, L | B);
  QLineEdit* minX = make_.field(p, "EF_MinX", "0", 107, 277, 50, 22, L | B, 0, 0, true);
  QLineEdit* maxX = make_.field(p, "EF_MaxX", "1", 227, 277, 50, 20, L | B, 0, 3, true);

  // The three pairs lie on one page but are independent of each other.
  QRadioButton* pairs[3][2] = {{usePoint, usePoint1}, {hosd, radio1}, {freq, freq1}};
  for (auto& pair : pairs) {
    auto* group = new QButtonGroup(p);
    group->addButton(pair[0]);
    group->addButton(pair[1]);
    pair[0]->setChecked(true);
  }
  bind_.radio(usePoint, &Form::CBUsePoint, [this] { graphHandler(CBUsePoint_Action); });
  bind_.radio(usePoint1, &Form::CBUsePoint1, [this] { graphHandler(CBUsePoint1_Action); });
  bind_.check(symetrie, &Form::CBSymetrie, [this] { graphHandler(CBSymetrie_Action); });
  bind_.enabled(symetrie, &Form::CBSymetrieEnabled);
  bind_.radio(hosd, &Form::CBHOSD, [this] { graphHandler(CBHOSD_Action); });
  bind_.radio(radio1, &Form::RadioButton1, [this] { graphHandler(RadioButton1_Action); });
  bind_.radio(freq, &Form::CBFreqIB, [this] { graphHandler(CBFreqIB_Action); });
  bind_.radio(freq1, &Form::CBFreqIB1, [this] { graphHandler(CBFreqIB1_Action); });
  bind_.check(maxMin, &Form::CBMaxMin, [this] { graphHandler(CBMaxMin_Action); });
  bind_.text(minX, &Form::EF_MinX);
  bind_.leave(minX, [this] { graphHandler(EF_MinX_LostFocus); }, content_);
  bind_.text(maxX, &Form::EF_MaxX);
  bind_.leave(maxX, [this] { graphHandler(EF_MaxX_LostFocus); }, content_);
}

void Window1::sizeHandler(void (*handler)(ComparisonState&, Form&)) {
  handler(*st_, form_);
  setContentSize(form_.Width, form_.Height);
}

}  // namespace trelvane::shell
