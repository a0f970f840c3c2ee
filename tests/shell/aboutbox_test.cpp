// aboutbox_test.cpp -- AboutBox on the offscreen platform: its controls, its check, DL, and its opening by App.
#include <QImage>
#include <QPlainTextEdit>
#include <QPushButton>

#include "shell/aboutbox.h"
#include "shell/app.h"
#include "shell/widgets.h"
#include "shell_fixture.h"
#include "support/local_server.h"

namespace trelvane::shell {
namespace {

using testsupport::LocalServer;
using testsupport::runUntil;
using Texts = std::vector<std::string>;

// Made before any fixture, whose site must find the application's event loop.
class QtEnvironment : public ::testing::Environment {
 public:
  void SetUp() override { test::qtApp(); }
};
[[maybe_unused]] ::testing::Environment* const qtEnvironment = ::testing::AddGlobalTestEnvironment(new QtEnvironment);

class AboutBoxTest : public ::testing::Test {
 protected:
  // A window on the test site whose DL hands its URL to opened_.
  AboutBox* open(const std::string& base) {
    box_ = new AboutBox("1.0.0 Trelvane for Test", base, [this](const QUrl& url) {
      return opened_.push_back(url.toString().toStdString()), true;
    });
    box_->setAttribute(Qt::WA_DeleteOnClose);
    box_->show();
    return box_;
  }
  std::string text() const { return box_->reponseupdate->toPlainText().toStdString(); }
  void TearDown() override { delete box_.data(); }

  LocalServer site_;
  QPointer<AboutBox> box_;
  Texts opened_;
};

TEST_F(AboutBoxTest, FixedSizeWithDLHiddenAndTheLogoAsCanvas1sBackdrop) {
  AboutBox* box = open("http://127.0.0.1:" + std::to_string(testsupport::freePort()) + "/update/");
  EXPECT_EQ(box->windowTitle(), "Trelvon");
  EXPECT_EQ(box->size(), QSize(354, 158));
  EXPECT_EQ(box->minimumSize(), box->maximumSize());
  EXPECT_FALSE(box->windowFlags() & Qt::WindowMaximizeButtonHint);
  EXPECT_TRUE(box->DL->isHidden());
  EXPECT_EQ(box->PushButton1->nextInFocusChain(), box->reponseupdate);
  const QPixmap logo = Orvapetit();
  ASSERT_EQ(logo.size(), QSize(74, 47));
  EXPECT_EQ(Orvapetit().cacheKey(), logo.cacheKey());  // made once
  const QImage shown = box->Canvas1->grab().toImage().convertToFormat(QImage::Format_RGB32);
  EXPECT_EQ(shown, logo.toImage().convertToFormat(QImage::Format_RGB32));
  bool red = false;  // a drawing, not a blank: the profile's red is there
  for (int y = 0; y < shown.height(); ++y)
    for (int x = 0; x < shown.width(); ++x) red |= qRed(shown.pixel(x, y)) > 150 && qGreen(shown.pixel(x, y)) < 90;
  EXPECT_TRUE(red);
}

TEST_F(AboutBoxTest, CheckStartsAtOpeningAndANewVersionShowsDLWhichOpensTheArchive) {
  site_.on("/update/version.html", LocalServer::page("1.0.0\n"));
  open(site_.base());
  EXPECT_EQ(text(), "Your version is 1.0.0 Trelvane for Test\nInitialization...\n");
  ASSERT_TRUE(runUntil([&] { return box_->check().finished(); }));
  EXPECT_EQ(text(), "Your version is 1.0.0 Trelvane for Test\nUp-to-date version is 1.0.0\nYou're up-to-date !");
  EXPECT_TRUE(box_->DL->isHidden());
  delete box_.data();
  site_.on("/update/version.html", LocalServer::page("1.4.0\nA faster scan\nSVG export"));
  open(site_.base());
  ASSERT_TRUE(runUntil([&] { return box_->check().finished(); }));
  EXPECT_EQ(text(), "Your version is 1.0.0 Trelvane for Test\nUp-to-date version is 1.4.0\nYou need to upgrade !\n"
                    "A faster scan\nSVG export");
  ASSERT_TRUE(box_->DL->isVisible());
  QTest::mouseClick(box_->DL, Qt::LeftButton);
  EXPECT_EQ(opened_, Texts{site_.base() + "Trelvane_Mac.zip"});
  testsupport::runFor(50);
  EXPECT_EQ(site_.paths(), (Texts{"/update/version.html", "/update/version.html"}));  // the browser downloads, not we
}

TEST_F(AboutBoxTest, CloseDuringTheRequestEndsWindowAndConnection) {
  site_.on("/update/version.html", LocalServer::silent());
  open(site_.base());
  ASSERT_TRUE(runUntil([&] { return text().find("Connected...") != std::string::npos; }));
  EXPECT_EQ(site_.openConnections(), 1);
  QTest::mouseClick(box_->PushButton1, Qt::LeftButton);
  ASSERT_TRUE(runUntil([&] { return box_.isNull(); }));
  ASSERT_TRUE(runUntil([&] { return site_.openConnections() == 0; }));
}

TEST_F(AboutBoxTest, AppOpensItAsItsOwnWindowWithTheVersion) {
  site_.on("/update/version.html", LocalServer::page("0.9.0\n"));
  App app;
  installAboutBox(app, site_.base(), [this](const QUrl& url) { return opened_.push_back(url.toString().toStdString()), true; });
  app.Event_Open();
  for (QWidget* w : QApplication::topLevelWidgets())
    if (auto* b = dynamic_cast<AboutBox*>(w)) box_ = b;
  ASSERT_TRUE(box_);
  EXPECT_TRUE(box_->isVisible() && box_->parentWidget() == nullptr && box_->testAttribute(Qt::WA_DeleteOnClose));
  EXPECT_FALSE(box_->testAttribute(Qt::WA_QuitOnClose));  // the comparison windows decide when to quit
  ASSERT_TRUE(runUntil([&] { return box_->check().finished(); }));
  EXPECT_EQ(text(), "Your version is " + app.version + "\nUp-to-date version is 0.9.0\nYou need to upgrade !\n");
  box_->DL_Action();
  EXPECT_EQ(opened_, Texts{site_.base() + "Trelvane_Mac.zip"});
}

}  // namespace
}  // namespace trelvane::shell
