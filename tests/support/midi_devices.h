// MIDI devices of the tests' own.
#pragma once

#include <algorithm>
#include <chrono>
#include <functional>
#include <map>
#include <utility>
#include <vector>

#include "platform/sound/midi_out.h"

namespace ts5::test {

// Does with what it gets as a test wants.
class FakeDevice : public MidiOutput {
 public:
  explicit FakeDevice(std::function<Outcome(std::uint32_t)> send, std::function<void()> closed = {})
      : send_(std::move(send)), closed_(std::move(closed)) {}
  Outcome Send(std::uint32_t message) override { return send_(message); }
  Outcome SendSystemExclusive(ByteView /*message*/) override { return Outcome::Success; }
  Outcome Close() override { return closed_ ? closed_(), Outcome::Success : MidiOutput::Close(); }

 private:
  std::function<Outcome(std::uint32_t)> send_;
  std::function<void()> closed_;
};

// Its time goes on as fast as the player says.
class TimedDevice : public MidiOutput {
 public:
  struct Event {
    std::chrono::nanoseconds time;
    std::uint32_t message;
    auto operator<=>(const Event&) const = default;
    [[nodiscard]] bool IsStrike() const { return (message & 0xF0) == 0x90 && message >> 16 != 0; }
  };
  Outcome Send(std::uint32_t message) override {
    if (events.size() == failsAt) return Outcome::WriteFailed;
    events.push_back({now, message});
    if (onEvent) onEvent(events.size());
    return Outcome::Success;
  }
  Outcome SendSystemExclusive(ByteView /*message*/) override { return Outcome::Success; }
  bool KeepsTime() const override { return true; }
  void Elapse(std::chrono::nanoseconds time) override {
    now += time;
    if (onTime) onTime(now);
  }

  [[nodiscard]] std::vector<Event> Struck() const {
    std::vector<Event> struck;
    std::ranges::copy_if(events, std::back_inserter(struck), &Event::IsStrike);
    return struck;
  }
  // Strikes that were not released, by channel and key.
  [[nodiscard]] int Sounding() const {
    std::map<std::uint32_t, int> keys;
    for (const Event& event : events) {
      if ((event.message & 0xE0) == 0x80) keys[event.message & 0xFF0F] += event.IsStrike() ? 1 : -1;
    }
    return static_cast<int>(std::ranges::count_if(keys, [](const auto& key) { return key.second != 0; }));
  }

  std::vector<Event> events;
  std::chrono::nanoseconds now{};
  std::size_t failsAt = SIZE_MAX;
  std::function<void(std::size_t)> onEvent;
  std::function<void(std::chrono::nanoseconds)> onTime;
};

}  // namespace ts5::test
