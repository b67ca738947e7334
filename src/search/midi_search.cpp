#include "search/midi_search.h"

#include "midi/conductor.h"
#include "midi/midi_file.h"
#include "platform/files.h"
#include "search/track_matcher.h"

namespace ts5 {
namespace {

std::size_t TracksToRead(const MidiFileHeader& header, bool firstTrackOnly) {
  if (header.trackCount == 1) return 1;
  return firstTrackOnly ? 2 : header.trackCount;
}

}  // namespace

SearchOutcome SearchMidiImage(ByteView file, const std::string& path, const MelodyQuery& query,
                              const HitSink& sink, const CancelCheck& cancelled) {
  const MidiFileInfo info = DetectMidiKind(file);
  if (info.kind == MidiFileKind::None) return {Outcome::WrongFormat, 0};
  const std::uint16_t division = info.header.division;
  const std::vector<PreparedNote> melody = PrepareMelody(query.elements, division);
  const bool several = info.header.trackCount >= 2;

  SearchOutcome outcome;
  Conductor conductor;
  MidiTrackReader tracks(MidiBytesOf(file), TracksToRead(info.header, query.options.firstTrackOnly));
  ByteView track;
  for (std::int32_t index = 0; tracks.Next(track); ++index) {
    if (index == 0) {
      auto scanned = ScanConductorTrack(track, division);
      if (!scanned) return {scanned.error(), 0};
      conductor = std::move(*scanned);
      if (several) continue;
    }
    const std::uint32_t tempo = conductor.tempo.value_or(kDefaultTempo);
    const TrackContext context = {melody, query.options, conductor.signatures, division, tempo, path,
                                  sink,   cancelled};
    const SearchOutcome found = SearchMidiTrack(track, several ? index - 1 : 0, context);
    outcome.hits += found.hits;
    outcome.code = found.code;
    if (Failed(outcome.code)) return outcome;
  }
  if (tracks.HasFault()) outcome.code = Outcome::DamagedMidi;
  return outcome;
}

SearchOutcome SearchMidiFile(const std::string& path, const MelodyQuery& query, const HitSink& sink,
                             const CancelCheck& cancelled) {
  // A large file of another kind is not read for nothing.
  const auto info = ReadMidiFileHeader(path);
  if (!info) return {Outcome::WrongFormat, 0};
  const auto file = ReadFile(path);
  if (!file) return {file.error() == Outcome::OutOfMemory ? Outcome::OutOfMemory : Outcome::SourceFailed, 0};
  return SearchMidiImage(*file, path, query, sink, cancelled);
}

}  // namespace ts5
