#include "app/shell/window_places.h"

#include <QCoreApplication>
#include <QEvent>
#include <QGuiApplication>
#include <QScreen>
#include <algorithm>

namespace ts5 {
namespace {

constexpr int kFilterBarWidth = 262;
constexpr int kTreeWidth = 250;
constexpr int kTreeShare = 5;  // at most that part of a small window
constexpr double kShareOfScreen = 0.9;
constexpr double kShareOfHits = 0.5;  // with the destination above them

}  // namespace

void ShowPlaces(const AreaSplitters& splitters, const SizingRectangle& place, bool listsHits, QSize window) {
  const bool stored = place.left > 0 && place.right > place.left && place.bottom > 0;
  const int left = stored ? place.left : kFilterBarWidth;
  const int tree = stored ? place.right - place.left : std::min(kTreeWidth, window.width() / kTreeShare);
  splitters.filterBar->setSizes({left, std::max(window.width() - left, 1)});
  splitters.tree->setSizes({tree, std::max(window.width() - left - tree, 1)});
  // What was shown or hidden just now counts.
  QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
  const int needed = splitters.source->widget(1)->sizeHint().height();
  const int below = listsHits ? std::max(needed, static_cast<int>(window.height() * kShareOfHits)) : needed;
  const int source = stored ? place.bottom : std::max(window.height() - below, 1);
  splitters.source->setSizes({source, std::max(window.height() - source, 1)});
}

SizingRectangle PlacesOf(const AreaSplitters& splitters, const SizingRectangle& before) {
  const int left = splitters.filterBar->sizes().front();
  SizingRectangle place{left, 0, before.right, splitters.source->sizes().front()};
  if (const int tree = splitters.tree->sizes().front(); tree > 0) place.right = left + tree;
  if (place.right <= left) place.right = left + kTreeWidth;
  return place;
}

void RestoreWindowPlace(QWidget& window, const Settings& settings) {
  const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
  QRect place(screen.topLeft(), screen.size() * kShareOfScreen);
  if (settings.mainWindowPosition) {
    const WindowRectangle& stored = *settings.mainWindowPosition;
    const QRect wanted(QPoint(stored.left, stored.top), QPoint(stored.right - 1, stored.bottom - 1));
    if (QGuiApplication::screenAt(wanted.center()) != nullptr) place = wanted;
  }
  window.setGeometry(place);
  if (settings.mainWindowMaximised) window.setWindowState(window.windowState() | Qt::WindowMaximized);
}

void StoreWindowPlace(const QWidget& window, Settings& settings) {
  const QRect place = window.isMaximized() ? window.normalGeometry() : window.geometry();
  settings.mainWindowMaximised = window.isMaximized();
  settings.mainWindowPosition =
      WindowRectangle{place.left(), place.top(), place.right() + 1, place.bottom() + 1};
}

}  // namespace ts5
