#include "search/melody_player.h"

#include <algorithm>
#include <utility>

namespace ts5 {
namespace {

constexpr std::uint8_t kNoteOn = 0x90;  // on the first channel
constexpr std::uint8_t kProgramChange = 0xC0;
constexpr std::uint8_t kVelocity = 100;
constexpr float kMillisecondsPerUnit = 4.1666665F;  // a 240th of a quarter note at 60 quarters a minute

}  // namespace

std::vector<MelodyStep> MelodySteps(std::span<const MelodyElement> elements, int tempo) {
  const double secondsPerQuarter = 60.0 / std::clamp(tempo, kLeastTempo, kMostTempo);
  std::vector<MelodyStep> steps;
  steps.reserve(elements.size());
  std::optional<std::uint8_t> last;
  for (const MelodyElement& element : elements) {
    MelodyStep step;
    const int key = IsRest(element) ? -1 : KeyOf(element.pitch);
    if (key >= 0 && key < 128) {
      last = static_cast<std::uint8_t>(key);
      step.start = ShortMidiMessage(kNoteOn, *last, kVelocity);
    }
    const double length =
        std::max<int>(element.duration, 0) * secondsPerQuarter * double{kMillisecondsPerUnit};
    step.length = std::chrono::milliseconds(static_cast<std::int64_t>(length));
    if (last) step.end = ShortMidiMessage(kNoteOn, *last, 0);
    steps.push_back(step);
  }
  return steps;
}

void MelodyPlayer::Start(std::span<const MelodyElement> elements, std::unique_ptr<MidiOutput> device,
                         int tempo, std::uint8_t program, std::function<void(Outcome)> ended) {
  Stop();
  playing_ = true;
  thread_ = std::jthread([this, steps = MelodySteps(elements, tempo), device = std::move(device), program,
                          ended = std::move(ended)](const std::stop_token& stop) {
    Outcome played = PlayMelody(stop, steps, *device, program);
    if (const Outcome closed = device->Close(); Succeeded(played)) played = closed;
    {
      const std::lock_guard lock(mutex_);
      playing_ = false;
    }
    if (!stop.stop_requested() && ended) ended(played);
  });
}

void MelodyPlayer::Stop() {
  thread_.request_stop();
  if (thread_.joinable()) thread_.join();
}

bool MelodyPlayer::Playing() const {
  const std::lock_guard lock(mutex_);
  return playing_;
}

Outcome MelodyPlayer::PlayMelody(const std::stop_token& stop, const std::vector<MelodyStep>& steps,
                                 MidiOutput& device, std::uint8_t program) {
  Outcome sent = device.Send(ShortMidiMessage(kProgramChange, program));
  auto due = std::chrono::steady_clock::now();
  for (const MelodyStep& step : steps) {
    if (stop.stop_requested() || Failed(sent)) break;
    if (step.start && Failed(sent = device.Send(*step.start))) break;
    due += step.length;
    {
      std::unique_lock lock(mutex_);
      stopped_.wait_until(lock, stop, due, [] { return false; });
    }
    if (step.end) sent = device.Send(*step.end);
  }
  return sent;
}

}  // namespace ts5
