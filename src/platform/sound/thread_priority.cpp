#include "platform/sound/thread_priority.h"

#include <pthread.h>
#include <sched.h>

namespace ts5 {
namespace {

// Below the threads of the sound servers, which take 5 and more.
constexpr int kPriority = 2;

}  // namespace

bool HurryThisThread() {
  sched_param parameters{};
  parameters.sched_priority = kPriority;
  return pthread_setschedparam(pthread_self(), SCHED_RR, &parameters) == 0;
}

}  // namespace ts5
