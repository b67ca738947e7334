#include "audio/cd_track_source.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "audio/sample_codec.h"
#include "platform/disc/claimed_drive.h"

namespace ts5 {
namespace {

constexpr std::size_t kChannels = 2;

class CdTrackSource final : public PcmSource {
 public:
  CdTrackSource(ClaimedDrive held, const TocTrack& track) : held_(std::move(held)), track_(track) {}

  const PcmShape& Shape() const override { return shape_; }
  std::optional<std::uint64_t> Frames() const override {
    return std::uint64_t{track_.sectors} * kFramesPerSector;
  }

  Result<std::size_t> Read(std::span<double> out) override {
    const std::uint64_t wanted = std::min<std::uint64_t>(out.size() / kChannels, *Frames() - next_);
    std::size_t done = 0;
    while (done < wanted) {
      const auto sector = static_cast<std::uint32_t>(next_ / kFramesPerSector);
      if (const Outcome loaded = Load(sector); Failed(loaded)) return Failure(loaded);
      const auto at = static_cast<std::size_t>(next_ - std::uint64_t{first_} * kFramesPerSector);
      const std::size_t there = sectors_.size() / kBytesPerFrame - at;
      const std::size_t count = std::min<std::size_t>(there, wanted - done);
      DecodeSamples(SampleType::Signed16,
                    ByteView(sectors_).subspan(at * kBytesPerFrame, count * kBytesPerFrame),
                    out.subspan(done * kChannels, count * kChannels));
      done += count;
      next_ += count;
    }
    return done;
  }

  Outcome Seek(std::uint64_t frame) override {
    next_ = std::min(frame, *Frames());
    return Outcome::Success;
  }

 private:
  // The sectors from one of the track on, unless that one is there.
  Outcome Load(std::uint32_t sector) {
    const std::size_t held = sectors_.size() / kAudioSectorBytes;
    if (sector >= first_ && sector - first_ < held) return Outcome::Success;
    sectors_.resize(std::min(kSectorsPerCommand, track_.sectors - sector) * kAudioSectorBytes);
    first_ = sector;
    const Outcome read =
        held_.drive.ReadCdAudio(Lba{static_cast<std::int32_t>(track_.start + sector)}, sectors_);
    if (Failed(read)) sectors_.clear();
    return read;
  }

  ClaimedDrive held_;
  TocTrack track_;
  PcmShape shape_{44'100, kChannels, 0x3, 16};
  std::uint64_t next_ = 0;             // frame of the track
  std::vector<std::uint8_t> sectors_;  // from first_ on
  std::uint32_t first_ = 0;            // sector of the track
};

}  // namespace

Result<std::unique_ptr<PcmSource>> OpenCdTrack(const CdTrackPlace& place, const CancelCheck& cancelled) {
  auto opened = ClaimedDrive::Open(place.drive.path);
  if (!opened) return Failure(opened.error() == Outcome::InUse ? Outcome::InUse : Outcome::CdDriveFailed);
  const auto toc = opened->drive.ReadToc(cancelled);
  if (!toc) return Failure(toc.error());
  const TocTrack* const track = toc->Find(place.number);
  if (track == nullptr || !track->audio) return Failure(Outcome::CdDriveFailed);
  return std::make_unique<CdTrackSource>(*std::move(opened), *track);
}

}  // namespace ts5
