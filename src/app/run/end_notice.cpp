#include "app/run/end_notice.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QVariantMap>
#include <utility>

#include "app/texts.h"
#include "frame/filter_catalogue.h"
#include "frame/texts.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"

namespace ts5 {
namespace {

constexpr std::chrono::seconds kLongRun{10};

const QString kService = QStringLiteral("org.freedesktop.Notifications");
const QString kPath = QStringLiteral("/org/freedesktop/Notifications");
const QString kShowAction = QStringLiteral("default");  // a click on the notification itself
constexpr int kUsualTime = -1;                          // as long as the desktop shows such

}  // namespace

std::optional<EndNotice> EndNoticeOf(const RunResult& result, const std::string& job,
                                     std::chrono::milliseconds took, bool watched) {
  if (watched || took < kLongRun || !IsFilter(result.filter) || IsPlayer(result.filter)) return std::nullopt;
  EndNotice notice;
  const TextId title = result.cancelled ? texts::NoticeStopped : texts::NoticeDone;
  notice.title = ToQt(Format(Text(title), job, Descriptor(result.filter).Name()));
  for (const RunLine& line : Lines(result)) {
    if (line.label.empty()) continue;
    if (!notice.text.isEmpty()) notice.text += QLatin1Char('\n');
    notice.text += ToQt(line.label) + QLatin1Char(' ') + QString::number(line.count);
  }
  return notice;
}

void DesktopNotices::Show(const EndNotice& notice) {
  if (!qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS")) return;
  QDBusConnection bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) return;
  if (!std::exchange(listening_, true))
    bus.connect(kService, kPath, kService, QStringLiteral("ActionInvoked"), this,
                SLOT(ActionInvoked(uint, QString)));
  QDBusMessage request = QDBusMessage::createMethodCall(kService, kPath, kService, QStringLiteral("Notify"));
  // The text may be taken for markup.
  request << QtText(texts::ApplicationTitle) << last_ << QStringLiteral("stavora-ts5") << notice.title
          << notice.text.toHtmlEscaped() << QStringList{kShowAction, QtText(texts::NoticeShow)}
          << QVariantMap{{QStringLiteral("desktop-entry"), QStringLiteral("stavora-ts5")}} << kUsualTime;
  auto* const answer = new QDBusPendingCallWatcher(bus.asyncCall(request), this);
  connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
    const QDBusPendingReply<uint> number = *answer;
    if (number.isValid()) last_ = number.value();
    answer->deleteLater();
  });
}

void DesktopNotices::ActionInvoked(uint number, const QString& action) {
  if (number == last_ && action == kShowAction) emit Chosen();
}

}  // namespace ts5
