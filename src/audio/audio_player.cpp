#include "audio/audio_player.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "audio/audio_title.h"
#include "audio/cd_track_source.h"
#include "audio/player_stream.h"
#include "audio/texts.h"
#include "audio/wave_stream.h"
#include "frame/cd_tracks.h"
#include "frame/file_types.h"
#include "frame/player_run.h"
#include "frame/run.h"
#include "frame/texts.h"
#include "platform/files/files.h"
#include "platform/sound/audio_out.h"

namespace ts5 {
namespace {

constexpr auto kRemarks =
    PlayerRemarks(texts::PlayerAudioDeviceFailed, {Code(Outcome::FormatRefused), texts::AudioFormatRefused});

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
    auto shaped = Converted(*std::move(pcm), sound_->stream.Rate(), kPlayerChannels);
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
    for (const std::uint32_t one : RatesToTry(rate)) {
      if (one < 8000 || one > 192'000) continue;
      auto sound = std::make_unique<PlayerSoundDevice>(one, control_.Levels());
      auto output =
          OpenAudioOutput(name_, {one, kPlayerChannels},
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
  std::unique_ptr<PlayerSoundDevice> sound_;
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
