#include "disc/pause_search.h"

namespace ts5::disc {
namespace {

// Silent as long as it lives.
class Mute {
 public:
  explicit Mute(CdDrive& drive) : drive_(drive) { drive_.SetAudioMute(true); }
  ~Mute() { drive_.SetAudioMute(false); }
  Mute(const Mute&) = delete;
  Mute& operator=(const Mute&) = delete;

 private:
  CdDrive& drive_;
};

}  // namespace

std::optional<std::uint32_t> FindPause(CdDrive& drive, const DiscToc& toc, int track,
                                       const CancelCheck& cancelled) {
  const TocTrack* const entry = toc.Find(track);
  const TocTrack* const before = toc.Find(track - 1);
  if (entry == nullptr || !entry->audio) return std::nullopt;
  if (before == nullptr || !before->audio) return 0;
  const Mute mute(drive);
  // low is no part of the pause, high is behind its start.
  auto low = static_cast<std::int32_t>(before->start);
  const auto start = static_cast<std::int32_t>(entry->start);
  std::int32_t high = start;
  while (high - low > 1) {
    if (cancelled && cancelled()) return std::nullopt;
    const std::int32_t middle = low + (high - low) / 2;
    const auto position = drive.PlayAndPosition(Lba{middle});
    if (!position) return std::nullopt;
    const bool inPause = position->track == track && position->index == 0;
    (inPause ? high : low) = middle;
  }
  const std::int32_t pause = start - high;
  // A pause as long as the whole range is a drive that says something else.
  return pause < start - static_cast<std::int32_t>(before->start) - 1 ? static_cast<std::uint32_t>(pause) : 0;
}

}  // namespace ts5::disc
