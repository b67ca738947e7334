#include "preview/hit_line.h"

#include <algorithm>
#include <utility>

#include "converters/score_formats.h"
#include "converters/transcribe/transcription.h"
#include "midi/midi_file.h"
#include "midi/midi_sequence.h"
#include "platform/files/input_file.h"
#include "preview/staff_sketch.h"
#include "preview/system_places.h"
#include "score/score_info.h"
#include "search/hit_excerpt.h"

namespace ts5::preview {
namespace {

constexpr double kBarLine = 0.16;
constexpr double kRoom = 0.6;  // around what is drawn

}  // namespace

std::optional<std::size_t> BarOfHit(const ScoreMusic& music, const SearchHit& hit) {
  if (hit.track < 0 || std::cmp_greater_equal(hit.track, music.voices.size())) return std::nullopt;
  const auto& voices = music.voices[static_cast<std::size_t>(hit.track)];
  if (hit.voice < 0 || std::cmp_greater_equal(hit.voice, voices.size())) return std::nullopt;
  const auto& events = voices[static_cast<std::size_t>(hit.voice)];
  const auto found = std::ranges::find_if(events, [&](const ScoreEvent& event) {
    return std::cmp_equal(event.system, hit.firstSystem) && std::cmp_equal(event.object, hit.firstObject);
  });
  if (found == events.end()) return std::nullopt;
  return found->bar;
}

MusicLine DrawBars(const Engraving& engraving, std::size_t staff, std::size_t first, std::size_t last,
                   bool headed) {
  SystemPlaces places;
  places.first = first;
  places.last = last;
  double x = PrefixWidth(engraving, first);
  for (std::size_t bar = first; bar < last; ++bar) {
    places.bars.push_back(x);
    const BarWidth& width = engraving.bars[bar];
    x += width.width - (bar == first ? width.prefix : 0.0);
  }
  places.bars.push_back(x);
  places.right = x;
  StaffSketch drawn = SketchStaff(engraving, places, staff, headed);
  MusicLine line;
  line.sketch = std::move(drawn.sketch);
  for (std::size_t i = 1; i < places.bars.size(); ++i) {
    const double at = places.bars[i] - 0.1;
    line.sketch.lines.push_back({at, 0, at, 4, kBarLine});
  }
  line.width = x + kRoom;
  line.top = drawn.top - kRoom;
  line.bottom = drawn.bottom + kRoom;
  return line;
}

HitLines::HitLines() = default;
HitLines::~HitLines() = default;

Result<MusicLine> HitLines::Draw(const SearchHit& hit, std::size_t notes, const CancelCheck& cancelled) {
  const bool kept = score_ && path_ == hit.file;
  Bytes file;
  if (!kept) {
    const auto input = InputFile::Open(hit.file);
    if (!input) return Failure(input.error());
    auto bytes = input->ReadAll(std::max<std::uint64_t>(kMaxSequenceFile, kMaxScoreFile), cancelled);
    if (!bytes) return Failure(bytes.error());
    file = std::move(*bytes);
  }
  if (!kept && DetectMidiKind(file).kind != MidiFileKind::None) {
    const auto excerpt = MidiExcerpt(file, hit, notes, kBarsOfHit);
    if (!excerpt) return Failure(excerpt.error());
    auto written = transcribe::TranscribeMidi(*excerpt, {}, {.cancelled = cancelled});
    if (!written) return Failure(written.error());
    Engraving engraving;
    Engrave(std::move(written->score), engraving, cancelled);
    if (cancelled && cancelled()) return Failure(Outcome::Cancelled);
    if (engraving.slices.empty() || engraving.bars.empty()) return Failure(Outcome::DamagedMidi);
    // Number and tempo are not those of the place.
    return DrawBars(engraving, 0, 0, std::min(kBarsOfHit, engraving.bars.size()), false);
  }
  if (!kept) {
    auto score = converters::ReadAnyScore(file, cancelled);
    if (!score) return Failure(score.error().code);
    auto engraving = std::make_unique<Engraving>();
    Engrave(std::move(score->document), *engraving, cancelled);
    if (cancelled && cancelled()) return Failure(Outcome::Cancelled);
    score_ = std::move(engraving);
    path_ = hit.file;
  }
  const auto bar = BarOfHit(score_->music, hit);
  if (!bar || *bar >= score_->bars.size()) return Failure(Outcome::DamagedScore);
  // The last bar has its neighbour before it.
  const std::size_t first = score_->bars.size() - *bar<kBarsOfHit&& * bar> 0 ? *bar - 1 : *bar;
  return DrawBars(*score_, static_cast<std::size_t>(hit.track), first,
                  std::min(first + kBarsOfHit, score_->bars.size()), true);
}

}  // namespace ts5::preview
