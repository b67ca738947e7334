#include "app/look/appearance.h"

#include <QApplication>
#include <QColor>
#include <QFile>
#include <QPalette>
#include <QPointer>
#include <QString>
#include <QStyle>
#include <QStyleHints>
#include <QToolTip>
#include <array>
#include <string_view>
#include <utility>

#include "app/look/house_style.h"
#include "resources/icons.h"

namespace ts5 {
namespace {

// The colours of a scheme; a skin's style sheet names them with an '@'.
struct Scheme {
  const char* window;      // ground of windows and dialogs
  const char* surface;     // lists and fields
  const char* alternate;   // every other row of a list
  const char* raised;      // buttons
  const char* hover;       // buttons under the mouse
  const char* pressed;     // buttons held down
  const char* line;        // quiet lines between areas
  const char* edge;        // edges of fields and buttons
  const char* text;        // writing
  const char* muted;       // writing of less weight
  const char* disabled;    // writing of what cannot be used now
  const char* accent;      // the one accent: focus and selection; paler: progress
  const char* onAccent;    // writing on the accent
  const char* accentSoft;  // ground of what is current
  const char* explanation;
  const char* warning;
};

// Plain, the look of before, our own; each light and dark.
constexpr std::array<std::array<Scheme, 2>, 3> kSchemes{{
    {{{"#f0f0f0", "#ffffff", "#f5f5f5", "#f0f0f0", "#e5eef8", "#cfdff0", "#c8c8c8", "#9a9a9a", "#000000",
       "#4d4d4d", "#8a8a8a", "#2a62a8", "#ffffff", "#d6e4f5", "#008000", "#c00000"},
      {"#2b2b2b", "#1e1e1e", "#252525", "#363636", "#40464e", "#2f4257", "#474747", "#6a6a6a", "#f0f0f0",
       "#b8b8b8", "#7d7d7d", "#5c9be0", "#101010", "#2f4257", "#7fd08b", "#ff8a80"}}},
    {{{"#dde3ea", "#fbfcfd", "#eff3f7", "#e8edf3", "#f4f7fa", "#c6d1de", "#b3bfcc", "#8494a6", "#17212b",
       "#48576a", "#8391a0", "#2f5f9e", "#ffffff", "#c9d9ee", "#116b23", "#b3211a"},
      {"#2a3442", "#1d2530", "#222c38", "#364355", "#41516a", "#26303d", "#435163", "#5d6f87", "#e6ecf3",
       "#a5b4c5", "#728195", "#7fb0ee", "#0e1722", "#33496a", "#86d592", "#ff9088"}}},
    {{{"#f3f5f7", "#ffffff", "#f8fafb", "#ffffff", "#eaf1f4", "#d9e6ea", "#dbe1e7", "#b4c0ca", "#1f2933",
       "#5a6773", "#98a4af", "#1f7a8c", "#ffffff", "#d8ebef", "#1b7431", "#b3261e"},
      {"#22282e", "#1a1f24", "#1f252b", "#2d353d", "#384249", "#1f3d45", "#363f48", "#53606b", "#e3e8ed",
       "#a0abb6", "#6b7680", "#4fb6c9", "#0f1a1e", "#21444c", "#7fd08b", "#ff8a80"}}},
}};

constexpr std::array<const char*, 3> kSheets{"windows", "ts4", "ts5"};

std::size_t SkinIndex(SkinLayout layout) {
  return static_cast<std::size_t>(layout) + 1;
}

const Scheme& SchemeOf(SkinLayout layout, bool dark) {
  return kSchemes[SkinIndex(layout)][dark ? 1 : 0];
}

QPalette PaletteOf(const Scheme& scheme) {
  const QColor window(scheme.window);
  QPalette palette(QColor(scheme.raised), window);
  const auto set = [&palette](QPalette::ColorRole role, const char* colour, const char* disabled) {
    palette.setColor(QPalette::All, role, QColor(colour));
    palette.setColor(QPalette::Disabled, role, QColor(disabled));
  };
  set(QPalette::Window, scheme.window, scheme.window);
  set(QPalette::Base, scheme.surface, scheme.window);
  set(QPalette::AlternateBase, scheme.alternate, scheme.window);
  set(QPalette::Button, scheme.raised, scheme.window);
  set(QPalette::WindowText, scheme.text, scheme.disabled);
  set(QPalette::Text, scheme.text, scheme.disabled);
  set(QPalette::ButtonText, scheme.text, scheme.disabled);
  set(QPalette::BrightText, scheme.warning, scheme.warning);
  set(QPalette::PlaceholderText, scheme.muted, scheme.disabled);
  set(QPalette::Highlight, scheme.accent, scheme.edge);
  set(QPalette::HighlightedText, scheme.onAccent, scheme.text);
  set(QPalette::Link, scheme.accent, scheme.disabled);
  set(QPalette::LinkVisited, scheme.accent, scheme.disabled);
  set(QPalette::ToolTipBase, scheme.surface, scheme.surface);
  set(QPalette::ToolTipText, scheme.text, scheme.text);
  set(QPalette::Mid, scheme.line, scheme.line);
  set(QPalette::Dark, scheme.edge, scheme.edge);
  return palette;
}

// The ground of what is done in a progress bar: the accent, but pale, so that writing stands on it as well as
// beside it.
QString ProgressColour(const Scheme& scheme) {
  const QColor accent(scheme.accent);
  const QColor window(scheme.window);
  const auto pale = [](int strong, int ground) { return (2 * strong + 3 * ground) / 5; };
  return QColor(pale(accent.red(), window.red()), pale(accent.green(), window.green()),
                pale(accent.blue(), window.blue()))
      .name();
}

}  // namespace

QString StyleSheet(SkinLayout layout, bool dark) {
  InitializeResources();
  QFile file(QStringLiteral(":/skins/%1.qss").arg(QLatin1String(kSheets[SkinIndex(layout)])));
  if (!file.open(QIODevice::ReadOnly)) return {};
  QString sheet = QString::fromUtf8(file.readAll());
  const Scheme& scheme = SchemeOf(layout, dark);
  // Longer names before those that they begin with.
  const std::array<std::pair<const char*, QString>, 18> colours{{
      {"@accent-soft", scheme.accentSoft},
      {"@on-accent", scheme.onAccent},
      {"@accent", scheme.accent},
      {"@alternate", scheme.alternate},
      {"@window", scheme.window},
      {"@surface", scheme.surface},
      {"@raised", scheme.raised},
      {"@hover", scheme.hover},
      {"@pressed", scheme.pressed},
      {"@progress", ProgressColour(scheme)},
      {"@line", scheme.line},
      {"@edge", scheme.edge},
      {"@text", scheme.text},
      {"@muted", scheme.muted},
      {"@disabled", scheme.disabled},
      {"@explanation", scheme.explanation},
      {"@warning", scheme.warning},
      {"@scheme", dark ? "dark" : "light"},
  }};
  for (const auto& [name, colour] : colours) sheet.replace(QLatin1String(name), colour);
  return sheet;
}

void ApplyAppearance(QApplication& application, SkinLayout layout, bool dark) {
  const QPalette palette = PaletteOf(SchemeOf(layout, dark));
  // One style under all skins, so that a skin looks the same on every desktop.
  static QPointer<QStyle> house;
  if (house == nullptr) {
    house = new HouseStyle;  // the application owns it from here
    QApplication::setStyle(house);
  }
  QApplication::setPalette(palette);
  QToolTip::setPalette(palette);
  application.setStyleSheet(StyleSheet(layout, dark));
}

}  // namespace ts5
