// aboutbox.h -- AboutBox: the authors, the logo, and the update check that starts when it opens.
#pragma once

#include <QPixmap>
#include <QWidget>

#include <functional>
#include <memory>
#include <string>

#include "update/update_check.h"

class QLabel;
class QPlainTextEdit;
class QPushButton;
class QUrl;

namespace trelvane::shell {

class App;
class PictureCanvas;

// The small logo of the about window, 74 by 47 pixels: drawn at the first
// request and kept until the application ends.
QPixmap Orvapetit();

// The about window. It opens on its own at start-up, asks the update site
// for the newest version and tells the outcome in reponseupdate; a failure
// is a line there and nothing else.
class AboutBox : public QWidget {
 public:
  // Shows a URL in the system's web browser; false where it could not.
  using URLOpener = std::function<bool(const QUrl&)>;

  // version is App.version. The check starts at once (Event_Open); it never
  // blocks, its answers come through the event loop. Without an opener, DL
  // uses the desktop's.
  explicit AboutBox(const std::string& version, const std::string& baseURL = update::kUpdateSiteBaseURL,
                    URLOpener opener = {}, QWidget* parent = nullptr);
  ~AboutBox() override;

  QLabel* StaticText1 = nullptr;
  QPushButton* PushButton1 = nullptr;
  QPlainTextEdit* reponseupdate = nullptr;
  QPushButton* DL = nullptr;
  PictureCanvas* Canvas1 = nullptr;

  update::UpdateCheck& check() { return *check_; }

  void Event_Open();
  void DL_Action();
  void PushButton1_Action();

 private:
  void build();
  void showCheck(const update::UpdateCheck& check);

  std::unique_ptr<update::UpdateCheck> check_;
  URLOpener opener_;
};

// Lets App.Event_Open open an about window as a top-level window of its own,
// on the update site named (the program's own by default). The window is
// deleted when it closes.
void installAboutBox(App& app);
void installAboutBox(App& app, const std::string& baseURL, AboutBox::URLOpener opener);

}  // namespace trelvane::shell
