#include "disc/verify.h"

#include <algorithm>
#include <chrono>
#include <optional>

#include "disc/recorder.h"

namespace ts5::disc {
namespace {

constexpr auto kSettling = std::chrono::seconds(60);  // until a closed disc is read again
constexpr std::int32_t kMostOffsetSectors = 4;        // that a drive may be beside the place

// What was sent for one track, sector by sector.
class SentSound {
 public:
  SentSound(const ProjectTrack& track, const PlannedTrack& plan)
      : silence_(std::uint64_t{plan.silence} * kAudioSectorBytes), left_(plan.bytes) {
    if (auto sound = track.open()) sound_ = *std::move(sound);
  }
  // False when the source cannot be read any more.
  bool Read(std::span<std::uint8_t> out) {
    const auto quiet = static_cast<std::size_t>(std::min<std::uint64_t>(silence_, out.size()));
    std::ranges::fill(out.first(quiet), std::uint8_t{0});
    silence_ -= quiet;
    const auto part = static_cast<std::size_t>(std::min<std::uint64_t>(left_, out.size() - quiet));
    std::ranges::fill(out.subspan(quiet + part), std::uint8_t{0});
    left_ -= part;
    if (part == 0) return true;
    if (!sound_) return false;
    const auto got = sound_->Read(out.subspan(quiet, part));
    return got && *got == part;
  }

 private:
  std::uint64_t silence_;
  std::uint64_t left_;
  std::unique_ptr<SoundSource> sound_;
};

// The first difference of what the table of contents and the sub-channel say.
std::optional<std::int32_t> CompareCodes(CdDrive& drive, const DiscLayout& layout) {
  const auto toc = drive.ReadToc();
  if (!toc || toc->tracks.size() != layout.tracks.size()) return 0;
  for (std::size_t i = 0; i < layout.tracks.size(); ++i) {
    const DiscTrack& track = layout.tracks[i];
    const bool same = toc->tracks[i].start == static_cast<std::uint32_t>(track.start.value) &&
                      toc->tracks[i].control == track.control;
    if (!same || drive.ReadIsrc(track.number) != track.isrc) return track.start.value;
  }
  if (toc->leadOut != static_cast<std::uint32_t>(layout.leadOut.value)) return layout.leadOut.value;
  return drive.ReadCatalogue() == layout.catalogue ? std::nullopt : std::optional(0);
}

// Bytes by which this drive's reading is beside its writing, found where the track has sound: the same frames
// some sectors before or behind. 0 when they are nowhere.
std::int32_t FindOffset(CdDrive& drive, Lba at, ByteView sent) {
  constexpr std::int32_t kSpan = kMostOffsetSectors * static_cast<std::int32_t>(kAudioSectorBytes);
  Bytes around(static_cast<std::size_t>(2 * kSpan) + sent.size());
  if (Failed(drive.ReadAudio(at - kMostOffsetSectors, around))) return 0;
  for (std::int32_t offset = -kSpan; offset <= kSpan; offset += static_cast<std::int32_t>(kBytesPerFrame)) {
    if (std::ranges::equal(ByteView(around).subspan(static_cast<std::size_t>(offset + kSpan), sent.size()),
                           sent))
      return offset;
  }
  return 0;
}

class Comparison {
 public:
  Comparison(CdDrive& drive, Lba end) : drive_(drive), end_(end) {}

  // The first sector that is another; nothing when all are the same.
  std::optional<std::int32_t> Portion(Lba at, ByteView sent) {
    read_.resize(sent.size());
    if (!Read(at, read_)) return at.value < 0 ? std::nullopt : std::optional(at.value);
    if (std::ranges::equal(read_, sent)) return std::nullopt;
    if (!offsetKnown_ && std::ranges::any_of(sent, [](std::uint8_t byte) { return byte != 0; })) {
      offsetKnown_ = true;
      offset_ = FindOffset(drive_, at, sent);
      if (offset_ != 0) return Portion(at, sent);
    }
    const auto difference = std::ranges::mismatch(read_, sent).in1 - read_.begin();
    return at.value + static_cast<std::int32_t>(difference / static_cast<std::ptrdiff_t>(kAudioSectorBytes));
  }

 private:
  bool Read(Lba at, std::span<std::uint8_t> out) {
    if (offset_ == 0) return Succeeded(drive_.ReadAudio(at, out));
    const auto bytes = static_cast<std::int32_t>(kAudioSectorBytes);
    const std::int32_t sectors = (offset_ >= 0 ? offset_ : offset_ - bytes + 1) / bytes;
    const auto inside = static_cast<std::size_t>(offset_ - sectors * bytes);
    Bytes more(out.size() + kAudioSectorBytes);
    const Lba first = at + sectors;
    // What lies outside of the disc cannot be compared and counts as silence.
    const auto whole = static_cast<std::int32_t>(more.size() / kAudioSectorBytes);
    const std::int32_t there = std::clamp(end_ - first, 0, whole);
    if (Failed(drive_.ReadAudio(first,
                                std::span(more).first(static_cast<std::size_t>(there) * kAudioSectorBytes))))
      return false;
    std::ranges::copy(ByteView(more).subspan(inside, out.size()), out.begin());
    return true;
  }

  CdDrive& drive_;
  Lba end_;
  Bytes read_;
  bool offsetKnown_ = false;
  std::int32_t offset_ = 0;
};

}  // namespace

DiscComparison CompareDisc(CdDrive& drive, const DiscLayout& layout, std::span<const ProjectTrack> tracks,
                           const RecordingMode& mode, const WorkWatch& watch) {
  (void)drive.WaitUntilReady(kSettling, watch.cancelled);
  if (const auto different = CompareCodes(drive, layout)) return {Outcome::NotProven, *different};
  const DiscPlan plan = DiscPlan::AtOnce(tracks, mode);
  Comparison comparison(drive, layout.leadOut);
  Bytes sent(kSectorsPerCommand * kAudioSectorBytes);
  const double total = layout.leadOut.value + kPregapSectors;
  Bytes carried;  // of a border that two tracks share
  for (std::size_t i = 0; i < tracks.size(); ++i) {
    PlannedTrack planned = mode.atOnce ? plan.tracks[i] : PlannedTrack{0, tracks[i].bytes, 0};
    // Hardly a drive reads the first two seconds, and they are silence.
    if (i == 0) planned.silence = 0;
    SentSound sound(tracks[i], planned);
    const DiscTrack& track = layout.tracks[i];
    Lba at = mode.atOnce && planned.silence > 0 ? track.start - static_cast<std::int32_t>(planned.silence)
                                                : track.start;
    if (mode.atOnce && tracks[i].soundInPause) at = track.pause.value_or(track.start);
    std::uint64_t left = std::uint64_t{planned.silence} * kAudioSectorBytes + planned.bytes + planned.padding;
    if (!mode.atOnce) left = std::uint64_t{SectorsOf(planned.bytes)} * kAudioSectorBytes;
    while (left > 0) {
      if (watch.cancelled && watch.cancelled()) return {Outcome::Cancelled};
      const std::size_t begun = carried.size();
      std::ranges::copy(carried, sent.begin());
      carried.clear();
      // The sectors before 0 by themselves: hardly a drive reads them.
      const std::size_t room =
          at.value < 0 ? static_cast<std::size_t>(-at.value) * kAudioSectorBytes : sent.size();
      const auto part =
          static_cast<std::size_t>(std::min<std::uint64_t>(left, std::min(room, sent.size() - begun)));
      if (!sound.Read(std::span(sent).subspan(begun, part))) return {Outcome::SourceFailed};
      left -= part;
      const std::size_t filled = begun + part;
      const std::size_t whole = filled - filled % kAudioSectorBytes;
      carried.assign(sent.begin() + static_cast<std::ptrdiff_t>(whole),
                     sent.begin() + static_cast<std::ptrdiff_t>(filled));
      if (const auto different = comparison.Portion(at, ByteView(sent).first(whole)))
        return {Outcome::NotProven, *different};
      at = at + static_cast<std::int32_t>(whole / kAudioSectorBytes);
      if (watch.progress) watch.progress((at.value + kPregapSectors) / total);
    }
  }
  return {};
}

}  // namespace ts5::disc
