// A score and what came back of it: the share of notes, lengths, bars, voices, keys and letters that are the
// same.
#pragma once

#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "midi/midi_events.h"
#include "midi/midi_file.h"
#include "midi/track_writer.h"
#include "score/plain_midi.h"
#include "score/score_bars.h"
#include "score/score_document.h"

namespace ts5::test {

struct WrittenNote {
  std::int64_t start = 0;  // 1/13440 of a whole note
  std::int64_t length = 0;
  std::uint8_t key = 0;
  std::size_t line = 0;  // staff and voice
  SpelledPitch pitch;
  bool spelled = true;  // not a drum, not transposed
};

inline std::vector<WrittenNote> NotesOf(const ScoreDocument& score, const ScoreMusic& music) {
  constexpr std::int64_t kWhole = 13440;
  std::vector<WrittenNote> notes;
  for (std::size_t staff = 0; staff < music.voices.size(); ++staff) {
    const StaffLayout& layout = score.staves[staff];
    for (std::size_t voice = 0; voice < music.voices[staff].size(); ++voice) {
      std::map<std::uint8_t, std::size_t> open;  // tied onward: key -> note
      for (const ScoreEvent& event : music.voices[staff][voice]) {
        const ScoreItem& item = *event.item;
        if (event.IsRest() || item.IsGrace() || (item.group.flags & kGroupSilent) != 0) continue;
        const auto keys = SoundingKeys(event, layout);
        std::map<std::uint8_t, std::size_t> onward;
        for (std::size_t i = 0; i < keys.size(); ++i) {
          const bool each = i < item.noteTies.size();
          const bool ties = each ? (item.noteTies[i] & kTieOnward) != 0 : item.group.tieOnward;
          const auto tied = open.find(keys[i]);
          std::size_t index = notes.size();
          const std::int64_t length = event.length.In(kWhole);
          if (tied != open.end()) {
            index = tied->second;
            notes[index].length += length;
          } else {
            notes.push_back({event.start.In(kWhole), length, keys[i], staff * 16 + voice,
                             PitchOf(item.group.notes[i], event.clef, event.key),
                             !layout.usesNoteMap && layout.transpose == 0});
          }
          if (ties) onward[keys[i]] = index;
        }
        open = std::move(onward);
      }
    }
  }
  return notes;
}

struct Share {
  std::size_t same = 0;
  std::size_t all = 0;
  [[nodiscard]] double PerCent() const {
    return all == 0 ? 100 : 100.0 * static_cast<double>(same) / static_cast<double>(all);
  }
  void Add(bool yes) {
    ++all;
    same += yes ? 1 : 0;
  }
  Share& operator+=(const Share& other) {
    same += other.same;
    all += other.all;
    return *this;
  }
};
struct Quality {
  Share notes, precise, lengths, bars, voices, keys, letters;
  Quality& operator+=(const Quality& other) {
    notes += other.notes;
    precise += other.precise;
    lengths += other.lengths;
    bars += other.bars;
    voices += other.voices;
    keys += other.keys;
    letters += other.letters;
    return *this;
  }
};

inline std::map<std::int64_t, std::pair<std::int64_t, int>> BarsOf(const ScoreDocument& score,
                                                                   const ScoreMusic& music) {
  std::map<std::int64_t, std::pair<std::int64_t, int>> bars;  // start -> length, key
  std::size_t next = 0;
  int key = 0;
  // Of the first staff that sounds as it is written.
  std::size_t staff = 0;
  while (staff + 1 < score.staves.size() && score.staves[staff].transpose % 12 != 0) ++staff;
  const auto& changes = music.changes.at(staff);
  for (const ScoreBar& bar : music.bars) {
    for (; next < changes.size() && changes[next].at < bar.start + bar.length; ++next) {
      if (changes[next].item->Is(ObjectKind::Key)) key = changes[next].item->key;
    }
    bars[bar.start.In(13440)] = {bar.length.In(13440), key};
  }
  return bars;
}

inline Quality Compare(const ScoreDocument& original, const ScoreDocument& made) {
  const ScoreMusic before = ReadMusic(original);
  const ScoreMusic after = ReadMusic(made);
  const auto wanted = NotesOf(original, before);
  auto found = NotesOf(made, after);
  std::multimap<std::pair<std::int64_t, std::uint8_t>, std::size_t> byPlace;
  for (std::size_t i = 0; i < found.size(); ++i) byPlace.emplace(std::pair(found[i].start, found[i].key), i);
  Quality quality;
  std::map<std::size_t, std::pair<std::int64_t, std::size_t>>
      lastOfLine;  // original line -> start, made line
  for (const WrittenNote& note : wanted) {
    auto [first, last] = byPlace.equal_range({note.start, note.key});
    quality.notes.Add(first != last);
    if (first == last) continue;
    auto best = first;
    for (auto it = first; it != last; ++it) {
      if (found[it->second].length == note.length) best = it;
    }
    const WrittenNote& match = found[best->second];
    quality.lengths.Add(match.length == note.length);
    if (note.spelled) quality.letters.Add(match.pitch == note.pitch);
    const auto before_ = lastOfLine.find(note.line);
    if (before_ != lastOfLine.end() && before_->second.first != note.start)
      quality.voices.Add(before_->second.second == match.line);
    lastOfLine[note.line] = {note.start, match.line};
    byPlace.erase(best);
  }
  quality.precise = {found.size() - byPlace.size(), found.size()};
  const auto madeBars = BarsOf(made, after);
  for (const auto& [start, bar] : BarsOf(original, before)) {
    const auto same = madeBars.find(start);
    quality.bars.Add(same != madeBars.end() && same->second.first == bar.first);
    quality.keys.Add(same != madeBars.end() && same->second.second == bar.second);
  }
  return quality;
}

// The same music as a person plays it: onsets that differ by so many seconds, lengths that vary; keys and
// names of the file left out when asked.
struct HumanTouch {
  double seconds = 0;
  bool lengths = false;
  bool withoutKeys = false;
  unsigned seed = 1;
};
inline Bytes Play(const ScoreDocument& score, double tempo, HumanTouch touch) {
  PlainMidiOptions options;
  options.repeats = false;
  const Bytes plain = *PlainMidi(score, options);
  std::mt19937 random(touch.seed);
  std::normal_distribution<double> away(0, touch.seconds * tempo / 60 * 480);
  std::uniform_real_distribution<double> part(0.75, 1.02);
  const auto tracks = *MidiTracks(plain, DetectMidiKind(plain).header.trackCount);
  ByteWriter out;
  WriteMidiHeader(out, 1, static_cast<std::uint16_t>(tracks.size()), 480);
  for (const ByteView track : tracks) {
    std::vector<std::pair<std::int64_t, Bytes>> events;
    std::map<std::pair<int, int>, std::pair<std::int64_t, std::size_t>> open;  // start as written, event
    MidiEventCursor cursor(track);
    for (MidiEvent event; cursor.Next(event);) {
      if (touch.withoutKeys && event.IsMeta(0x59)) continue;
      auto tick = static_cast<std::int64_t>(event.tick);
      const std::pair key(event.Channel(), event.data1);
      Bytes bytes(event.encoded.begin(), event.encoded.end());
      if (event.IsChannelMessage()) {
        bytes = {event.status, event.data1};
        if (ChannelDataSize(event.status) == 2) bytes.push_back(event.data2);
      }
      if (event.IsNoteOn()) {
        if (touch.seconds > 0)
          tick = std::max<std::int64_t>(0, tick + static_cast<std::int64_t>(away(random)));
        open[key] = {static_cast<std::int64_t>(event.tick), events.size()};
      } else if (event.IsNoteOff() && open.contains(key)) {
        const auto [start, index] = open[key];
        const double length =
            static_cast<double>(tick - start) / 0.95 * (touch.lengths ? part(random) : 0.95);
        tick = std::max(events[index].first + 1, events[index].first + static_cast<std::int64_t>(length));
      }
      events.emplace_back(tick, std::move(bytes));
    }
    std::ranges::stable_sort(events, {}, [](const auto& event) {
      return std::pair(event.first,
                       event.second.size() == 3 && event.second[0] >> 4 == 9 && event.second[2] > 0);
    });
    MidiTrackWriter writer(out);
    writer.Begin();
    for (const auto& [tick, bytes] : events) {
      (void)writer.Delta(static_cast<std::uint64_t>(tick));
      out.Append(bytes);
    }
    (void)writer.End(
        std::max(cursor.Tick(), events.empty() ? 0 : static_cast<std::uint64_t>(events.back().first)));
  }
  return out.Release();
}

}  // namespace ts5::test
