// aboutbox_test.cpp -- AboutBox on the offscreen platform: its controls, its check, DL, and its opening by App.
#include <gtest/gtest.h>

#include <QApplication>
#include <QImage>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QUrl>
#include <QtTest/QTest>

#include <string>
#include <vector>

#include "shell/aboutbox.h"
#include "shell/app.h"
#include "shell/widgets.h"
#include "shell_fixture.h"
#include "update/update_site.h"

namespace trelvane::shell {
namespace {

using update::test::runFor;
using update::test::runUntil;
using update::test::UpdateSite;

// Made before any fixture, whose site must find the application's event loop.
class QtEnvironment : public ::testing::Environment {
 public:
  void SetUp() override { test::qtApp(); }
};

[[maybe_unused]] ::testing::Environment* const qtEnvironment =
    ::testing::AddGlobalTestEnvironment(new QtEnvironment);

const char kVersion[] = "1.0.0 Trelvane for Test";

std::string text(const AboutBox& box) { return box.reponseupdate->toPlainText().toStdString(); }

class AboutBoxTest : public ::testing::Test {
 protected:
  // A window on the test site whose DL hands its URL to opened_.
  AboutBox* open(const std::string& base) {
    box_ = new AboutBox(kVersion, base, [this](const QUrl& url) {
      opened_.push_back(url.toString().toStdString());
      return true;
    });
    box_->setAttribute(Qt::WA_DeleteOnClose);
    box_->show();
    return box_;
  }
  void TearDown() override { delete box_.data(); }

  UpdateSite site_;
  QPointer<AboutBox> box_;
  std::vector<std::string> opened_;
};

TEST_F(AboutBoxTest, WindowIsFixedInSizeWithDLHidden) {
  AboutBox* box = open("http://127.0.0.1:" + std::to_string(update::test::closedPort()) + "/update/");
  EXPECT_EQ(box->windowTitle(), "Trelvon");
  EXPECT_EQ(box->size(), QSize(354, 158));
  EXPECT_EQ(box->minimumSize(), box->maximumSize());  // not resizable
  EXPECT_FALSE(box->windowFlags() & Qt::WindowMaximizeButtonHint);
  EXPECT_TRUE(box->DL->isHidden());
  EXPECT_EQ(box->PushButton1->nextInFocusChain(), box->reponseupdate);
}

TEST_F(AboutBoxTest, LogoIsMadeOnceAndIsCanvas1sBackdrop) {
  const QPixmap logo = Orvapetit();
  ASSERT_FALSE(logo.isNull());
  EXPECT_EQ(logo.size(), QSize(74, 47));
  EXPECT_EQ(Orvapetit().cacheKey(), logo.cacheKey());

  AboutBox* box = open("http://127.0.0.1:" + std::to_string(update::test::closedPort()) + "/update/");
  const QImage shown = box->Canvas1->grab().toImage().convertToFormat(QImage::Format_RGB32);
  EXPECT_EQ(shown, logo.toImage().convertToFormat(QImage::Format_RGB32));
  // a drawing, not a blank: at least the profile's red is there
  bool red = false;
  for (int y = 0; y < shown.height(); ++y)
    for (int x = 0; x < shown.width(); ++x) red |= qRed(shown.pixel(x, y)) > 150 && qGreen(shown.pixel(x, y)) < 90;
  EXPECT_TRUE(red);
}

TEST_F(AboutBoxTest, CheckStartsAtOpeningWithoutWaiting) {
  site_.on("/update/version.html", UpdateSite::page("1.0.0\n"));
  AboutBox* box = open(site_.base());
  EXPECT_EQ(text(*box), "Your version is 1.0.0 Trelvane for Test\nInitialization...\n");
  ASSERT_TRUE(runUntil([&] { return box->check().finished(); }));
  EXPECT_EQ(text(*box), "Your version is 1.0.0 Trelvane for Test\nUp-to-date version is 1.0.0\nYou're up-to-date !");
  EXPECT_TRUE(box->DL->isHidden());
}

TEST_F(AboutBoxTest, NewVersionShowsDLWhichOpensTheArchiveInTheBrowser) {
  site_.on("/update/version.html", UpdateSite::page("1.4.0\nA faster scan\nSVG export"));
  AboutBox* box = open(site_.base());
  ASSERT_TRUE(runUntil([&] { return box->check().finished(); }));
  EXPECT_EQ(text(*box),
            "Your version is 1.0.0 Trelvane for Test\nUp-to-date version is 1.4.0\nYou need to upgrade !\n"
            "A faster scan\nSVG export");
  ASSERT_TRUE(box->DL->isVisible());
  QTest::mouseClick(box->DL, Qt::LeftButton);
  EXPECT_EQ(opened_, std::vector<std::string>{site_.base() + "Trelvane_Mac.zip"});
  runFor(50);
  EXPECT_EQ(site_.paths(), std::vector<std::string>{"/update/version.html"});  // the browser downloads, not we
}

TEST_F(AboutBoxTest, CloseDuringTheRequestEndsWindowAndConnection) {
  site_.on("/update/version.html", UpdateSite::silent());
  AboutBox* box = open(site_.base());
  ASSERT_TRUE(runUntil([&] { return text(*box).find("Connected...") != std::string::npos; }));
  EXPECT_EQ(site_.openConnections(), 1);
  QTest::mouseClick(box->PushButton1, Qt::LeftButton);
  ASSERT_TRUE(runUntil([&] { return box_.isNull(); }));
  ASSERT_TRUE(runUntil([&] { return site_.openConnections() == 0; }));
}

TEST_F(AboutBoxTest, AppOpensItAsItsOwnWindowWithTheVersion) {
  site_.on("/update/version.html", UpdateSite::page("0.9.0\n"));
  App app;
  std::vector<std::string> opened;
  installAboutBox(app, site_.base(), [&](const QUrl& url) {
    opened.push_back(url.toString().toStdString());
    return true;
  });
  app.Event_Open();
  AboutBox* box = nullptr;
  for (QWidget* w : QApplication::topLevelWidgets())
    if (auto* b = dynamic_cast<AboutBox*>(w); b && b != box_) box = b;
  ASSERT_NE(box, nullptr);
  box_ = box;  // deleted by TearDown
  EXPECT_TRUE(box->isVisible());
  EXPECT_EQ(box->parentWidget(), nullptr);
  EXPECT_TRUE(box->testAttribute(Qt::WA_DeleteOnClose));
  EXPECT_FALSE(box->testAttribute(Qt::WA_QuitOnClose));  // the comparison windows decide when to quit
  ASSERT_TRUE(runUntil([&] { return box->check().finished(); }));
  EXPECT_EQ(text(*box), "Your version is " + app.version + "\nUp-to-date version is 0.9.0\nYou need to upgrade !\n");
  box->DL_Action();
  EXPECT_EQ(opened, std::vector<std::string>{site_.base() + "Trelvane_Mac.zip"});
}

}  // namespace
}  // namespace trelvane::shell
