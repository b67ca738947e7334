// Works on items with several threads and takes them in order, as if one came after the other.
//
//   std::atomic<bool> stop = false;
//   OrderedPool<Page> pool({.next = NextPage, .work = Render, .begin = {}, .take = Print}, 16, stop);
//   if (!pool.Run(4)) OneByOne();
//
// At most so many items are begun and not yet taken, so that memory stays bounded. An item may tell of itself
// while it is at work (Update); what it tells is taken at once when it is its turn. Whatever a step throws
// ends the pool and comes out of Run, after all threads have gone.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace ts5 {

template <typename Item>
class OrderedPool {
 public:
  struct Steps {
    std::function<std::unique_ptr<Item>()> next;  // nullptr at the end; on any thread, one call at a time
    std::function<void(Item&)> work;              // on any thread
    // On the thread that called Run. False ends the pool.
    std::function<bool(Item&)> begin;            // its turn has come, whether done or not
    std::function<bool(Item&, bool done)> take;  // it has told something, or is done
    // Nothing is there to be taken at this moment: time for what can be put off. False ends the pool.
    std::function<bool()> idle = {};
  };

  // stop is set when the pool ends, however it does: items at work are to look at it.
  OrderedPool(Steps steps, std::size_t ahead, std::atomic<bool>& stop)
      : steps_(std::move(steps)), ahead_(ahead), stop_(stop) {}

  // Returns when all items are taken or a step ended the pool. False when not one thread could be had: then
  // nothing was done.
  [[nodiscard]] bool Run(unsigned threads) {
    std::vector<std::jthread> workers;
    const StopAtEnd stop(*this);
    try {
      for (unsigned i = 0; i < threads; ++i) workers.emplace_back([this] { Work(); });
    } catch (const std::system_error&) {
      if (workers.empty()) return false;  // fewer threads do as well
    }
    while (TakeFront()) {
    }
    return true;
  }

  // Changes the item as soon as it has room, alone with it. False when the pool has stopped.
  template <typename HasRoom, typename Change>
  [[nodiscard]] bool Update(Item& item, const HasRoom& hasRoom, const Change& change) {
    std::unique_lock lock(mutex_);
    room_.wait(lock, [&] { return stop_ || hasRoom(); });
    if (stop_) return false;
    change();
    if (slots_.front().item.get() == &item) TellFront();
    return true;
  }
  // Runs alone with all items, e.g. to take out what Update put in.
  template <typename Action>
  auto Locked(const Action& action) {
    const std::lock_guard lock(mutex_);
    return action();
  }

 private:
  struct Slot {
    std::unique_ptr<Item> item;
    std::exception_ptr failure = {};
    bool done = false;
  };

  class StopAtEnd {
   public:
    explicit StopAtEnd(OrderedPool& pool) : pool_(pool) {}
    StopAtEnd(const StopAtEnd&) = delete;
    StopAtEnd& operator=(const StopAtEnd&) = delete;
    ~StopAtEnd() {
      {
        const std::lock_guard lock(pool_.mutex_);
        pool_.stop_ = true;
      }
      pool_.room_.notify_all();
    }

   private:
    OrderedPool& pool_;
  };

  void TellFront() {
    news_ = true;
    front_.notify_one();
  }

  void Work() {
    while (Slot* const slot = Begin()) {
      std::exception_ptr failure;
      try {
        steps_.work(*slot->item);
      } catch (...) {
        failure = std::current_exception();
      }
      const std::lock_guard lock(mutex_);
      slot->failure = failure;
      slot->done = true;
      if (&slots_.front() == slot) TellFront();
    }
  }

  Slot* Begin() {
    std::unique_lock lock(mutex_);
    room_.wait(lock, [this] { return stop_ || exhausted_ || slots_.size() < ahead_; });
    if (stop_ || exhausted_) return nullptr;
    try {
      if (auto item = steps_.next()) {
        slots_.push_back({std::move(item)});
        if (slots_.size() == 1) front_.notify_one();
        return &slots_.back();
      }
    } catch (...) {
      failure_ = std::current_exception();
    }
    exhausted_ = true;
    room_.notify_all();
    front_.notify_one();
    return nullptr;
  }

  // False when the pool ends.
  template <typename Ready>
  bool Await(std::unique_lock<std::mutex>& lock, const Ready& ready) {
    if (!ready() && steps_.idle) {
      lock.unlock();
      if (!steps_.idle()) return false;
      lock.lock();
    }
    front_.wait(lock, ready);
    return true;
  }

  // One turn; false at the end.
  bool TakeFront() {
    std::unique_lock lock(mutex_);
    if (!Await(lock, [this] { return !slots_.empty() || exhausted_; })) return false;
    if (slots_.empty()) {
      if (failure_) std::rethrow_exception(failure_);
      return false;
    }
    Slot& slot = slots_.front();
    news_ = true;  // what it told before its turn
    lock.unlock();
    if (steps_.begin && !steps_.begin(*slot.item)) return false;
    for (bool done = false; !done;) {
      lock.lock();
      if (!Await(lock, [this] { return news_; })) return false;
      news_ = false;
      done = slot.done;
      if (slot.failure) std::rethrow_exception(slot.failure);
      lock.unlock();
      if (!steps_.take(*slot.item, done)) return false;
      room_.notify_all();
    }
    lock.lock();
    slots_.pop_front();
    lock.unlock();
    room_.notify_all();
    return true;
  }

  Steps steps_;
  std::size_t ahead_;
  std::atomic<bool>& stop_;
  std::mutex mutex_;
  std::condition_variable front_;  // for the thread that takes
  std::condition_variable room_;   // for the workers
  std::deque<Slot> slots_;         // in order; the first one's turn it is
  bool news_ = false;              // of the first one
  bool exhausted_ = false;
  std::exception_ptr failure_;  // of next
};

}  // namespace ts5
