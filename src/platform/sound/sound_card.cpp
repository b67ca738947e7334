#include "platform/sound/sound_card.h"

#include <rtaudio/RtAudio.h>

#include <algorithm>
#include <chrono>
#include <mutex>
#include <utility>

#include "platform/base/detached_task.h"
#include "platform/base/quiet.h"
#include "platform/sound/device_pace.h"

namespace ts5 {
namespace {

constexpr unsigned kBlockFrames = 512;
// How long a card may take to play what it has, and how long one that has gone.
constexpr std::chrono::seconds kPatience{5};
constexpr std::chrono::seconds kPatienceWhenGone{1};

// Tells the quiet library from a broken one: its warnings are of no use to a musician.
void IgnoreAudioMessage(RtAudioError::Type /*type*/, const std::string& /*text*/) {}

std::vector<SoundCardInfo> CardsOf(RtAudio& audio, SoundDirection direction) {
  std::vector<SoundCardInfo> cards;
  for (unsigned index = 0; index < audio.getDeviceCount(); ++index) {
    try {
      const RtAudio::DeviceInfo info = audio.getDeviceInfo(index);
      const unsigned channels =
          direction == SoundDirection::Output ? info.outputChannels : info.inputChannels;
      if (!info.probed || channels == 0) continue;
      cards.push_back({info.name, index, channels, {info.sampleRates.begin(), info.sampleRates.end()}});
    } catch (const RtAudioError&) {
    }
  }
  return cards;
}

}  // namespace

std::vector<SoundCardInfo> SoundCards(SoundDirection direction) {
  const QuietLibraries quiet;
  RtAudio audio;
  audio.showWarnings(false);
  return CardsOf(audio, direction);
}

struct SoundCard::Stream {
  Stream(AudioFormat wanted, Move function)
      : format(wanted), move(std::move(function)), pace(wanted.sampleRate) {
    audio.showWarnings(false);
  }

  static int Callback(void* output, void* input, unsigned frames, double /*time*/,
                      RtAudioStreamStatus /*status*/, void* self) {
    auto* const stream = static_cast<Stream*>(self);
    const std::span block(static_cast<float*>(output != nullptr ? output : input),
                          std::size_t{frames} * stream->format.channels);
    const std::lock_guard lock(stream->mutex);
    stream->pace.Moved(frames);
    if (!stream->cut) {
      stream->move(block);
    } else if (output != nullptr) {
      std::ranges::fill(block, 0.0F);
    }
    return 0;
  }

  // May never return.
  void Close() {
    try {
      if (audio.isStreamRunning()) audio.stopStream();
      if (audio.isStreamOpen()) audio.closeStream();
    } catch (const RtAudioError&) {
    }
  }

  AudioFormat format;
  Move move;
  DevicePace pace;
  std::mutex mutex;
  bool cut = false;  // from the user
  RtAudio audio;
};

bool SoundCard::Open(SoundDirection direction, std::string_view device, AudioFormat format, Move move) {
  const QuietLibraries quiet;
  auto stream = std::make_shared<Stream>(format, std::move(move));
  RtAudio& audio = stream->audio;
  try {
    const auto cards = CardsOf(audio, direction);
    const auto card = std::ranges::find_if(
        cards, [device](const SoundCardInfo& info) { return device.empty() || info.name == device; });
    if (card == cards.end()) return false;
    const bool output = direction == SoundDirection::Output;
    RtAudio::StreamParameters parameters;
    parameters.deviceId = card->index;
    if (device.empty())
      parameters.deviceId = output ? audio.getDefaultOutputDevice() : audio.getDefaultInputDevice();
    parameters.nChannels = format.channels;
    unsigned frames = kBlockFrames;
    audio.openStream(output ? &parameters : nullptr, output ? nullptr : &parameters, RTAUDIO_FLOAT32,
                     format.sampleRate, &frames, &Stream::Callback, stream.get(), nullptr,
                     &IgnoreAudioMessage);
  } catch (const RtAudioError&) {
    return false;
  }
  if (!audio.isStreamOpen()) return false;
  stream_ = std::move(stream);
  return true;
}

bool SoundCard::Start() {
  if (!stream_) return false;
  try {
    stream_->audio.startStream();
  } catch (const RtAudioError&) {
    return false;
  }
  return true;
}

void SoundCard::Stop() {
  const auto stream = std::exchange(stream_, nullptr);
  if (!stream) return;
  const auto patience = stream->pace.Alive() ? kPatience : kPatienceWhenGone;
  {
    const std::lock_guard lock(stream->mutex);
    stream->cut = true;
  }
  const auto closing = DetachedTask::Start([stream] { stream->Close(); });
  if (!closing) return stream->Close();
  (void)closing->WaitFor(patience);
}

bool SoundCard::Alive() const {
  return !stream_ || stream_->pace.Alive();
}

}  // namespace ts5
