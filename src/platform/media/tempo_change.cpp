#include "platform/media/tempo_change.h"

#include <soundtouch/SoundTouch.h>

#include <type_traits>

namespace ts5 {

static_assert(std::is_same_v<soundtouch::SAMPLETYPE, float>);

struct TempoChange::Library {
  soundtouch::SoundTouch sound;
};

TempoChange::TempoChange(std::uint32_t sampleRate, std::uint32_t channels)
    : library_(std::make_unique<Library>()), channels_(channels) {
  library_->sound.setSampleRate(sampleRate);
  library_->sound.setChannels(channels);
}

TempoChange::~TempoChange() = default;

void TempoChange::SetSpeed(double speed) {
  library_->sound.setTempo(speed);
}

void TempoChange::Clear() {
  library_->sound.clear();
}

void TempoChange::Put(std::span<const float> samples) {
  library_->sound.putSamples(samples.data(), static_cast<unsigned>(samples.size() / channels_));
}

void TempoChange::Finish() {
  library_->sound.flush();
}

std::size_t TempoChange::Take(std::span<float> samples) {
  const auto room = static_cast<unsigned>(samples.size() / channels_);
  return std::size_t{library_->sound.receiveSamples(samples.data(), room)} * channels_;
}

}  // namespace ts5
