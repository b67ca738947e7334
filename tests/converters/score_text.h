// The music of a document as lines of text, for what must be the same in another format.
#pragma once

#include <string>

#include "platform/base/text.h"
#include "score/score_bars.h"
#include "support/test_data.h"

namespace ts5::test {

inline Bytes DataFile(const std::string& name) {
  const std::string content = Content(DataPath(name));
  return {content.begin(), content.end()};
}

inline std::string Place(Fraction place) {
  return std::to_string(place.Numerator()) + "/" + std::to_string(place.Denominator());
}

inline std::string DrawingText(const DrawingItem& drawing) {
  std::string text = Format("{%d", drawing.kind);
  if (drawing.span != 0) text += Format(" %d", drawing.span);
  if (!drawing.text.empty()) text += " '" + Utf8FromWindows1252(AsText(drawing.text)) + "'";
  if (!drawing.sign.empty()) text += " " + drawing.sign + "=" + drawing.words;
  return text + "}";
}

// The clefs of each staff: place, form, line and octave.
inline std::string ClefText(const ScoreDocument& document) {
  std::string text;
  for (const auto& changes : ReadMusic(document).changes) {
    for (const ScoreChange& change : changes) {
      const ScoreClef clef = change.item->clef;
      if (change.item->Is(ObjectKind::Clef))
        text += Place(change.at) + Format(" %d/%d/%d ", clef.form, clef.line, clef.octave);
    }
    text += "\n";
  }
  return text;
}

// Rests that only fill time are left out. spelled: with the notes' names, else with their keys alone.
inline std::string MusicText(const ScoreDocument& document, bool marks = true) {
  const ScoreMusic music = ReadMusic(document);
  std::string text;
  for (const ScoreBar& bar : music.bars) {
    text += Format("bar %s %s %d/%d%s%s", bar.number, Place(bar.length), bar.time.numerator,
                   1 << bar.time.power, bar.repeatStart ? " |:" : "", bar.repeatEnd ? " :|" : "");
    if (bar.line != 0) text += Format(" line %d", bar.line);
    if (bar.endings != 0) text += Format(" endings %x", bar.endings);
    if (bar.jumps != 0) text += Format(" jumps %x", bar.jumps);
    text += "\n";
  }
  for (const ScoreTempo& tempo : music.tempos)
    text += "tempo " + Place(tempo.at) + Format(" %.2f\n", tempo.quarters);
  for (std::size_t staff = 0; staff < music.voices.size(); ++staff) {
    text += Format("staff %s %d\n", document.staves[staff].name, document.staves[staff].sound);
    for (const auto& voice : music.voices[staff]) {
      for (const ScoreEvent& event : voice) {
        if (event.IsGap() && event.item->drawings.empty()) continue;
        const ScoreGroup& group = event.item->group;
        text += Place(event.start) + " +" + Place(event.length) + (event.IsRest() ? " rest" : "");
        if (event.item->IsGrace()) text += " grace";
        for (const std::uint8_t key : SoundingKeys(event, document.staves[staff])) text += Format(" %d", key);
        if (!event.IsRest())
          text += Format(" ties %d%d", group.tieFromBefore ? 1 : 0, group.tieOnward ? 1 : 0);
        if (group.articulation != 0) text += Format(" art %d", group.articulation);
        for (const LyricItem& lyric : event.item->lyrics) text += " \"" + lyric.syllable + "\"";
        if (marks) {
          for (const DrawingItem& drawing : event.item->drawings) text += " " + DrawingText(drawing);
        }
        text += "\n";
      }
    }
  }
  return text;
}

}  // namespace ts5::test
