#include "platform/base/parallel.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace ts5 {

void InParallel(std::size_t count, const std::function<void(std::size_t)>& work) {
  std::atomic<std::size_t> next = 0;
  std::mutex mutex;
  std::exception_ptr fault;  // guarded by it
  const auto take = [&] {
    try {
      for (std::size_t i = next++; i < count; i = next++) work(i);
    } catch (...) {
      next = count;
      const std::lock_guard lock(mutex);
      if (!fault) fault = std::current_exception();
    }
  };
  {
    std::vector<std::jthread> helpers;
    const std::size_t cores = std::max(1U, std::thread::hardware_concurrency());
    for (std::size_t i = 1; i < std::min(cores, count); ++i) helpers.emplace_back(take);
    take();
  }
  if (fault) std::rethrow_exception(fault);
}

}  // namespace ts5
