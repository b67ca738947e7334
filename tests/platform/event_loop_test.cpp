#include "platform/programs/event_loop.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <thread>
#include <vector>

namespace ts5 {
namespace {

using namespace std::chrono_literals;

TEST(EventLoop, EventsOfEveryThreadRunOnceAndInTheOrderOfTheirThread) {
  constexpr int kThreads = 4;
  constexpr int kEvents = 500;
  StandardEventLoop loop;
  std::vector<std::vector<int>> seen(kThreads);
  int total = 0;
  {
    std::vector<std::jthread> threads;
    for (int t = 0; t < kThreads; ++t) {
      threads.emplace_back([&, t] {
        for (int i = 0; i < kEvents; ++i) {
          loop.Post([&, t, i] {
            seen[static_cast<std::size_t>(t)].push_back(i);
            if (++total == kThreads * kEvents) loop.Quit();
          });
        }
      });
    }
    loop.Run();
  }
  for (const auto& order : seen) {
    ASSERT_EQ(order.size(), static_cast<std::size_t>(kEvents));
    EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
  }
}

TEST(EventLoop, QuitIsNeverLost) {
  StandardEventLoop loop;
  loop.Quit();  // before anything runs
  loop.Run();
  int ran = 0;
  loop.Post([&] {
    ++ran;
    loop.Quit();
  });
  loop.Post([&] { ++ran; });
  loop.Run();
  EXPECT_EQ(ran, 1);
  EXPECT_EQ(loop.RunPending(), 1U);
  EXPECT_EQ(ran, 2);
}

TEST(EventLoop, PendingEventsThatPostThemselvesAgainEnd) {
  StandardEventLoop loop;
  int ran = 0;
  std::function<void()> again = [&] {
    ++ran;
    loop.Post(again);
  };
  loop.Post(again);
  EXPECT_EQ(loop.RunPending(), 1U);
  EXPECT_EQ(loop.RunPending(), 1U);
  EXPECT_EQ(ran, 2);
}

TEST(EventLoop, RunUntil) {
  StandardEventLoop loop;
  bool done = false;
  EXPECT_FALSE(loop.RunUntil([&] { return done; }, 20ms));
  const std::jthread worker([&] {
    std::this_thread::sleep_for(20ms);
    loop.Post([&] { done = true; });
  });
  EXPECT_TRUE(loop.RunUntil([&] { return done; }, 10s));
  loop.Quit();
  EXPECT_FALSE(loop.RunUntil([] { return false; }, 10s));
}

TEST(EventLoop, WhatIsNeverRunIsStillReleased) {
  const auto token = std::make_shared<int>(1);
  {
    StandardEventLoop loop;
    loop.Post([token] {});
    EXPECT_EQ(token.use_count(), 2);
  }
  EXPECT_EQ(token.use_count(), 1);
}

}  // namespace
}  // namespace ts5
