// Hears from the desktop when it changes between light and dark.
#pragma once

#include <QObject>

#include "frame/settings.h"

class QApplication;
class QDBusVariant;

namespace ts5 {

class DesktopScheme : public QObject {
  Q_OBJECT

 public:
  DesktopScheme(QApplication& application, SkinLayout layout);

 private Q_SLOTS:
  void SettingChanged(const QString& space, const QString& key, const QDBusVariant& value);

 private:
  QApplication& application_;
  SkinLayout layout_;
};

}  // namespace ts5
