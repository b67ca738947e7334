// Whether the desktop is a light or a dark one, and hearing of it when that changes. The desktops of today
// say so over the settings portal (org.freedesktop.appearance, color-scheme: 1 is dark).
#include "app/desktop_scheme.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <optional>

#include "app/appearance.h"
#include "resources/icons.h"

namespace ts5 {
namespace {

const QString kService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString kPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString kInterface = QStringLiteral("org.freedesktop.portal.Settings");
const QString kNamespace = QStringLiteral("org.freedesktop.appearance");
const QString kKey = QStringLiteral("color-scheme");
constexpr int kTimeoutMilliseconds = 300;  // a start never waits longer for it

// The value is wrapped in one variant or in two, by the age of the portal.
std::optional<bool> DarkOf(QVariant value) {
  while (value.canConvert<QDBusVariant>()) value = value.value<QDBusVariant>().variant();
  bool number = false;
  const uint scheme = value.toUInt(&number);
  if (!number || scheme == 0) return std::nullopt;  // 0: the user has no preference
  return scheme == 1;
}

std::optional<bool> PortalIsDark() {
  if (!qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS")) return std::nullopt;
  QDBusConnection bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) return std::nullopt;
  QDBusMessage request = QDBusMessage::createMethodCall(kService, kPath, kInterface, QStringLiteral("Read"));
  request << kNamespace << kKey;
  const QDBusMessage answer = bus.call(request, QDBus::Block, kTimeoutMilliseconds);
  if (answer.type() != QDBusMessage::ReplyMessage || answer.arguments().isEmpty()) return std::nullopt;
  return DarkOf(answer.arguments().constFirst());
}

}  // namespace

bool DesktopIsDark() {
  return PortalIsDark().value_or(IsDarkPalette());
}

DesktopScheme::DesktopScheme(QApplication& application, SkinLayout layout)
    : QObject(&application), application_(application), layout_(layout) {
  if (!qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS")) return;
  QDBusConnection::sessionBus().connect(kService, kPath, kInterface, QStringLiteral("SettingChanged"), this,
                                        SLOT(SettingChanged(QString, QString, QDBusVariant)));
}

void DesktopScheme::SettingChanged(const QString& space, const QString& key, const QDBusVariant& value) {
  if (space != kNamespace || key != kKey) return;
  if (const auto dark = DarkOf(value.variant())) ApplyAppearance(application_, layout_, *dark);
}

void FollowDesktop(QApplication& application, SkinLayout layout) {
  new DesktopScheme(application, layout);  // lives as long as the application, its owner
}

}  // namespace ts5
