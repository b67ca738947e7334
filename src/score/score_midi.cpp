#include "score/score_midi.h"

#include <utility>

#include "midi/midi_events.h"
#include "midi/track_writer.h"
#include "platform/files/input_file.h"
#include "platform/sound/midi_out.h"

namespace ts5 {
namespace {

constexpr std::uint16_t kFormat = 1;

class ScoreTracks : public ScoreSink {
 public:
  explicit ScoreTracks(std::size_t staves) : tracks_(staves + 1) {}

  void Message(std::size_t track, std::uint32_t message) override {
    ByteWriter& out = Flushed(track);
    for (std::size_t i = 0; i < ShortMidiLength(message); ++i)
      out.U8(static_cast<std::uint8_t>(message >> (8 * i)));
  }
  void Meta(std::size_t track, std::uint8_t type, ByteView data) override {
    ByteWriter& out = Flushed(track);
    out.U8(kMetaStatus);
    out.U8(type);
    (void)WriteVarLen(data.size(), out);
    out.Append(data);
  }
  void Advance(std::uint64_t ticks) override { now_ += ticks; }

  // From here on a track has music.
  void SetUpDone() { music_ = true; }

  [[nodiscard]] Bytes File() {
    std::uint16_t count = 0;
    for (std::size_t i = 0; i < tracks_.size(); ++i)
      count = static_cast<std::uint16_t>(count + (Written(i) ? 1 : 0));
    ByteWriter out;
    WriteMidiHeader(out, kFormat, count, kScoreTicksPerQuarter);
    for (std::size_t i = 0; i < tracks_.size(); ++i) {
      if (!Written(i)) continue;
      ByteWriter& track = Flushed(i);
      track.U8(kMetaStatus);
      track.U8(kMetaEndOfTrack);
      track.U8(0);
      out.Append(kTrackMagic);
      out.U32Be(static_cast<std::uint32_t>(track.Size()));
      out.Append(track.View());
    }
    return out.Release();
  }

 private:
  struct Track {
    ByteWriter out;
    std::uint64_t at = 0;  // of its last event
    bool music = false;
  };

  [[nodiscard]] bool Written(std::size_t track) const { return track == 0 || tracks_[track].music; }
  // The delta time of the next event is written; the engine keeps the whole time below what one can say.
  [[nodiscard]] ByteWriter& Flushed(std::size_t index) {
    Track& track = tracks_[index];
    (void)WriteVarLen(now_ - track.at, track.out);
    track.at = now_;
    track.music |= music_;
    return track.out;
  }

  std::vector<Track> tracks_;
  std::uint64_t now_ = 0;
  bool music_ = false;
};

}  // namespace

Result<OpenScore> OpenAndScan(Bytes file, PlaybackParameters& parameters, bool repeats,
                              const CancelCheck& cancelled) {
  OpenScore score;
  score.file = std::move(file);
  auto info = ReadScoreInfo(score.file, cancelled);
  if (!info) return Failure(info.error());
  if (!info->IsCurrent()) return Failure(Outcome::OldScore);
  score.info = std::move(*info);
  auto voices = CountVoices(score.file, score.info, cancelled);
  if (!voices) return Failure(voices.error());
  score.voices = std::move(*voices);
  AssignChannels(score.info, score.voices, parameters.channels);
  const auto scan = ScanScore(score.file, score.info, score.voices, parameters, repeats, cancelled);
  if (!scan) return Failure(scan.error());
  score.scan = *scan;
  return score;
}

Result<OpenScore> OpenAndScan(const std::string& path, PlaybackParameters& parameters, bool repeats,
                              const CancelCheck& cancelled) {
  const auto file = InputFile::Open(path);
  if (!file) return Failure(file.error());
  auto bytes = file->ReadAll(kMaxScoreFile, cancelled);
  if (!bytes) return Failure(bytes.error());
  auto image = ReadScoreImage(*std::move(bytes), cancelled);
  if (!image) return Failure(image.error());
  auto score = OpenAndScan(std::exchange(image->file, {}), parameters, repeats, cancelled);
  if (score) score->image = *std::move(image);
  return score;
}

Result<Bytes> ScoreToMidi(const OpenScore& score, const PlaybackParameters& parameters, ScoreOptions options,
                          const WorkWatch& watch) {
  options.leadIn = score.scan.leadIn;
  ScoreTracks tracks(score.info.staves.size());
  ScoreEngine engine(score.file, score.info, score.voices, parameters, std::move(options), &tracks);
  if (const Outcome begun = engine.Begin(); Failed(begun)) return Failure(begun);
  tracks.SetUpDone();
  WatchedWork work(watch, score.scan.ticks);
  while (!engine.AtEnd()) {
    if (!work.GoOn(engine.Ticks())) return Failure(Outcome::Cancelled);
    if (const Outcome outcome = engine.Step(); Failed(outcome)) return Failure(outcome);
  }
  engine.Finish();
  return tracks.File();
}

}  // namespace ts5
