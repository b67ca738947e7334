#include "disc/track_file.h"

#include <algorithm>
#include <atomic>
#include <utility>

#include "audio/silence_trimmer.h"
#include "disc/read_ahead.h"
#include "disc/texts.h"
#include "platform/base/text.h"

namespace ts5::disc {
namespace {

class DriveSound final : public SoundSource {
 public:
  DriveSound(TrackReader& reader, Lba first, std::uint32_t sectors)
      : reader_(reader), next_(first), left_(sectors) {}

  Result<std::size_t> Read(std::span<std::uint8_t> out) override {
    const auto wanted =
        std::min<std::uint32_t>(static_cast<std::uint32_t>(out.size() / kAudioSectorBytes), left_);
    const auto part = out.first(wanted * kAudioSectorBytes);
    const CancelCheck stopped = [this] { return interrupted_.load(); };
    const auto before = static_cast<std::uint32_t>(
        std::clamp<std::int32_t>(-next_.value, 0, static_cast<std::int32_t>(wanted)));
    if (before > 0 && reader_.Read(next_, part.first(before * kAudioSectorBytes), stopped) != 0)
      std::ranges::fill(part.first(before * kAudioSectorBytes), std::uint8_t{0});
    const Lba there = next_ + static_cast<std::int32_t>(before);
    if (wanted > before) {
      const std::uint32_t error = reader_.Read(there, part.subspan(before * kAudioSectorBytes), stopped);
      if (error != 0)
        return Failure(error == engine::kDiscChanged ? Outcome::CdDriveFailed : Outcome::ReadFailed);
    }
    next_ = next_ + static_cast<std::int32_t>(wanted);
    left_ -= wanted;
    return part.size();
  }
  void Interrupt() override { interrupted_ = true; }

 private:
  TrackReader& reader_;
  Lba next_;
  std::uint32_t left_;
  std::atomic<bool> interrupted_ = false;
};

// The status line and the progress of one track; the line comes anew with each tenth of a percent.
class TrackProgress {
 public:
  TrackProgress(const TrackFileOrder& order, const TrackFileEvents& events)
      : order_(order), events_(events) {}

  void Tell(std::uint32_t done) {
    const double fraction = order_.sectors == 0 ? 1.0 : static_cast<double>(done) / order_.sectors;
    if (events_.progress) events_.progress(fraction);
    const int permille = static_cast<int>(fraction * 1000);
    if (permille == std::exchange(told_, permille) || !events_.status) return;
    events_.status(
        Format(Text(texts::TrackReadPart), order_.number, done, order_.sectors, permille / 10, '%'));
  }

 private:
  const TrackFileOrder& order_;
  const TrackFileEvents& events_;
  int told_ = -1;
};

}  // namespace

std::unique_ptr<SoundSource> RangeSound(TrackReader& reader, Lba first, std::uint32_t sectors) {
  return std::make_unique<DriveSound>(reader, first, sectors);
}

std::uint32_t ReadTrackToFile(SoundSource& sound, const TrackFileOrder& order, WaveFile wave,
                              const TrackFileEvents& events) {
  SilenceTrimmer trimmer(kBytesPerFrame, [&](ByteView frames) { return wave.Write(frames); });
  TrackProgress progress(order, events);
  ReadAhead ahead(sound, order.crc);
  for (std::uint32_t done = 0; done < order.sectors;) {
    if (events.stopped && events.stopped()) return engine::kStopped;
    progress.Tell(done);
    const auto sectors = ahead.Next();
    if (!sectors) continue;
    if (sectors->empty())
      return ahead.End() == Outcome::CdDriveFailed ? engine::kDiscChanged : engine::kSectorsUnreadable;
    if (Failed(order.trim ? trimmer.Push(*sectors) : wave.Write(*sectors))) return engine::kFileNotWritten;
    ahead.Drop(*sectors);
    done += static_cast<std::uint32_t>(sectors->size() / kAudioSectorBytes);
  }
  progress.Tell(order.sectors);
  if (order.trim && Failed(trimmer.Finish())) return engine::kNotTrimmed;
  return Failed(wave.Close()) ? engine::kChunkNotClosed : 0;
}

}  // namespace ts5::disc
