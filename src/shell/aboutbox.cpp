// aboutbox.cpp -- AboutBox: its controls, the logo, the update check's texts, and its hook into App.
#include "shell/aboutbox.h"

#include <QApplication>
#include <QDesktopServices>
#include <QFontDatabase>
#include <QLabel>
#include <QLinearGradient>
#include <QPainter>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QUrl>

#include <iterator>

#include "shell/app.h"
#include "shell/widgets.h"

namespace trelvane::shell {
namespace {

QPixmap* permapic = nullptr;

// An identity profile in miniature: a peak of identity over the dashed
// level expected at random, on a pale panel.
QPixmap drawLogo() {
  QPixmap pm(74, 47);
  pm.fill(Qt::white);
  QPainter p(&pm);
  p.setRenderHint(QPainter::Antialiasing);

  QLinearGradient panel(0, 0, 0, 47);
  panel.setColorAt(0, QColor(234, 241, 255));
  panel.setColorAt(1, QColor(196, 214, 250));
  p.setPen(QPen(QColor(40, 70, 160), 1));
  p.setBrush(panel);
  p.drawRoundedRect(QRectF(0.5, 0.5, 73, 46), 6, 6);

  // axis and random level
  p.drawLine(QPointF(6, 40.5), QPointF(68, 40.5));
  p.setPen(QPen(QColor(110, 110, 110), 1, Qt::DashLine));
  p.drawLine(QPointF(6, 31.5), QPointF(68, 31.5));

  // the profile
  static const QPointF profile[] = {{6, 36},  {11, 34}, {16, 37}, {21, 33}, {26, 24}, {31, 11},
                                    {36, 7},  {41, 10}, {46, 22}, {51, 34}, {56, 36}, {62, 33},
                                    {68, 35}};
  p.setPen(QPen(QColor(200, 30, 30), 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  p.setBrush(Qt::NoBrush);
  p.drawPolyline(profile, static_cast<int>(std::size(profile)));
  return pm;
}

void setTextColour(QWidget* w, const QColor& text, const QColor* base = nullptr) {
  QPalette pal = w->palette();
  pal.setColor(QPalette::WindowText, text);
  pal.setColor(QPalette::Text, text);
  if (base) pal.setColor(QPalette::Base, *base);
  w->setPalette(pal);
}

template <class W>
W* place(W* w, const char* name, int left, int top, int width, int height) {
  w->setObjectName(QString::fromLatin1(name));
  w->setGeometry(left, top, width, height);
  return w;
}

}  // namespace

QPixmap Orvapetit() {
  if (permapic == nullptr) {
    permapic = new QPixmap(drawLogo());
    // released with the application, while the pixmap can still go
    qAddPostRoutine([] {
      delete permapic;
      permapic = nullptr;
    });
  }
  return *permapic;
}

AboutBox::AboutBox(const std::string& version, const std::string& baseURL, URLOpener opener, QWidget* parent)
    : QWidget(parent, Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint |
                          Qt::WindowMinimizeButtonHint),
      check_(std::make_unique<update::UpdateCheck>(version, baseURL)),
      opener_(std::move(opener)) {
  setObjectName(QStringLiteral("AboutBox"));
  setWindowTitle(QStringLiteral("Trelvon"));
  setFixedSize(354, 158);  // not resizable
  build();
  check_->changed = [this](const update::UpdateCheck& c) { showCheck(c); };
  Event_Open();
}

// The client goes with the window, its request running or not.
AboutBox::~AboutBox() = default;

void AboutBox::build() {
  QFont base = font();
  if (QFontDatabase::families().contains(QStringLiteral("Liberation Sans")))
    base.setFamily(QStringLiteral("Liberation Sans"));
  base.setPixelSize(12);  // the system font at 12 points of 72 dpi
  setFont(base);

  StaticText1 = place(new QLabel(QStringLiteral("Trelvane\nSequence identity profiles\nThe Trelvane developers"), this),
                      "StaticText1", 5, 7, 270, 47);
  StaticText1->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
  StaticText1->setWordWrap(true);
  setTextColour(StaticText1, QColor(0x00, 0x00, 0xff));

  PushButton1 = place(new QPushButton(QStringLiteral("Close"), this), "PushButton1", 265, 130, 69, 20);
  QObject::connect(PushButton1, &QPushButton::clicked, this, [this] { PushButton1_Action(); });

  reponseupdate = place(new QPlainTextEdit(this), "reponseupdate", 20, 60, 314, 58);
  reponseupdate->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
  reponseupdate->setTabChangesFocus(true);
  const QColor white(Qt::white);
  setTextColour(reponseupdate, QColor(Qt::black), &white);

  DL = place(new QPushButton(QStringLiteral("Download"), this), "DL", 20, 130, 93, 20);
  DL->setVisible(false);
  QObject::connect(DL, &QPushButton::clicked, this, [this] { DL_Action(); });

  Canvas1 = place(new PictureCanvas(this), "Canvas1", 280, 1, 74, 47);
  Canvas1->draw = [](QPainter& p) { p.drawPixmap(0, 0, Orvapetit()); };

  setTabOrder(PushButton1, reponseupdate);
  setTabOrder(reponseupdate, DL);
}

void AboutBox::Event_Open() { check_->start(); }

void AboutBox::showCheck(const update::UpdateCheck& c) {
  reponseupdate->setPlainText(toQ(c.text()));
  if (c.DLVisible()) DL->setVisible(true);
}

void AboutBox::DL_Action() {
  // The browser fetches the archive; nothing is downloaded here.
  const QUrl url(toQ(check_->downloadURL()));
  if (opener_) opener_(url);
  else QDesktopServices::openUrl(url);
}

void AboutBox::PushButton1_Action() { close(); }

void installAboutBox(App& app) { installAboutBox(app, update::kUpdateSiteBaseURL, {}); }

void installAboutBox(App& app, const std::string& baseURL, AboutBox::URLOpener opener) {
  app.openAboutBox = [baseURL, opener](App& a) {
    auto* box = new AboutBox(a.version, baseURL, opener);
    box->setAttribute(Qt::WA_DeleteOnClose);
    // Like a floating palette, it does not keep the application running once
    // the comparison windows are closed, and it goes when the application ends.
    box->setAttribute(Qt::WA_QuitOnClose, false);
    QObject::connect(qApp, &QCoreApplication::aboutToQuit, box, [box] { delete box; });
    // over the window in front, as the platform places a window on its parent
    if (QWidget* front = QApplication::activeWindow())
      box->move(front->frameGeometry().center() - box->rect().center());
    box->show();
  };
}

}  // namespace trelvane::shell
