#include "disc/verify.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <future>
#include <optional>

namespace ts5::disc {
namespace {

constexpr auto kSettling = std::chrono::seconds(60);  // until a closed disc is read again
constexpr std::size_t kReadTogether =
    std::size_t{16} * kSectorsPerCommand * kAudioSectorBytes;  // of what was sent
constexpr std::int32_t kMostOffsetSectors = 4;                 // that a drive may be beside the place

// What was sent for some tracks, one behind the other.
class SentSound final : public SoundSource {
 public:
  SentSound(std::span<const ProjectTrack> tracks, std::span<const PlannedTrack> plan)
      : tracks_(tracks), plan_(plan) {}

  Result<std::size_t> Read(std::span<std::uint8_t> out) override {
    std::size_t done = 0;
    while (done < out.size() && (pieces_ != Pieces{} || NextTrack())) {
      const auto piece = std::ranges::find_if(pieces_, [](std::uint64_t bytes) { return bytes > 0; });
      if (piece == pieces_.end()) {
        pieces_ = {};
        continue;
      }
      const auto part =
          out.subspan(done, static_cast<std::size_t>(std::min<std::uint64_t>(*piece, out.size() - done)));
      if (piece != pieces_.begin() + kSound) {
        std::ranges::fill(part, std::uint8_t{0});
      } else if (sound_ == nullptr || sound_->Read(part) != part.size()) {
        return Failure(Outcome::SourceFailed);
      }
      *piece -= part.size();
      done += part.size();
    }
    return done;
  }

 private:
  using Pieces = std::array<std::uint64_t, 3>;  // bytes left of silence, sound and padding
  static constexpr std::ptrdiff_t kSound = 1;

  bool NextTrack() {
    if (track_ == tracks_.size()) return false;
    const PlannedTrack& plan = plan_[track_];
    pieces_ = {std::uint64_t{plan.silence} * kAudioSectorBytes, plan.bytes, plan.padding};
    auto sound = tracks_[track_++].open();
    sound_ = sound ? *std::move(sound) : nullptr;
    return true;
  }

  std::span<const ProjectTrack> tracks_;
  std::span<const PlannedTrack> plan_;
  std::size_t track_ = 0;
  Pieces pieces_ = {};
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
  constexpr std::size_t kSpan = std::size_t{kMostOffsetSectors} * kAudioSectorBytes;
  Bytes around(2 * kSpan + sent.size());
  if (Failed(drive.ReadCdAudio(at - kMostOffsetSectors, around))) return 0;
  for (std::size_t from = 0; from <= 2 * kSpan; from += kBytesPerFrame) {
    if (std::ranges::equal(ByteView(around).subspan(from, sent.size()), sent))
      return static_cast<std::int32_t>(from) - static_cast<std::int32_t>(kSpan);
  }
  return 0;
}

class Comparison {
 public:
  Comparison(CdDrive& drive, Lba end) : drive_(drive), end_(end) {}

  DiscComparison Portion(Lba at, ByteView sent) {
    read_.resize(sent.size());
    if (!Read(at, read_)) return at.value < 0 ? DiscComparison{} : FirstUnreadable(at);
    if (std::ranges::equal(read_, sent)) return {};
    if (!offsetKnown_ && std::ranges::any_of(sent, [](std::uint8_t byte) { return byte != 0; })) {
      offsetKnown_ = true;
      offset_ = FindOffset(drive_, at, sent);
      if (offset_ != 0) return Portion(at, sent);
    }
    const auto difference = std::ranges::mismatch(read_, sent).in1 - read_.begin();
    const auto sectors = difference / static_cast<std::ptrdiff_t>(kAudioSectorBytes);
    return {Outcome::NotProven, at.value + static_cast<std::int32_t>(sectors)};
  }

 private:
  DiscComparison FirstUnreadable(Lba at) {
    const auto sectors = static_cast<std::int32_t>(read_.size() / kAudioSectorBytes);
    const auto one = std::span(read_).first(kAudioSectorBytes);
    std::int32_t readable = 0;
    while (readable + 1 < sectors && Read(at + readable, one)) ++readable;
    return {Outcome::ReadFailed, at.value + readable};
  }

  bool Read(Lba at, std::span<std::uint8_t> out) {
    if (offset_ == 0) return Succeeded(drive_.ReadCdAudio(at, out));
    const auto bytes = static_cast<std::int32_t>(kAudioSectorBytes);
    const std::int32_t sectors = (offset_ >= 0 ? offset_ : offset_ - bytes + 1) / bytes;
    const auto inside = static_cast<std::size_t>(offset_ - sectors * bytes);
    Bytes more(out.size() + kAudioSectorBytes);
    const Lba first = at + sectors;
    // What lies outside of the disc cannot be compared and counts as silence.
    const auto whole = static_cast<std::int32_t>(more.size() / kAudioSectorBytes);
    const std::int32_t there = std::clamp(end_ - first, 0, whole);
    if (Failed(drive_.ReadCdAudio(
            first, std::span(more).first(static_cast<std::size_t>(there) * kAudioSectorBytes))))
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

// Compares sound that was sent in one piece, from there on. What comes next is read meanwhile.
DiscComparison CompareRange(Comparison& comparison, SoundSource& sent, Lba at, Lba end,
                            const WorkWatch& watch, double sectorsOfDisc) {
  Bytes now(kReadTogether);
  Bytes next(kReadTogether);
  const auto readNext = [&] { return std::async(std::launch::async, [&] { return sent.Read(next); }); };
  for (auto coming = readNext(); at < end;) {
    const auto got = coming.get();
    if (!got || *got == 0) return {Outcome::SourceFailed};
    now.swap(next);
    coming = readNext();
    for (ByteView left = ByteView(now).first(*got); !left.empty();) {
      if (watch.cancelled && watch.cancelled()) return {Outcome::Cancelled};
      // The sectors before 0 by themselves: hardly a drive reads them.
      const std::size_t most = at.value < 0 ? static_cast<std::size_t>(-at.value) : kSectorsPerCommand;
      const auto count =
          std::min({left.size(), most * kAudioSectorBytes, kSectorsPerCommand * kAudioSectorBytes});
      if (const DiscComparison compared = comparison.Portion(at, left.first(count)); Failed(compared.outcome))
        return compared;
      left = left.subspan(count);
      at = at + static_cast<std::int32_t>(count / kAudioSectorBytes);
      if (watch.progress) watch.progress((at.value + kPregapSectors) / sectorsOfDisc);
    }
  }
  return {};
}

}  // namespace

DiscComparison CompareDisc(CdDrive& drive, const DiscLayout& layout, std::span<const ProjectTrack> tracks,
                           const RecordingMode& mode, const WorkWatch& watch) {
  (void)drive.WaitUntilReady(kSettling, watch.cancelled);
  if (const auto different = CompareCodes(drive, layout)) return {Outcome::NotProven, *different};
  Comparison comparison(drive, layout.leadOut);
  const double all = layout.leadOut.value + kPregapSectors;
  if (mode.atOnce) {
    DiscPlan plan = DiscPlan::AtOnce(tracks, mode);
    // Hardly a drive reads the first two seconds, and they are silence unless they were copied.
    plan.tracks.front().silence = 0;
    const DiscTrack& first = layout.tracks.front();
    SentSound sent(tracks, plan.tracks);
    const Lba begin = tracks.front().soundInPause ? first.pause.value_or(first.start) : first.start;
    return CompareRange(comparison, sent, begin, layout.leadOut, watch, all);
  }
  DiscComparison compared;
  for (std::size_t i = 0; i < tracks.size() && compared.outcome == Outcome::Success; ++i) {
    const std::uint32_t sectors = SectorsOf(tracks[i].bytes);
    const PlannedTrack plan{0, tracks[i].bytes, std::uint64_t{sectors} * kAudioSectorBytes - tracks[i].bytes};
    SentSound sent(tracks.subspan(i, 1), {&plan, 1});
    const Lba start = layout.tracks[i].start;
    compared = CompareRange(comparison, sent, start, start + static_cast<std::int32_t>(sectors), watch, all);
  }
  return compared;
}

}  // namespace ts5::disc
