// What a score file cannot hold of a document, item by item.
#include <algorithm>
#include <cmath>

#include "converters/score_formats.h"
#include "converters/texts.h"
#include "converters/xml_signs.h"
#include "platform/base/text.h"
#include "score/score_bars.h"
#include "score/score_parts.h"

namespace ts5::converters {
namespace {

// Where something stands.
struct Place {
  int bar = -1;
  int staff = -1;
};

bool Fits(const std::string& text) {
  return Utf8FromWindows1252(Windows1252FromUtf8(text)) == text;
}

class Reporter {
 public:
  Reporter(const ScoreDocument& document, LossReport& losses, const CancelCheck& cancelled)
      : document_(document), losses_(losses), cancelled_(cancelled) {}

  void Report() {
    ReportWhole();
    ReportParts();
    const ScoreMusic music = ReadMusic(document_, cancelled_);
    losses_.NamePlaces(document_, music);
    ReportTempos(music);
    for (std::size_t staff = 0; staff < music.voices.size(); ++staff) {
      for (const auto& voice : music.voices[staff]) {
        if (cancelled_ && cancelled_()) return;
        for (const ScoreEvent& event : voice)
          ReportGroup(*event.item, {static_cast<int>(event.bar), static_cast<int>(staff)});
      }
      for (const ScoreChange& change : music.changes[staff]) ReportChange(change, music, staff);
    }
    for (std::size_t i = 0; i < music.bars.size(); ++i) {
      const ScoreBar& bar = music.bars[i];
      if (!bar.lineStyle.empty()) Lose(texts::LossBarLine, {static_cast<int>(i), -1}, bar.lineStyle);
      if (bar.passes == 1 || bar.passes > kMostTimesInWords)
        Lose(texts::LossRepeats, {static_cast<int>(i), -1});
    }
    if (stems_ > 0) losses_.Add(texts::LossStem, -1, -1, stems_);
    if (placements_ > 0) losses_.Add(texts::LossPlacement, -1, -1, placements_);
  }

 private:
  void Lose(TextId kind, Place place, std::string detail = {}) {
    losses_.Add(kind, place.bar, place.staff, 1, std::move(detail));
  }

  void ReportWhole() {
    const ScoreCredits& credits = document_.credits;
    for (const std::string* text : {&credits.title, &credits.movement, &credits.lyricist, &credits.arranger,
                                    &credits.rights, &credits.source}) {
      if (document_.comment.find(*text) == std::string::npos) Lose(texts::LossCredits, {}, *text);
    }
    for (const std::string* text : {&document_.author, &document_.keywords, &document_.comment}) {
      if (!Fits(*text)) Lose(texts::LossCharacters, {}, *text);
    }
    for (std::size_t i = 0; i < document_.staves.size(); ++i) {
      if (!Fits(document_.staves[i].name)) Lose(texts::LossCharacters, {}, document_.staves[i].name);
    }
    ReportNumbers();
  }

  // Of a part a score file has the names of its staves.
  void ReportParts() {
    int staff = 0;
    for (const ScorePart& part : document_.parts) {
      if (!part.abbreviation.empty()) Lose(texts::LossName, {-1, staff}, part.abbreviation);
      if (!part.instrument.empty()) Lose(texts::LossInstrument, {-1, staff}, part.instrument);
      if (!part.group.empty()) Lose(texts::LossGroup, {-1, staff}, part.group);
      staff += static_cast<int>(part.staves);
    }
    ScoreDocument bare;
    bare.staves = document_.staves;
    const auto found = PartsOf(bare);
    const auto staves = [](const ScorePart& part) { return part.staves; };
    if (!document_.parts.empty() && !std::ranges::equal(found, document_.parts, {}, staves, staves))
      Lose(texts::LossParts, {});
  }

  // Bars are counted from 1, an upbeat is 0.
  void ReportNumbers() {
    if (document_.bars.empty()) return;
    const auto pages = std::ranges::count(document_.bars, true, &ScoreBarLabel::newPage);
    if (pages > 0) losses_.Add(texts::LossPage, -1, -1, static_cast<unsigned>(pages));
    std::int64_t number = document_.bars[0].number == "0" ? 0 : 1;
    for (const ScoreBarLabel& label : document_.bars) {
      if (!label.number.empty() && label.number != std::to_string(number))
        return Lose(texts::LossNumbers, {});
      ++number;
    }
  }

  // A tempo is whole and begins with a system.
  void ReportTempos(const ScoreMusic& music) {
    for (const ScoreTempo& tempo : music.tempos) {
      const std::uint32_t bar = BarAt(music, tempo.at);
      const Place place{static_cast<int>(bar), -1};
      const bool atSystem = bar < music.bars.size() && music.bars[bar].start == tempo.at &&
                            (bar == 0 || music.bars[bar].system != music.bars[bar - 1].system);
      if (!atSystem) {
        Lose(texts::LossTempo, place);
      } else if (std::abs(tempo.quarters - std::round(tempo.quarters)) > 1e-6) {
        Lose(texts::LossTempoRounded, place);
      }
    }
  }

  void ReportChange(const ScoreChange& change, const ScoreMusic& music, std::size_t staff) {
    const ScoreItem& item = *change.item;
    if (item.style.empty()) return;
    const Place place{static_cast<int>(BarAt(music, change.at)), static_cast<int>(staff)};
    // Times and modes are those of the first staff nearly always.
    if (item.Is(ObjectKind::Time) && staff == 0) Lose(texts::LossTimeForm, place, item.style);
    if (item.Is(ObjectKind::Clef)) Lose(texts::LossClef, place, item.style);
    if (item.Is(ObjectKind::Key) && staff == 0) Lose(texts::LossMode, place, item.style);
  }

  void ReportGroup(const ScoreItem& item, Place place) {
    if (item.stem != 0) ++stems_;
    if (item.ratio.actual != 0) Lose(texts::LossTuplet, place);
    if (item.courtesy != 0) Lose(texts::LossCourtesy, place);
    if (!item.noteTies.empty()) Lose(texts::LossNoteTie, place);
    for (const LyricItem& lyric : item.lyrics) {
      if (!Fits(lyric.syllable)) Lose(texts::LossCharacters, place, lyric.syllable);
    }
    for (const DrawingItem& drawing : item.drawings) ReportDrawing(drawing, place);
  }

  void ReportDrawing(const DrawingItem& drawing, Place place) {
    for (const DrawingItem& nested : drawing.nested) ReportDrawing(nested, place);
    if (drawing.sign == "tempo") return;
    if (drawing.placement != 0 && !IsBeyondScoreFile(drawing)) ++placements_;
    if (drawing.sign == "dynamics") {
      Lose(texts::LossDynamic, place, drawing.words);
    } else if (IsBeyondScoreFile(drawing)) {
      Lose(texts::LossSign, place, drawing.sign);
    } else if (!drawing.offset.IsZero()) {
      Lose(texts::LossMoved, place);
    }
    if (drawing.Is(DrawingKind::Text) && WordsOf(drawing).find('?') != std::string::npos &&
        drawing.words.find('?') == std::string::npos && !drawing.words.empty() && !Fits(drawing.words))
      Lose(texts::LossCharacters, place, drawing.words);
  }

  const ScoreDocument& document_;
  LossReport& losses_;
  const CancelCheck& cancelled_;
  unsigned stems_ = 0;
  unsigned placements_ = 0;
};

}  // namespace

void ReportScoreFileLosses(const ScoreDocument& document, LossReport& losses, const CancelCheck& cancelled) {
  Reporter(document, losses, cancelled).Report();
}

}  // namespace ts5::converters
