// page_model.cpp -- the Model tab: two aligned sequences, the model's choice, and the matrix grid it fills.
#include <QComboBox>
#include <QKeyEvent>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>

#include <string>

#include "model/entry.h"
#include "model/estimation.h"
#include "shell/controls.h"
#include "shell/widgets.h"
#include "shell/window1.h"

namespace trelvane::shell {

void Window1::buildModelTab(QWidget* p) {
  auto& st = *st_;
  multiLine(make_.label(p, "StaticText5",
                        "Enter two aligned sequences to estimate the parameters of the substution model.", 17,
                        268, 363, 43, 0));
  auto* head = make_.label(p, "StaticText14", "Parameters of the substitution model", 65, 44, 253, 29, 0);
  multiLine(head);
  centred(head);
  setTextColor(head, QColor(0, 0, 255));
  auto* st0 = make_.label(p, "ST_0", "Sequence 1 (from longest one)", 17, 308, 80, 41, 0);
  multiLine(st0);
  setPixelSize(st0, 10);
  auto* st1 = make_.label(p, "ST_1", "Sequence 2 (from shortest one)", 17, 353, 81, 41, 0);
  multiLine(st1);
  setPixelSize(st1, 10);

  // the aligned sequences: typed keys are filtered, a paste is not
  SeqModel1 = make_.add(multiLineField(p), "SeqModel1", 105, 309, 275, 40, 0);
  SeqModel2 = make_.add(multiLineField(p), "SeqModel2", 105, 354, 275, 40, 0);
  bind_.plain(SeqModel1, &Form::SeqModel1, [this] { SeqModel1_TextChange(form_); });
  bind_.plain(SeqModel2, &Form::SeqModel2, [this] { SeqModel2_TextChange(form_); });
  for (QPlainTextEdit* seq : {SeqModel1, SeqModel2}) {
    auto* hook = new EventHook(seq);
    hook->keyDown = [](QKeyEvent* key) {
      // Shortcuts (a paste among them) are no typing.
      if (key->modifiers() & (Qt::ControlModifier | Qt::MetaModifier)) return false;
      const QString text = key->text();
      if (text.size() != 1 || text[0].unicode() > 0xFF) return false;
      return SeqModel_KeyDown(static_cast<char>(text[0].unicode()));
    };
  }

  // the model and its Apply
  PupModel = make_.add(new QComboBox(p), "PupModel", 29, 406, 155, 20, 0);
  PupModel->addItems({QStringLiteral("Identity"), QStringLiteral("TS/TV"), QStringLiteral("General model")});
  PupModel->setCurrentIndex(0);
  PupModel->setEnabled(false);
  bind_.push([this] {
    if (PupModel->currentIndex() != form_.PupModelListIndex) {
      QSignalBlocker block(PupModel);
      PupModel->setCurrentIndex(form_.PupModelListIndex);
    }
  });
  bind_.enabled(PupModel, &Form::PupModelEnabled);
  connect(PupModel, &QComboBox::activated, this, [this](int index) {
    form_.PupModelListIndex = index;
    bind_.edited([this] { PupModel_Change(form_); });
  });
  auto* apply = make_.add(new QPushButton(QStringLiteral("Apply"), p), "Apply", 203, 406, 97, 22, 0);
  connect(apply, &QAbstractButton::clicked, this, [this, &st] { bind_.edited([this, &st] { Apply_Action(st, form_); }); });
  auto* mess = make_.label(p, "messModel", "", 32, 399, 169, 16, 0);
  multiLine(mess);
  setPixelSize(mess, 10);
  setTextColor(mess, QColor(255, 0, 0));
  bind_.label(mess, &Form::messModel);
  make_.label(p, "StaticText15", "Sum", 305, 71, 35, 33, 0);

  // the matrix grid: backgrounds, cell values, heads, sums
  const QRect grid = ModelGrid::bounds();
  make_.add(new ModelGrid(p), "ModelGrid", grid.left(), grid.top(), grid.width(), grid.height(), 0);
  static const char* kLetters4[4] = {"A", "T", "C", "G"};
  for (int r = 0; r < 4; ++r)
    for (int c = 0; c < 4; ++c) {
      const int i = 4 * r + c;
      const char* name = kCellNames[i];
      // CC stands 4 pixels left of its column.
      const int left = std::string(name) == "CC" ? 200 : 88 + 58 * c;
      auto* cell = make_.label(p, name, r == c ? "1" : "0", left, 110 + 38 * r, 30, 22, 0);
      cell->setAlignment(Qt::AlignCenter);
      setPixelSize(cell, 10);
      bind_.push([this, cell, i] {
        if (cell->text() != toQ(form_.cells[i])) cell->setText(toQ(form_.cells[i]));
      });
    }
  for (int r = 0; r < 4; ++r) {
    const std::string name = "StaticText" + std::to_string(6 + r);
    make_.label(p, name.c_str(), kLetters4[r], 46, 110 + 38 * r, 22, 22, 0)->setAlignment(Qt::AlignCenter);
  }
  for (int c = 0; c < 4; ++c) {
    const std::string name = "StaticText" + std::to_string(10 + c);
    make_.label(p, name.c_str(), kLetters4[c], 92 + 58 * c, 76, 22, 22, 0)->setAlignment(Qt::AlignCenter);
  }
  for (int r = 0; r < 4; ++r) {
    const std::string name = "Somme_" + std::to_string(r + 1);
    QLabel* sum = make_.label(p, name.c_str(), "1", 312, 110 + 38 * r, 33, 22, 0);
    setPixelSize(sum, 10);
    bind_.push([this, sum, r] {
      if (sum->text() != toQ(form_.Somme[r])) sum->setText(toQ(form_.Somme[r]));
    });
  }
}

}  // namespace trelvane::shell
