#include "app/shell/splash.h"

#include <QApplication>
#include <QScreen>

#include "app/shell/about_dialog.h"
#include "frame/texts.h"
#include "frame/ui/qt_text.h"
#include "resources/icons.h"
#include "ui_TITELBILD.h"

namespace ts5 {

Splash::Splash(int steps, QWidget* parent)
    : QWidget(parent, Qt::SplashScreen | Qt::FramelessWindowHint), ui_(std::make_unique<Ui::TITELBILD>()) {
  ui_->setupUi(this);
  ui_->nameLabel->setText(QtText(texts::ApplicationTitle));
  ui_->versionLabel->setText(VersionText());
  ui_->logo->setPixmap(Icon("logo").pixmap(ui_->logo->minimumSize(), devicePixelRatioF()));
  ui_->progressBar->setMaximum(steps);
  adjustSize();
  if (const QScreen* here = screen()) move(here->availableGeometry().center() - rect().center());
}

Splash::~Splash() = default;

void Splash::ShowStep(std::string_view text) {
  ui_->statusLabel->setText(ToQt(text));
  ui_->progressBar->setValue(ui_->progressBar->value() + 1);
  if (!isVisible()) show();
  // The steps of the start run on this thread, so the text has to reach the screen now.
  QApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

}  // namespace ts5
