#include "disc/copy_source.h"

#include <algorithm>

#include "disc/pause_search.h"
#include "disc/track_file.h"

namespace ts5::disc {
namespace {

Lba EndOfMusic(const DiscToc& toc) {
  Lba end{};
  for (const TocTrack& track : toc.tracks) {
    if (!track.audio) break;
    end = Lba{static_cast<std::int32_t>(track.start + track.sectors)};
  }
  return end;
}

}  // namespace

Lba SourceTrack::Begin(bool atOnce) const {
  return atOnce ? start - static_cast<std::int32_t>(pause) : start;
}

std::uint32_t SourceTrack::Sectors(bool atOnce) const {
  return static_cast<std::uint32_t>(std::max(end - Begin(atOnce), 0));
}

CopySource::CopySource(CdDrive& drive, const DiscToc& toc)
    : drive_(drive),
      toc_(toc),
      reader_(drive, EndOfMusic(toc)),
      catalogue_(drive.ReadCatalogue()),
      text_(drive.ReadCdText()) {
  for (const TocTrack& track : toc_.tracks) {
    if (!track.audio) break;
    SourceTrack one;
    one.number = track.number;
    one.control = track.control;
    one.start = Lba{static_cast<std::int32_t>(track.start)};
    one.isrc = drive_.ReadIsrc(track.number);
    one.text = text_.Track(track.number);
    tracks_.push_back(std::move(one));
  }
  // Before the first track are two seconds, and what else is hidden there.
  if (!tracks_.empty())
    tracks_.front().pause = static_cast<std::uint32_t>(kPregapSectors + tracks_.front().start.value);
  SettleEnds();
}

void CopySource::SettleEnds() {
  for (std::size_t i = 0; i < tracks_.size(); ++i)
    tracks_[i].end = i + 1 < tracks_.size() ? tracks_[i + 1].Begin(true) : EndOfMusic(toc_);
}

bool CopySource::FindPauseOf(std::size_t index, const CancelCheck& cancelled) {
  if (index == 0) return true;
  const auto pause = FindPause(drive_, toc_, tracks_[index].number, cancelled);
  tracks_[index].pause = pause.value_or(0);
  SettleEnds();
  return pause.has_value();
}

void CopySource::DropPauses() {
  for (std::size_t i = 1; i < tracks_.size(); ++i) tracks_[i].pause = 0;
  SettleEnds();
}

ProjectTrack CopySource::Project(std::size_t index, bool atOnce, SoundOpener sound) const {
  const SourceTrack& source = tracks_[index];
  ProjectTrack track;
  track.bytes = std::uint64_t{source.Sectors(atOnce)} * kAudioSectorBytes;
  track.pause = source.pause;
  track.isrc = source.isrc;
  track.text = source.text;
  track.soundInPause = atOnce;
  track.preEmphasis = (source.control & kControlPreEmphasis) != 0;
  track.open = std::move(sound);
  return track;
}

SoundOpener CopySource::Direct(std::size_t index, bool atOnce) {
  return [this, index, atOnce]() -> Result<std::unique_ptr<SoundSource>> {
    const SourceTrack& track = tracks_[index];
    return RangeSound(reader_, track.Begin(atOnce), track.Sectors(atOnce));
  };
}

}  // namespace ts5::disc
