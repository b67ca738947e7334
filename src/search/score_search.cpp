#include "search/score_search.h"

#include <algorithm>
#include <cmath>

#include "converters/score_formats.h"
#include "platform/files/input_file.h"
#include "search/score_items.h"
#include "search/track_matcher.h"

namespace ts5 {
namespace {

constexpr std::size_t kCancelEvery = 4096;                 // items
constexpr std::size_t kBeginning = std::size_t{64} << 10;  // in which every score says what it is

struct Element {
  std::uint8_t key = 0;  // 0 of a rest
  bool isRest = false;
  std::int32_t duration = 0;
};

std::vector<Element> Prepared(const std::vector<MelodyElement>& elements) {
  SearchMelody melody;
  melody.elements = elements;
  TrimMelodyRests(melody);
  std::vector<Element> prepared;
  prepared.reserve(melody.elements.size());
  for (const MelodyElement& element : melody.elements) {
    const bool isRest = IsRest(element);
    prepared.push_back({isRest ? std::uint8_t{0} : static_cast<std::uint8_t>(KeyOf(element.pitch)), isRest,
                        element.duration});
  }
  return prepared;
}

// One voice against the melody. The intervals are differences in 8 bits, with a rest as key 0.
class VoiceMatcher {
 public:
  VoiceMatcher(const std::vector<Element>& melody, const SearchOptions& options, const CancelCheck& cancelled)
      : melody_(melody), options_(options), cancelled_(cancelled) {}

  // The first and the last item of each place; send ends the search when it fails.
  template <typename Send>
  Outcome Search(const std::vector<ScoreSearchItem>& items, const Send& send) {
    std::size_t matched = 0;
    std::size_t first = 0;
    for (std::size_t i = 0; i < items.size();) {
      if (i % kCancelEvery == 0 && cancelled_ && cancelled_()) return Outcome::Cancelled;
      if (matched == 0 ? Starts(items[i]) : Follows(matched, items[i - 1], items[i])) {
        if (matched == 0) first = i;
        if (++matched == melody_.size()) {
          if (const Outcome sent = send(items[first], items[i]); Failed(sent)) return sent;
          matched = 0;
        }
        ++i;
      } else if (matched == 0) {
        ++i;
      } else {
        matched = 0;  // the item may be a first one
      }
    }
    return Outcome::Success;
  }

 private:
  bool Starts(const ScoreSearchItem& item) {
    if (item.isRest || !FirstNoteMatches(options_.pitch, melody_[0].key, item.lastKey)) return false;
    const bool relative = options_.rhythm == RhythmMode::Relative;
    factor_ = relative ? static_cast<float>(melody_[0].duration) / static_cast<float>(item.duration) : 1.0F;
    return RhythmFits(melody_[0], item);
  }

  bool Follows(std::size_t matched, const ScoreSearchItem& before, const ScoreSearchItem& item) const {
    const Element& element = melody_[matched];
    const bool rests = element.isRest && item.isRest;
    if (!rests && options_.pitch != PitchMode::Ignore) {
      const auto wanted = static_cast<std::uint8_t>(element.key - melody_[matched - 1].key);
      if (wanted != static_cast<std::uint8_t>(item.firstKey - before.firstKey)) return false;
    }
    return RhythmFits(element, item);
  }

  // An item without duration gives a factor that is no number; nothing equals that.
  bool RhythmFits(const Element& element, const ScoreSearchItem& item) const {
    if (options_.rhythm == RhythmMode::Any) return true;
    return std::trunc(static_cast<double>(item.duration) * double{factor_}) == element.duration;
  }

  const std::vector<Element>& melody_;
  const SearchOptions& options_;
  const CancelCheck& cancelled_;
  float factor_ = 1.0F;
};

SearchOutcome SearchLines(const std::vector<ScoreLine>& lines, const std::vector<StaffLayout>& staves,
                          const std::string& path, const MelodyQuery& query, const HitSink& sink,
                          const CancelCheck& cancelled) {
  std::vector<std::vector<Element>> melodies;
  melodies.reserve(query.Count());
  for (std::size_t i = 0; i < query.Count(); ++i) melodies.push_back(Prepared(query.Melody(i)));
  SearchOutcome outcome;
  SearchHit hit;
  hit.file = path;
  const auto send = [&](const ScoreSearchItem& first, const ScoreSearchItem& last) {
    hit.firstSystem = first.system;
    hit.lastSystem = last.system;
    hit.firstObject = first.object;
    hit.lastObject = last.object;
    hit.verticalPosition = first.verticalPosition;
    hit.bar = first.bar - 1;
    hit.time = first.beat - 1;
    const Outcome sent = sink(hit);
    if (Succeeded(sent)) ++outcome.hits;
    return sent;
  };
  const std::size_t count =
      query.options.firstTrackOnly ? std::min<std::size_t>(lines.size(), 1) : lines.size();
  for (std::size_t line = 0; line < count; ++line) {
    if (staves[line].usesNoteMap && !query.options.drumTrack) continue;
    hit.track = static_cast<std::int32_t>(line);
    for (std::size_t voice = 0; voice < kMaxVoices; ++voice) {
      hit.voice = static_cast<std::int32_t>(voice);
      for (std::size_t i = 0; i < melodies.size(); ++i) {
        if (melodies[i].empty()) continue;
        hit.melody = static_cast<std::int32_t>(i);
        outcome.code = VoiceMatcher(melodies[i], query.options, cancelled).Search(lines[line][voice], send);
        if (Failed(outcome.code)) return outcome;
      }
    }
  }
  return outcome;
}

SearchOutcome SearchBinaryScore(ByteView file, const std::string& path, const MelodyQuery& query,
                                const HitSink& sink, const CancelCheck& cancelled) {
  const auto info = ReadScoreInfo(file, cancelled);
  if (!info && info.error() == Outcome::Cancelled) return {Outcome::Cancelled, 0};
  if (!info) return {info.error() == Outcome::WrongFormat ? Outcome::WrongFormat : Outcome::SourceFailed, 0};
  if (!info->IsCurrent()) return {Outcome::WrongFormat, 0};
  const auto lines = ReadScoreItems(file, *info, cancelled);
  if (!lines) return {lines.error() == Outcome::DamagedScore ? Outcome::SourceFailed : lines.error(), 0};
  return SearchLines(*lines, info->staves, path, query, sink, cancelled);
}

// What a reader says of a file, as the search counts it.
Outcome OfReader(Outcome code) {
  return code == Outcome::ReadFailed || code == Outcome::DamagedScore ? Outcome::SourceFailed : code;
}

}  // namespace

SearchOutcome SearchScoreImage(ByteView file, const std::string& path, const MelodyQuery& query,
                               const HitSink& sink, const CancelCheck& cancelled) {
  const auto format = converters::ScoreFormatOf(file);
  if (!format || *format == converters::ScoreFormat::Score)
    return SearchBinaryScore(file, path, query, sink, cancelled);
  const auto score = converters::ReadAnyScore(file, cancelled, converters::ScoreDetail::Notes);
  if (!score) return {OfReader(score.error().code), 0};
  const ScoreDocument& document = score->document;
  const auto lines = ReadScoreItems(document, cancelled);
  if (!lines) return {lines.error(), 0};
  return SearchLines(*lines, document.staves, path, query, sink, cancelled);
}

SearchOutcome SearchScoreFile(const std::string& path, const MelodyQuery& query, const HitSink& sink,
                              const CancelCheck& cancelled) {
  const auto file = InputFile::Open(path);
  if (!file) return {Outcome::SourceFailed, 0};
  // A large file of another kind is not read for nothing.
  if (file->Size() > kBeginning) {
    Bytes beginning(kBeginning);
    const auto read = file->ReadAt(0, beginning);
    if (!read) return {Outcome::SourceFailed, 0};
    beginning.resize(*read);
    if (!converters::ScoreFormatOf(beginning)) return {Outcome::WrongFormat, 0};
  }
  const auto bytes = file->ReadAll(kMaxScoreFile, cancelled);
  if (!bytes) return {OfReader(bytes.error()), 0};
  return SearchScoreImage(*bytes, path, query, sink, cancelled);
}

}  // namespace ts5
