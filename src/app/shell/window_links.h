// What a window that stays open may ask of the main window.
#pragma once

#include <functional>

namespace ts5 {

struct WindowLinks {
  std::function<void()> run;              // its job
  std::function<void()> edited;           // the job's parameters are others now
  std::function<void()> showDestination;  // the job's device is another one now
};

}  // namespace ts5
