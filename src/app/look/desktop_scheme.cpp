// Whether the desktop is a light or a dark one, and hearing of it when that changes. The desktops of today
// say so over the settings portal (org.freedesktop.appearance, color-scheme: 1 is dark).
#include "app/look/desktop_scheme.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <optional>

#include "app/look/appearance.h"
#include "resources/icons.h"

namespace ts5 {
namespace {

const QString kService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString kPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString kInterface = QStringLiteral("org.freedesktop.portal.Settings");
const QString kNamespace = QStringLiteral("org.freedesktop.appearance");
const QString kKey = QStringLiteral("color-scheme");
constexpr int kTimeoutMilliseconds = 300;  // a start never waits longer for it

constexpr uint kNoPreference = 0;
constexpr uint kDark = 1;

// The value is wrapped in one variant or in two, by the age of the portal.
std::optional<uint> SchemeOf(QVariant value) {
  while (value.canConvert<QDBusVariant>()) value = value.value<QDBusVariant>().variant();
  bool number = false;
  const uint scheme = value.toUInt(&number);
  return number ? std::optional(scheme) : std::nullopt;
}

std::optional<bool> PortalIsDark() {
  if (!qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS")) return std::nullopt;
  QDBusConnection bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) return std::nullopt;
  QDBusMessage request = QDBusMessage::createMethodCall(kService, kPath, kInterface, QStringLiteral("Read"));
  request << kNamespace << kKey;
  const QDBusMessage answer = bus.call(request, QDBus::Block, kTimeoutMilliseconds);
  if (answer.type() != QDBusMessage::ReplyMessage || answer.arguments().isEmpty()) return std::nullopt;
  const auto scheme = SchemeOf(answer.arguments().constFirst());
  // Without a preference the toolkit's own palette tells.
  if (!scheme || *scheme == kNoPreference) return std::nullopt;
  return *scheme == kDark;
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
  // No preference any more: some desktops say so when they go back to light. The palette would not tell, as
  // it is the program's own by now.
  if (const auto scheme = SchemeOf(value.variant())) ApplyAppearance(application_, layout_, *scheme == kDark);
}

void FollowDesktop(QApplication& application, SkinLayout layout) {
  new DesktopScheme(application, layout);  // lives as long as the application, its owner
}

}  // namespace ts5
