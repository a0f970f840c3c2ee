// page_results.cpp -- the Results tab: the report of the last run, in a fixed-width font.
#include <QPlainTextEdit>

#include "shell/controls.h"
#include "shell/window1.h"

namespace trelvane::shell {

void Window1::buildResultsTab(QWidget* p) {
  Results = make_.add(multiLineField(p), "Results", 26, 49, 346, 352, L | T | R | B);
  QFont courier(QStringLiteral("Courier"));
  courier.setStyleHint(QFont::TypeWriter);
  courier.setPixelSize(12);
  Results->setFont(courier);
  Results->setLineWrapMode(QPlainTextEdit::NoWrap);
  bind_.plain(Results, &Form::Results);
}

}  // namespace trelvane::shell
