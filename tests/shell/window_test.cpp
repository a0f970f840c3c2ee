// window_test.cpp -- Window1 driven by scripts of user actions, with every named control each action changed;
// its fixed layout, menus and the application object.
#include <QAction>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QTabWidget>

#include <numeric>
#include <set>

#include "shell/app.h"
#include "shell/dotwindow.h"
#include "shell_fixture.h"
#include "support/desk.h"

namespace trelvane::shell::test {
namespace {

using trelvane::testing::Desk;
using trelvane::testing::show;
using trelvane::testing::Step;

// One control in sight as a line: place, state and text.
std::string describe(QWidget* w, QWidget* content) {
  const QRect r(w->mapTo(content, QPoint(0, 0)), w->size());
  std::string s = std::to_string(r.x()) + "," + std::to_string(r.y()) + " " + std::to_string(r.width()) + "x" +
                  std::to_string(r.height()) + (w->isEnabled() ? "" : " disabled") +
                  (w->acceptDrops() ? " drops" : "");
  const auto text = [](const QString& t) { return " [" + t.left(200).toStdString() + (t.size() > 200 ? "...]" : "]"); };
  if (auto* e = qobject_cast<QLineEdit*>(w)) s += text(e->text()) + (e->hasSelectedText() ? " selected" + text(e->selectedText()) : "");
  if (auto* b = qobject_cast<QAbstractButton*>(w)) s += text(b->text()) + (b->isCheckable() ? b->isChecked() ? " on" : " off" : "");
  if (auto* l = qobject_cast<QLabel*>(w)) s += text(l->text());
  if (auto* p = qobject_cast<QPlainTextEdit*>(w)) s += text(p->toPlainText());
  if (auto* c = qobject_cast<QComboBox*>(w))
    s += " #" + std::to_string(c->currentIndex()) + (c->isEditable() ? text(c->currentText()) : "");
  if (auto* g = qobject_cast<QGroupBox*>(w)) s += text(g->title());
  if (auto* p = qobject_cast<QProgressBar*>(w)) s += " " + std::to_string(p->value()) + "/" + std::to_string(p->maximum());
  if (auto* t = qobject_cast<QTabWidget*>(w)) s += " tab " + std::to_string(t->currentIndex());
  return s;
}

DotWindow* dotWindow() {
  for (QWidget* top : QApplication::topLevelWidgets())
    if (top->objectName() == "DotWindow" && top->isVisible()) return static_cast<DotWindow*>(top);
  return nullptr;
}

class WindowScript : public ShellTest, public ::testing::WithParamInterface<cases::Case> {};

TEST_P(WindowScript, GivesItsTranscript) {
  Desk d;
  std::string messages;  // the stage texts of runs, as they were shown
  w().messageShown = [&messages](const std::string& text) { messages += text + "|"; };
  w().runSeed = [] { return uint64_t{1}; };
  // a step that may start a run returns once it has ended
  const auto ended = [&] { ASSERT_TRUE(waitFor([&] { return !w().state().running && w().PBRUN->text() == "Run"; })); };
  d.more = [&](std::vector<std::pair<std::string, std::string>>& f) {
    f.emplace_back("messages", messages);
    std::set<std::string> files;
    for (const auto& e : std::filesystem::directory_iterator(d.dir)) files.insert(e.path().filename().string());
    f.emplace_back("files", std::accumulate(files.begin(), files.end(), std::string(), [](auto a, auto b) { return a + b + " "; }));
    for (QWidget* c : w().content()->findChildren<QWidget*>())  // the controls in sight
      if (c->isVisible() && !c->objectName().isEmpty() && !c->objectName().startsWith("qt_"))
        f.emplace_back("w." + c->objectName().toStdString(), describe(c, w().content()));
    const QMimeData* mime = QGuiApplication::clipboard()->mimeData();
    f.emplace_back("clipboard", !mime ? "" : mime->hasImage() ? "image " + std::to_string(qvariant_cast<QImage>(mime->imageData()).width()) + "x" +
                                                       std::to_string(qvariant_cast<QImage>(mime->imageData()).height()) +
                                                       (mime->data("image/png").startsWith("\x89PNG") ? " png" : "") +
                                                       (mime->data("image/svg+xml").contains("<svg") ? " svg" : "")
                                                 : mime->text().toStdString());
    f.emplace_back("window", w().windowTitle().toStdString() + " " + std::to_string(w().content()->width()) + "x" +
                                 std::to_string(w().content()->height()));
    f.emplace_back("focus", QApplication::focusWidget() ? QApplication::focusWidget()->objectName().toStdString() : "");
    const ComparisonState& st = w().state();
    f.emplace_back("state", "nbbases " + std::to_string(st.nbbases) + " nbbases1 " + std::to_string(st.nbbases1) +
                                " windgraph " + std::to_string(st.windgraph) + " changegraph " + std::to_string(st.changegraph) +
                                " f0 " + st.f[0].value_or("-") + " f1 " + st.f[1].value_or("-") +
                                (st.pct ? " pct " + std::to_string(st.pct->width) + "x" + std::to_string(st.pct->height) : ""));
#define TRELVANE_FIELD_OF(x) f.emplace_back("form." #x, trelvane::testing::fieldText(w().form().x));
    TRELVANE_FORM_FIELDS(TRELVANE_FIELD_OF)
#undef TRELVANE_FIELD_OF
  };
  const auto url = [&](const std::string& name) {
    return name.rfind("https:", 0) == 0 ? QUrl(QString::fromStdString(name)) : QUrl::fromLocalFile(QString::fromStdString(d.path(name)));
  };
  const auto widget = [&](const std::string& name) { return find(name.c_str()); };
  std::map<std::string, Step> steps = {
      {"choose", [&](Desk&, const std::string& v, std::ostream&) {
         choose(std::stoi(v), v.substr(2) == "-" ? std::nullopt : std::optional(d.path(v.substr(2))));
       }},
      {"drop", [&](Desk&, const std::string& v, std::ostream& out) {  // BOX NAME [NAME]
         QList<QUrl> urls;
         std::istringstream names(v.substr(v.find(' ') + 1));
         for (std::string n; names >> n;) urls << url(n);
         show(out, dropOn(v.rfind("GBLong", 0) == 0 ? w().GBLong : w().GBShort, urls) ? "taken" : "refused");
       }},
      {"click", [&](Desk&, const std::string& v, std::ostream&) { static_cast<QAbstractButton*>(widget(v))->click(), ended(); }},
      {"save", [&](Desk&, const std::string& v, std::ostream& out) {  // the Save dialog's answer ("-" a cancel)
         w().saveDialog = [&, v, &out = out] { return show(out, "Save dialog"), v == "-" ? std::nullopt : std::optional(d.path(v)); };
       }},
      {"type", [&](Desk&, const std::string& v, std::ostream&) { typeInto(v.substr(0, v.find(' ')).c_str(), QString::fromStdString(v.substr(v.find(' ') + 1))); }},
      {"keys", [&](Desk&, const std::string& v, std::ostream&) {  // typed where the focus is
         QTest::keyClicks(QApplication::focusWidget(), QString::fromStdString(v));
       }},
      {"key", [&](Desk&, const std::string& v, std::ostream&) {
         const std::map<std::string, std::pair<Qt::Key, Qt::KeyboardModifiers>> keys = {
             {"Return", {Qt::Key_Return, Qt::NoModifier}}, {"Enter", {Qt::Key_Enter, Qt::NoModifier}}, {"Paste", {Qt::Key_V, Qt::ControlModifier}}};
         QTest::keyClick(QApplication::focusWidget(), keys.at(v).first, keys.at(v).second);
         ended();
       }},
      {"focus", [&](Desk&, const std::string& v, std::ostream&) { widget(v)->setFocus(); }},
      {"leave", [&](Desk&, const std::string& v, std::ostream&) { leave(v.c_str()); }},
      {"tab", [&](Desk&, const std::string& v, std::ostream&) { w().TabPanel1->setCurrentIndex(std::stoi(v)); }},
      {"size", [&](Desk&, const std::string& v, std::ostream&) {
         w().setContentSize(std::stoi(v), std::stoi(v.substr(v.find(' '))));
         QCoreApplication::processEvents();
       }},
      {"resizeEnded", [&](Desk&, const std::string&, std::ostream&) { w().resizeEnded(); }},
      {"form", [&](Desk&, const std::string& v, std::ostream&) {
         const std::string name = v.substr(0, v.find('=')), value = v.substr(v.find('=') + 1);
#define TRELVANE_SET(x) if (name == #x) trelvane::testing::assign(w().form().x, value);
         TRELVANE_FORM_FIELDS(TRELVANE_SET)
#undef TRELVANE_SET
         w().refresh();
       }},
      {"choice", [&](Desk&, const std::string& v, std::ostream&) {  // a choice in PupModel, or in the combo box named before N
         const std::size_t space = v.find(' ');
         auto* box = space == std::string::npos ? w().PupModel : static_cast<QComboBox*>(widget(v.substr(0, space)));
         const int n = std::stoi(space == std::string::npos ? v : v.substr(space + 1));
         box->setCurrentIndex(n);
         emit box->activated(n);
       }},
      {"clipboard", [&](Desk&, const std::string& v, std::ostream&) { QGuiApplication::clipboard()->setText(QString::fromStdString(v)); }},
      {"menu", [&](Desk&, const std::string& v, std::ostream&) { w().menuBar()->findChild<QAction*>(QString::fromStdString(v))->trigger(); }},
      {"nopicture", [&](Desk&, const std::string&, std::ostream&) { w().state().pct = nullptr; }},
      // the tabs, the menus with their shortcuts, the order of the focus from PBRUN, the parent of PBRUN
      {"layout", [&](Desk&, const std::string&, std::ostream& out) {
         std::string text;
         for (int i = 0; i < w().TabPanel1->count(); ++i) text += w().TabPanel1->tabText(i).toStdString() + " ";
         for (QAction* menu : w().menuBar()->actions()) {
           text += "| " + menu->text().toStdString() + ":";
           for (QAction* a : menu->menu()->actions())
             text += " " + a->objectName().toStdString() + " " + a->text().toStdString() + " " + a->shortcut().toString().toStdString() + ";";
         }
         text += " | " + w().PBRUN->parentWidget()->objectName().toStdString() + " |";
         for (QWidget* next = w().PBRUN; (next = next->nextInFocusChain()) != w().PBRUN;)
           if (!next->objectName().isEmpty() && !next->objectName().startsWith("qt_")) text += " " + next->objectName().toStdString();
         show(out, text);
       }},
      {"dotplot", [&](Desk&, const std::string& v, std::ostream& out) {  // PBDot, or the dot window's Redraw
         if (v == "redraw") dotWindow()->findChild<QPushButton*>("PushButton1")->click();
         else w().PBDot->click();
         DotWindow* dot = dotWindow();
         const QRect c = dot->canvas()->geometry(), seen = dot->canvas()->visibleRegion().boundingRect();
         const QSize screen = QGuiApplication::primaryScreen()->availableGeometry().size();
         show(out, dot->windowTitle().toStdString() + " " + std::to_string(dot->width()) + "x" +
                                         std::to_string(dot->height()) + (dot->width() <= screen.width() ? " on the screen" : "") +
                                         ", canvas at " + std::to_string(c.x()) + "," + std::to_string(c.y()) + " " +
                                         std::to_string(c.width()) + "x" + std::to_string(c.height()) + " seen " +
                                         std::to_string(seen.width()) + " wide, dots " + std::to_string(dot->picture()->dots.count()));
       }},
  };
  cases::expectTranscript(GetParam(), trelvane::testing::runDesk(GetParam(), steps, &d), false);
  if (DotWindow* dot = dotWindow()) dot->close();
}

INSTANTIATE_TEST_SUITE_P(, WindowScript, ::testing::ValuesIn(cases::readCases(TRELVANE_TEST_DATA "/shell/window.cases")),
                         cases::caseName);

class Layout : public ShellTest {};

TEST_F(Layout, EachNewWindowHasItsOwnComparison) {
  QPointer<Window1> other = App::FileNew_Action();
  ASSERT_TRUE(other);
  choose(0, temp("long.fa", kLong));
  EXPECT_EQ(w().state().nbbases, 60);
  EXPECT_EQ(other->state().nbbases, 0);
  EXPECT_FALSE(other->state().f[0].has_value());
  other->menuBar()->findChild<QAction*>(QStringLiteral("FileClose"))->trigger();
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_FALSE(other);
  EXPECT_TRUE(window_);
}

TEST(Application, VersionIsMajorMinorBugThenThePackageInformation) {
  EXPECT_EQ(versionText(1, 0, 12, "Trelvane for Linux"), "1.0.12 Trelvane for Linux");
  App app;
  EXPECT_EQ(App::instance(), &app);
  std::string version;
  app.openAboutBox = [&](App& a) { version += a.version + "|"; };
  app.Event_Open();
  EXPECT_EQ(version.rfind(TRELVANE_PROJECT_VERSION " ", 0), 0u) << version;
  EXPECT_EQ(std::count(version.begin(), version.end(), '|'), 1);
}

}  // namespace
}  // namespace trelvane::shell::test
