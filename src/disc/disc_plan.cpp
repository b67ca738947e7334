#include "disc/disc_plan.h"

#include <algorithm>
#include <chrono>

#include "platform/base/clock.h"
#include "platform/base/text.h"
#include "platform/disc/mmc_replies.h"

namespace ts5::disc {
namespace {

constexpr std::uint32_t kRunOut = 2;  // sectors behind a track that is written alone

}  // namespace

std::uint8_t RecordingMode::Control() const {
  return static_cast<std::uint8_t>((copyProtected ? 0 : kControlCopyPermitted) |
                                   (preEmphasis ? kControlPreEmphasis : 0));
}

std::uint8_t ControlOf(const ProjectTrack& track, const RecordingMode& mode) {
  return static_cast<std::uint8_t>(mode.Control() | (track.preEmphasis ? kControlPreEmphasis : 0));
}

DiscPlan DiscPlan::AtOnce(std::span<const ProjectTrack> tracks, const RecordingMode& mode) {
  DiscPlan plan;
  plan.layout.catalogue = mode.catalogue;
  Lba group{};              // where the sound began that runs on without a border
  std::uint64_t bytes = 0;  // of it
  for (std::size_t i = 0; i < tracks.size(); ++i) {
    const ProjectTrack& project = tracks[i];
    const bool joined = mode.gapless && i > 0 && project.pause == 0;
    const std::uint32_t least = i == 0 ? static_cast<std::uint32_t>(kPregapSectors) : 0;
    // Before the first track may be more than its two seconds: a hidden one.
    const bool fixed = i == 0 && !project.soundInPause;
    const auto pause = static_cast<std::int32_t>(fixed ? least : std::max(project.pause, least));
    DiscTrack track;
    track.number = static_cast<int>(i) + 1;
    track.control = ControlOf(project, mode);
    track.isrc = project.isrc;
    if (joined) {
      track.start = group + static_cast<std::int32_t>(bytes / kAudioSectorBytes);
    } else {
      const Lba end = i == 0 ? Lba{-kPregapSectors} : group + static_cast<std::int32_t>(SectorsOf(bytes));
      if (pause > 0) track.pause = end;
      track.start = end + pause;
      group = track.start;
      bytes = 0;
    }
    const std::uint64_t inPause =
        project.soundInPause ? static_cast<std::uint64_t>(pause) * kAudioSectorBytes : 0;
    const std::uint64_t sound = project.bytes - std::min(inPause, project.bytes);
    bytes += sound;
    const bool goesOn = mode.gapless && i + 1 < tracks.size() && tracks[i + 1].pause == 0;
    const std::uint64_t padding = goesOn ? 0 : SectorsOf(bytes) * std::uint64_t{kAudioSectorBytes} - bytes;
    const auto silence = static_cast<std::uint32_t>(joined || project.soundInPause ? 0 : pause);
    plan.tracks.push_back({silence, project.bytes, padding});
    if (!plan.layout.tracks.empty()) {
      DiscTrack& before = plan.layout.tracks.back();
      before.sectors = static_cast<std::uint32_t>(track.pause.value_or(track.start) - before.start);
    }
    plan.layout.tracks.push_back(std::move(track));
  }
  plan.layout.leadOut = group + static_cast<std::int32_t>(SectorsOf(bytes));
  if (!plan.layout.tracks.empty()) {
    DiscTrack& last = plan.layout.tracks.back();
    last.sectors = static_cast<std::uint32_t>(plan.layout.leadOut - last.start);
  }
  return plan;
}

std::uint32_t ProjectSectors(std::span<const ProjectTrack> tracks, const RecordingMode& mode) {
  if (mode.atOnce) return static_cast<std::uint32_t>(DiscPlan::AtOnce(tracks, mode).layout.leadOut.value);
  std::uint32_t sectors = 0;
  for (const ProjectTrack& track : tracks)
    sectors +=
        SectorsOf(track.bytes) + (sectors == 0 ? 0 : kRunOut + static_cast<std::uint32_t>(kPregapSectors));
  return sectors;
}

std::uint64_t ProjectSeconds(std::span<const FileListEntry> entries, bool atOnce) {
  constexpr std::uint32_t kTrackPause = 2;
  std::uint64_t seconds = 0;
  for (std::size_t i = 0; i < entries.size(); ++i)
    seconds += entries[i].duration + (i == 0 ? 0 : atOnce ? entries[i].pause : kTrackPause);
  return seconds;
}

IsrcSeries IsrcSeries::OfNow() {
  using namespace std::chrono;
  const auto now = system_clock::now();
  const CivilTime time = LocalTime(now);
  const auto milliseconds = duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
  return {time.year, static_cast<std::uint32_t>(time.hour + time.minute + time.second + milliseconds)};
}

std::string IsrcSeries::Next() {
  constexpr std::uint32_t kSerials = 100'000;
  // After the year 2099 the code keeps its length: the last two digits go on.
  return Format("DEQLW%02i%05i", year_ % 100, serial_++ % kSerials);
}

}  // namespace ts5::disc
