// Says that a long run has ended while nobody looks at the program: by the notifications of the desktop
// (org.freedesktop.Notifications), where it has any.
#pragma once

#include <QObject>
#include <QString>
#include <chrono>
#include <optional>
#include <string>

#include "frame/run_result.h"

namespace ts5 {

struct EndNotice {
  QString title;
  QString text;
};
// Nothing for a run that was short, or that plays, and while somebody looks.
[[nodiscard]] std::optional<EndNotice> EndNoticeOf(const RunResult& result, const std::string& job,
                                                   std::chrono::milliseconds took, bool watched);

class DesktopNotices : public QObject {
  Q_OBJECT

 public:
  using QObject::QObject;
  void Show(const EndNotice& notice);

 signals:
  // The user has clicked on one.
  void Chosen();

 private slots:
  void ActionInvoked(uint number, const QString& action);

 private:
  bool listening_ = false;
  uint last_ = 0;
};

}  // namespace ts5
