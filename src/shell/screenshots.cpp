// screenshots.cpp -- the screenshot mode: a run of the bundled example, then each tab grabbed.
#include "shell/screenshots.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QDir>
#include <QElapsedTimer>
#include <QPixmap>
#include <QTabWidget>
#include <QThread>

#include <cstdio>

#include "shell/runhost.h"
#include "shell/window1.h"

namespace trelvane::shell {

int takeScreenshots(const QString& dir, const QString& examplesDir) {
  QDir().mkpath(dir);
  auto* w = new Window1;
  w->show();
  const std::string examples = examplesDir.toStdString();
  w->GBLong_DropObject(QString::fromStdString(examples + "/HUMHBB.fa"));
  w->GBShort_DropObject(QString::fromStdString(examples + "/V00508.fa"));
  // An estimated model on the Model tab, entered as a user would.
  w->SeqModel1->setPlainText(QStringLiteral("ATGCATTGCAGGTACCATGA"));
  w->SeqModel2->setPlainText(QStringLiteral("ATGCGTTACAGATACTATGA"));
  w->PupModel->setCurrentIndex(1);
  emit w->PupModel->activated(1);
  if (auto* apply = w->content()->findChild<QPushButton*>(QStringLiteral("Apply"))) apply->click();
  if (auto* clip = w->content()->findChild<QCheckBox*>(QStringLiteral("CBClipboard"))) clip->click();
  w->runSeed = [] { return uint64_t{1}; };
  w->PBRUN_Action();
  while (w->state().running || runthreads::active() > 0) {
    QApplication::processEvents(QEventLoop::AllEvents, 50);
    QThread::msleep(10);
  }
  QApplication::processEvents();
  runthreads::joinAll();

  const char* names[5] = {"file", "model", "results", "graphic", "pref"};
  for (int tab = 0; tab < 5; ++tab) {
    w->TabPanel1->setCurrentIndex(tab);
    QApplication::processEvents();
    const QString path = QDir(dir).filePath(QStringLiteral("screenshot-%1.png").arg(QLatin1String(names[tab])));
    if (!w->grab().save(path)) {
      std::fprintf(stderr, "cannot write %s\n", path.toLocal8Bit().constData());
      return 1;
    }
  }
  w->TabPanel1->setCurrentIndex(0);
  w->close();
  QApplication::processEvents();
  return 0;
}

}  // namespace trelvane::shell
