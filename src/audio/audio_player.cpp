#include "audio/audio_player.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "audio/cd_track_source.h"
#include "audio/texts.h"
#include "audio/wave_stream.h"
#include "audio/waveform_overview.h"
#include "frame/cd_tracks.h"
#include "frame/file_types.h"
#include "frame/player_run.h"
#include "frame/run.h"
#include "frame/texts.h"
#include "platform/files/files.h"
#include "platform/sound/audio_out.h"
#include "platform/sound/sample_fifo.h"

namespace ts5 {
namespace {

using namespace std::chrono_literals;
using std::chrono::nanoseconds;

constexpr auto kRemarks =
    PlayerRemarks(texts::PlayerAudioDeviceFailed, {Code(Outcome::FormatRefused), texts::AudioFormatRefused});

constexpr std::uint32_t kChannels = 2;
constexpr std::size_t kBlockFrames = 1024;
// Decoded ahead, so that a disc or a network that makes a pause is not heard; and what there is of it before
// the device begins.
constexpr std::size_t kSecondsAhead = 8;
constexpr std::size_t kStartParts = 2;  // of a second
constexpr auto kPoll = 5ms;

// What the device's thread and the thread that decodes share.
class Stream {
 public:
  Stream(std::uint32_t sampleRate, LevelTap& levels)
      : rate_(sampleRate), levels_(levels), fifo_(std::size_t{sampleRate} * kChannels * kSecondsAhead) {}

  // On the device's thread.
  void Render(std::span<float> out) {
    std::size_t count = 0;
    if (flush_.load(std::memory_order_acquire)) {
      fifo_.Drop();
      flush_.store(false, std::memory_order_release);
    } else if (!paused_.load(std::memory_order_relaxed)) {
      count = fifo_.Take(out);
    }
    std::ranges::fill(out.subspan(count), 0.0F);
    // Gains reach their new values within a block, so that nothing clicks.
    const float target[kChannels] = {left_.load(), right_.load()};
    const float step = 1.0F / static_cast<float>(std::max<std::size_t>(count / kChannels, 1));
    for (std::size_t i = 0; i < count; ++i) {
      const std::size_t channel = i % kChannels;
      const std::size_t frame = i / kChannels;
      const float part = static_cast<float>(frame + 1) * step;
      out[i] *= gain_[channel] + (target[channel] - gain_[channel]) * part;
    }
    std::copy(std::begin(target), std::end(target), std::begin(gain_));
    played_.fetch_add(count / kChannels, std::memory_order_relaxed);
    levels_.Add(out, kChannels, rate_);
  }

  // Decibels as loudness controls have them: the balance takes from the other side.
  void SetSound(PlayerSound sound) {
    const auto gain = [](std::int32_t hundredths) {
      return hundredths <= kLowestVolume ? 0.0F : static_cast<float>(std::pow(10.0, hundredths / 2000.0));
    };
    left_ = gain(sound.volume) * gain(std::min(-sound.balance, 0));
    right_ = gain(sound.volume) * gain(std::min(sound.balance, 0));
  }
  void SetPaused(bool paused) { paused_ = paused; }

  // By the thread that decodes. Where the next samples come from; waits until the old ones are gone.
  void Restart(std::uint64_t frame, const AudioOutput& output) {
    flush_.store(true, std::memory_order_release);
    const auto patience = std::chrono::steady_clock::now() + 1s;
    while (flush_ && output.Alive() && std::chrono::steady_clock::now() < patience)
      std::this_thread::sleep_for(1ms);
    played_ = frame;
  }
  SampleFifo& Fifo() { return fifo_; }
  [[nodiscard]] bool HasEnoughToBegin() const {
    return fifo_.Size() >= std::size_t{rate_} * kChannels / kStartParts;
  }
  [[nodiscard]] std::uint32_t Rate() const { return rate_; }
  [[nodiscard]] std::uint64_t Played() const { return played_; }

 private:
  std::uint32_t rate_;
  LevelTap& levels_;
  SampleFifo fifo_;
  std::atomic<bool> flush_ = false;
  std::atomic<bool> paused_ = false;
  std::atomic<float> left_ = 1;
  std::atomic<float> right_ = 1;
  float gain_[kChannels] = {1, 1};
  std::atomic<std::uint64_t> played_ = 0;
};

// An open device with the stream that it plays.
struct Sound {
  Sound(std::uint32_t sampleRate, LevelTap& levels) : stream(sampleRate, levels) {}
  Stream stream;
  std::unique_ptr<AudioOutput> output;  // dies first
  bool started = false;
};

class AudioTitle final : public PlayedTitle {
 public:
  AudioTitle(std::unique_ptr<PcmSource> source, Sound& sound, std::string name)
      : source_(std::move(source)), sound_(sound), name_(std::move(name)) {
    frames_ = source_->Frames().value_or(0);
  }

  // Shows the outline of a file; a disc would have to be in two places for it.
  void ReportWaveform(std::string path, PlayerControl& control) {
    overview_ = std::jthread([path = std::move(path), &control](const std::stop_token& stop) {
      const auto own = OpenPcm(path);
      if (!own) return;
      auto waveform = OverviewOf(**own, kOverviewParts, {[&stop] { return stop.stop_requested(); }, {}});
      if (waveform) control.ReportWaveform(path, std::make_shared<const Waveform>(*std::move(waveform)));
    });
  }

  Outcome Play(nanoseconds end) override {
    Stream& stream = sound_.stream;
    const bool toTheEnd = end >= Duration();
    const std::uint64_t last = FrameAt(end);
    std::vector<double> block(kBlockFrames * kChannels);
    std::vector<float> samples(block.size());
    std::uint64_t next = 0;
    bool ended = false;
    if (sound_.started) {
      stream.SetPaused(paused_);
      stream.Restart(0, *sound_.output);
    }
    while (!stop_) {
      if (const auto target = TakeSeek()) {
        next = *target;
        // What cannot be searched plays on.
        if (Succeeded(source_->Seek(next))) {
          if (sound_.started) stream.Restart(next, *sound_.output);
          ended = false;
        }
      }
      if (sound_.started && !sound_.output->Alive()) return Outcome::WriteFailed;
      if (ended) {
        if (!Start()) return Outcome::WriteFailed;
        if (stream.Fifo().Size() == 0) return Outcome::Success;
        std::this_thread::sleep_for(kPoll);
        continue;
      }
      if (stream.Fifo().Room() < samples.size()) {
        std::this_thread::sleep_for(kPoll);
        continue;
      }
      std::size_t wanted = kBlockFrames;
      if (!toTheEnd) wanted = std::min<std::uint64_t>(wanted, last > next ? last - next : 0);
      const auto got = wanted == 0 ? Result<std::size_t>(std::size_t{0})
                                   : source_->Read(std::span(block).first(wanted * kChannels));
      if (!got) return got.error();
      ended = *got == 0;
      std::ranges::transform(std::span(block).first(*got * kChannels), samples.begin(),
                             [](double sample) { return static_cast<float>(sample); });
      stream.Fifo().Put(std::span(samples).first(*got * kChannels));
      next += *got;
      if (stream.HasEnoughToBegin() && !Start()) return Outcome::WriteFailed;
    }
    stream.Restart(0, *sound_.output);
    return Outcome::Cancelled;
  }
  void Stop() override { stop_ = true; }
  void Pause() override {
    paused_ = true;
    sound_.stream.SetPaused(true);
  }
  void Resume() override {
    paused_ = false;
    sound_.stream.SetPaused(false);
  }
  void Seek(nanoseconds position) override {
    const std::lock_guard lock(mutex_);
    seek_ = std::min(FrameAt(position), frames_);
  }
  nanoseconds Position() const override {
    const std::lock_guard lock(mutex_);
    return std::min(TimeOf(seek_.value_or(sound_.stream.Played())), Duration());
  }
  nanoseconds Duration() const override { return TimeOf(frames_); }
  std::string Name() const override { return name_; }

 private:
  [[nodiscard]] nanoseconds TimeOf(std::uint64_t frame) const {
    return nanoseconds(static_cast<std::int64_t>(static_cast<double>(frame) * 1e9 / sound_.stream.Rate()));
  }
  [[nodiscard]] std::uint64_t FrameAt(nanoseconds time) const {
    return static_cast<std::uint64_t>(
        std::llround(static_cast<double>(time.count()) / 1e9 * sound_.stream.Rate()));
  }
  std::optional<std::uint64_t> TakeSeek() {
    const std::lock_guard lock(mutex_);
    return std::exchange(seek_, std::nullopt);
  }
  // The device begins when there is something to play.
  bool Start() {
    if (!sound_.started) sound_.started = Succeeded(sound_.output->Start());
    return sound_.started;
  }

  std::unique_ptr<PcmSource> source_;
  Sound& sound_;
  std::string name_;
  std::uint64_t frames_ = 0;
  std::atomic<bool> stop_ = false;
  std::atomic<bool> paused_ = false;
  mutable std::mutex mutex_;
  std::optional<std::uint64_t> seek_;
  std::jthread overview_;
};

class AudioDevice final : public PlayerDevice {
 public:
  AudioDevice(std::string name, PlayerControl& control, CancelCheck cancelled)
      : name_(std::move(name)), control_(control), cancelled_(std::move(cancelled)) {}

  Result<std::unique_ptr<PlayedTitle>> Open(const std::string& source) override {
    const auto track = FindCdTrack(source);
    if (!track && IsCdTrackText(source) && !FileExists(source)) return Failure(Outcome::CdDriveFailed);
    auto pcm = track ? OpenCdTrack(*track, cancelled_) : OpenPcm(source);
    if (!pcm) return Failure(pcm.error());
    if (const Outcome ready = Prepare((*pcm)->Shape().sampleRate); Failed(ready)) return Failure(ready);
    auto shaped = Converted(*std::move(pcm), sound_->stream.Rate(), kChannels);
    if (!shaped) return Failure(shaped.error());
    auto title = std::make_unique<AudioTitle>(*std::move(shaped), *sound_, track ? track->Title() : "");
    if (!track) title->ReportWaveform(source, control_);
    return title;
  }
  void SetSound(PlayerSound sound) override {
    sound_ ? sound_->stream.SetSound(sound) : void();
    wanted_ = sound;
  }
  bool Alive() override { return !sound_ || sound_->output->Alive(); }
  Outcome Close() override {
    const Outcome stopped = sound_ ? sound_->output->Stop() : Outcome::Success;
    sound_.reset();
    control_.Levels().Silence();
    return stopped;
  }

 private:
  // The device sounds at the rate of the title; a file keeps the rate of its first one. What a device does
  // not take is resampled to what all of them take.
  Outcome Prepare(std::uint32_t rate) {
    if (sound_ && (sound_->stream.Rate() == rate || name_.starts_with(kWavePrefix))) return Outcome::Success;
    if (const Outcome closed = Close(); Failed(closed)) return closed;
    Outcome failure = Outcome::TargetFailed;
    for (const std::uint32_t one : {rate, 48'000U, 44'100U}) {
      if (one < 8000 || one > 192'000) continue;
      auto sound = std::make_unique<Sound>(one, control_.Levels());
      auto output =
          OpenAudioOutput(name_, {one, kChannels},
                          [stream = &sound->stream](std::span<float> block) { stream->Render(block); });
      if (!output) {
        failure = output.error();
        continue;
      }
      sound->output = *std::move(output);
      sound_ = std::move(sound);
      sound_->stream.SetSound(wanted_);
      return Outcome::Success;
    }
    return failure;
  }

  std::string name_;
  PlayerControl& control_;
  CancelCheck cancelled_;
  PlayerSound wanted_;
  std::unique_ptr<Sound> sound_;
};

Result<std::unique_ptr<PlayerDevice>> OpenDevice(Run& run) {
  std::string name = run.Devices().output;
  if (name.empty()) {
    const auto devices = AudioOutputDevices();
    const std::int32_t index = run.GetJob().destinationDevice;
    if (index >= 0 && std::cmp_less(index, devices.size())) name = devices[static_cast<std::size_t>(index)];
  }
  // Whether there is such a device shows before the first title.
  const auto known = [&] {
    if (name.empty() || name == kNullDevice || name.starts_with(kWavePrefix)) return true;
    const auto devices = AudioOutputDevices();
    return std::ranges::find(devices, name) != devices.end();
  };
  if (!known()) return Failure(Outcome::TargetFailed);
  return std::make_unique<AudioDevice>(std::move(name), run.Player(), [&run] { return run.Cancelled(); });
}

}  // namespace

FilterModule AudioPlayerModule() {
  PlayerParameters defaults;
  defaults.timeInBars = false;  // sound has none
  FieldTable<PlayerParameters> table;
  AddPlayerFields(table);
  return MakeModule<PlayerParameters>(
      {.id = FilterId::AudioPlayer,
       .defaults = defaults,
       .fields = table.Build(),
       .run = [](Run& run, const PlayerParameters& parameters) { RunPlayer(run, parameters, OpenDevice); },
       .remarks = kRemarks});
}

}  // namespace ts5
