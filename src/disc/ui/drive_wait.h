// Work with a drive that may take seconds, away from the window's thread. The window stays drawn meanwhile,
// but takes no input.
#pragma once

#include <QEventLoop>
#include <QGuiApplication>
#include <optional>
#include <thread>
#include <utility>

namespace ts5::disc {

template <typename Work>
[[nodiscard]] auto WithDrive(Work work) {
  std::optional<decltype(work())> result;
  QEventLoop loop;
  QGuiApplication::setOverrideCursor(Qt::WaitCursor);
  {
    const std::jthread worker([&] {
      result.emplace(work());
      QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
    });
    loop.exec(QEventLoop::ExcludeUserInputEvents);
  }
  QGuiApplication::restoreOverrideCursor();
  return *std::move(result);
}

}  // namespace ts5::disc
