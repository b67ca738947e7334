#include "score/accidentals.h"

#include <algorithm>
#include <map>
#include <tuple>

#include "score/score_builder.h"

namespace ts5 {
namespace {

struct EventAt {
  std::size_t voice = 0;
  std::size_t event = 0;
};

// Those with notes, in the order in which a reader meets them.
std::vector<EventAt> InOrder(const std::vector<std::vector<ScoreEvent>>& voices) {
  std::vector<EventAt> order;
  for (std::size_t v = 0; v < voices.size(); ++v) {
    for (std::size_t i = 0; i < voices[v].size(); ++i) {
      if (!voices[v][i].IsRest()) order.push_back({v, i});
    }
  }
  std::ranges::stable_sort(order, {}, [&voices](const EventAt& at) {
    const ScoreEvent& event = voices[at.voice][at.event];
    return std::tuple(event.start, !event.length.IsZero());
  });
  return order;
}

bool IsTiedHere(const ScoreItem& item, std::size_t note) {
  if (note < item.noteTies.size()) return (item.noteTies[note] & kTieFromBefore) != 0;
  return item.group.tieFromBefore;
}

}  // namespace

AccidentalBits NeededAccidentals(const ScoreMusic& music, std::size_t staff) {
  const auto& voices = music.voices[staff];
  AccidentalBits bits;
  for (const auto& voice : voices) bits.emplace_back(voice.size());
  std::map<std::pair<int, int>, int> altered;  // by step and octave
  std::uint32_t bar = UINT32_MAX;
  for (const EventAt& at : InOrder(voices)) {
    const ScoreEvent& event = voices[at.voice][at.event];
    if (event.bar != bar) altered.clear();
    bar = event.bar;
    const auto& notes = event.item->group.notes;
    for (std::size_t n = 0; n < notes.size() && n < kMaxChordKeys; ++n) {
      if (IsTiedHere(*event.item, n)) continue;
      const SpelledPitch pitch = PitchOf(notes[n], event.clef, event.key);
      const std::pair<int, int> place(pitch.step, pitch.octave);
      const auto known = altered.try_emplace(place, KeyAlter(pitch.step, event.key)).first;
      if (known->second == pitch.alter) continue;
      known->second = pitch.alter;
      bits[at.voice][at.event] |= 1U << n;
    }
  }
  return bits;
}

void KeepCourtesyAccidentals(ScoreDocument& document, const CancelCheck& cancelled) {
  const ScoreMusic music = ReadMusic(document, cancelled);
  for (std::size_t staff = 0; staff < music.voices.size(); ++staff) {
    if (cancelled && cancelled()) return;
    const AccidentalBits needed = NeededAccidentals(music, staff);
    for (std::size_t v = 0; v < needed.size(); ++v) {
      for (std::size_t i = 0; i < needed[v].size(); ++i) {
        const ScoreEvent& event = music.voices[staff][v][i];
        if (event.item->courtesy != 0) ItemOf(document, staff, v, event).courtesy &= ~needed[v][i];
      }
    }
  }
}

}  // namespace ts5
