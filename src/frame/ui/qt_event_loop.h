// The event loop of the desktop: the window's own, behind the interface that the rooms know.
#pragma once

#include <QObject>
#include <functional>

#include "platform/programs/event_loop.h"

namespace ts5 {

// Lives on the window's thread; events that have not run when it goes are destroyed.
class QtEventLoop final : public EventLoop {
 public:
  void Post(std::function<void()> event) override {
    QMetaObject::invokeMethod(&target_, std::move(event), Qt::QueuedConnection);
  }

 private:
  QObject target_;
};

}  // namespace ts5
