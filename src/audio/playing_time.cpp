#include "audio/playing_time.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <ratio>

#include "audio/media_probe.h"
#include "frame/cd_tracks.h"
#include "frame/file_types.h"
#include "midi/midi_sequence.h"
#include "platform/files/files.h"

namespace ts5 {
namespace {

using Units = std::chrono::duration<std::uint64_t, std::ratio<1, 10'000'000>>;

std::uint64_t OfTrack(const std::string& entry) {
  const auto place = FindCdTrack(entry);
  const auto disc = place ? FindAudioCd(place->drive.path) : std::nullopt;
  if (!disc) return 0;
  const auto track = std::ranges::find(disc->tracks, place->number, &AudioCd::Track::number);
  return track == disc->tracks.end() ? 0 : Units(std::chrono::seconds(track->seconds)).count();
}

std::uint64_t OfMidiFile(const std::string& path) {
  const auto file = ReadFile(path, kMaxSequenceFile);
  const auto sequence = file ? MidiSequence::FromFile(*file) : Failure(file.error());
  return sequence ? std::chrono::duration_cast<Units>(sequence->Duration()).count() : 0;
}

}  // namespace

std::uint64_t PlayingTimeOf(const FileListEntry& entry) {
  if (entry.cdTrack) return OfTrack(entry.path);
  const FileTypeId type = FileTypeOf(entry.path);
  if (type == FileTypeId::Midi || type == FileTypeId::Sequencer) return OfMidiFile(entry.path);
  return static_cast<std::uint64_t>(std::llround(std::max(0.0, ProbeMedia(entry.path).seconds) * 1e7));
}

}  // namespace ts5
