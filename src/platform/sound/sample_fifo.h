// A queue of samples between two threads, one that puts in and one that takes out, without locks: for the
// threads of audio devices, which must never wait.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <span>
#include <vector>

namespace ts5 {

class SampleFifo {
 public:
  explicit SampleFifo(std::size_t capacity) : samples_(capacity + 1) {}

  [[nodiscard]] std::size_t Size() const {
    const std::size_t head = head_.load(std::memory_order_acquire);
    const std::size_t tail = tail_.load(std::memory_order_acquire);
    return (head + samples_.size() - tail) % samples_.size();
  }
  [[nodiscard]] std::size_t Room() const { return samples_.size() - 1 - Size(); }

  // As many as there is room for; how many.
  std::size_t Put(std::span<const float> in) {
    const std::size_t count = std::min(in.size(), Room());
    std::size_t head = head_.load(std::memory_order_relaxed);
    for (std::size_t i = 0; i < count; ++i) {
      samples_[head] = in[i];
      head = head + 1 == samples_.size() ? 0 : head + 1;
    }
    head_.store(head, std::memory_order_release);
    return count;
  }
  // As many as there are; how many.
  std::size_t Take(std::span<float> out) {
    const std::size_t count = std::min(out.size(), Size());
    std::size_t tail = tail_.load(std::memory_order_relaxed);
    for (std::size_t i = 0; i < count; ++i) {
      out[i] = samples_[tail];
      tail = tail + 1 == samples_.size() ? 0 : tail + 1;
    }
    tail_.store(tail, std::memory_order_release);
    return count;
  }
  // By the thread that takes out.
  void Drop() { tail_.store(head_.load(std::memory_order_acquire), std::memory_order_release); }

 private:
  std::vector<float> samples_;
  std::atomic<std::size_t> head_ = 0;  // where the next one goes in
  std::atomic<std::size_t> tail_ = 0;
};

}  // namespace ts5
