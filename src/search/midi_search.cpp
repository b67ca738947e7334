#include "search/midi_search.h"

#include <array>
#include <vector>

#include "midi/conductor.h"
#include "midi/midi_file.h"
#include "platform/files/files.h"
#include "platform/files/input_file.h"
#include "search/track_matcher.h"

namespace ts5 {
namespace {

std::size_t TracksToRead(const MidiFileHeader& header, bool firstTrackOnly) {
  if (header.trackCount == 1) return 1;
  return firstTrackOnly ? 2 : header.trackCount;
}

// One file on its way through the search.
class FileSearcher {
 public:
  FileSearcher(const MidiFileHeader& header, const std::string& path, const MelodyQuery& query,
               const HitSink& sink, const CancelCheck& cancelled)
      : header_(header), path_(path), query_(query), sink_(sink), cancelled_(cancelled) {
    for (std::size_t i = 0; i < query.Count(); ++i)
      melodies_.push_back(PrepareMelody(query.Melody(i), header.division));
  }

  SearchOutcome Search(ByteView midi) {
    const bool several = header_.trackCount >= 2;
    MidiTrackReader tracks(midi, TracksToRead(header_, query_.options.firstTrackOnly));
    ByteView track;
    for (std::int32_t index = 0; tracks.Next(track); ++index) {
      if (index == 0) {
        if (header_.trackCount == 1 && IsWithoutHits(track)) continue;
        auto scanned = ScanConductorTrack(track, header_.division, cancelled_);
        if (!scanned) return {scanned.error(), 0};
        conductor_ = std::move(*scanned);
        if (several) continue;
      }
      const SearchOutcome found = SearchMidiTrack(track, several ? index - 1 : 0, Context(sink_));
      outcome_.hits += found.hits;
      outcome_.code = found.code;
      if (Failed(outcome_.code)) return outcome_;
    }
    if (tracks.HasFault()) outcome_.code = Outcome::DamagedMidi;
    return outcome_;
  }

 private:
  // Signatures and tempo are wanted only for hits. Where the only track of a file has none, as in most files
  // of a search, it need not be walked for them.
  bool IsWithoutHits(ByteView track) const {
    const HitSink stop = [](const SearchHit&) { return Outcome::Cancelled; };
    return SearchMidiTrack(track, 0, Context(stop)).whole;
  }

  TrackContext Context(const HitSink& sink) const {
    return {melodies_,
            query_.options,
            conductor_.signatures,
            header_.division,
            conductor_.tempo.value_or(kDefaultTempo),
            path_,
            sink,
            cancelled_};
  }

  const MidiFileHeader& header_;
  const std::string& path_;
  const MelodyQuery& query_;
  const HitSink& sink_;
  const CancelCheck& cancelled_;
  std::vector<PreparedMelody> melodies_;
  Conductor conductor_;
  SearchOutcome outcome_;
};

}  // namespace

SearchOutcome SearchMidiImage(ByteView file, const std::string& path, const MelodyQuery& query,
                              const HitSink& sink, const CancelCheck& cancelled) {
  const MidiFileInfo info = DetectMidiKind(file);
  if (info.kind == MidiFileKind::None) return {Outcome::WrongFormat, 0};
  return FileSearcher(info.header, path, query, sink, cancelled).Search(MidiBytesOf(file));
}

SearchOutcome SearchMidiFile(const std::string& path, const MelodyQuery& query, const HitSink& sink,
                             const CancelCheck& cancelled) {
  const auto file = InputFile::Open(path);
  if (!file) return {Outcome::WrongFormat, 0};
  // A large file of another kind is not read for nothing.
  std::array<std::uint8_t, kMidiDetectionSize> beginning;
  const auto read = file->ReadAt(0, beginning);
  if (!read || DetectMidiKind(ByteView(beginning).first(*read)).kind == MidiFileKind::None)
    return {Outcome::WrongFormat, 0};
  const auto image = file->ReadAll(kMaxFileInMemory, cancelled);
  if (image) return SearchMidiImage(*image, path, query, sink, cancelled);
  return {image.error() == Outcome::ReadFailed ? Outcome::SourceFailed : image.error(), 0};
}

}  // namespace ts5
