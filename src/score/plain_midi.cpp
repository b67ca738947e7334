#include "score/plain_midi.h"

#include <algorithm>
#include <set>
#include <span>
#include <string>
#include <tuple>

#include "midi/midi_events.h"
#include "midi/track_writer.h"
#include "platform/base/text.h"
#include "score/play_order.h"
#include "score/score_bars.h"
#include "score/score_reader.h"

namespace ts5 {
namespace {

constexpr std::int64_t kTicksPerWhole = std::int64_t{kScoreTicksPerQuarter} * 4;
constexpr std::int64_t kGraceTicks = 30;
constexpr std::uint8_t kMetaTrackName = 0x03;
constexpr std::uint8_t kMetaLyric = 0x05;
constexpr std::uint8_t kMetaKeySignature = 0x59;
constexpr std::uint8_t kVolumeController = 7;
// A hairpin without a goal goes to the next mark: so many velocities up or down.
constexpr int kHairpinSteps = 16;
constexpr int kFinestPower = 6;  // a time signature of 64ths

std::int64_t Ticks(Fraction place) {
  return place.In(kTicksPerWhole);
}

// What a track holds. At one tick: ends of notes, then all that sets up, words, starts of notes.
struct Event {
  std::int64_t tick = 0;
  int rank = 0;
  Bytes bytes;
};
using Track = std::vector<Event>;

Event ChannelEvent(std::int64_t tick, int rank, std::initializer_list<int> bytes) {
  Event event{tick, rank, {}};
  for (const int byte : bytes) event.bytes.push_back(static_cast<std::uint8_t>(byte));
  return event;
}

Event MetaEvent(std::int64_t tick, std::uint8_t type, ByteView data) {
  ByteWriter out;
  out.U8(kMetaStatus);
  out.U8(type);
  (void)WriteVarLen(data.size(), out);
  out.Append(data);
  return {tick, 1, out.Release()};
}

[[nodiscard]] bool WriteTrack(Track track, std::int64_t end, ByteWriter& out) {
  std::ranges::stable_sort(track, {}, [](const Event& event) { return std::tuple(event.tick, event.rank); });
  MidiTrackWriter writer(out);
  writer.Begin();
  for (const Event& event : track) {
    if (!writer.Delta(static_cast<std::uint64_t>(event.tick))) return false;
    out.Append(event.bytes);
  }
  return writer.End(static_cast<std::uint64_t>(std::max(end, track.empty() ? 0 : track.back().tick)));
}

struct PlayedPlace {
  std::uint32_t bar = 0;
  std::uint32_t pass = 1;
  Fraction at;  // when it begins to sound, in whole notes
};

// The key signature of each bar: of the first staff that sounds as it is written.
std::vector<int> KeysOfBars(const ScoreDocument& score, const ScoreMusic& music) {
  const auto sounds = std::ranges::find_if(
      score.staves, [](const StaffLayout& staff) { return staff.transpose % 12 == 0 && !staff.usesNoteMap; });
  const std::size_t staff =
      sounds == score.staves.end() ? 0 : static_cast<std::size_t>(sounds - score.staves.begin());
  std::vector<int> keys(music.bars.size());
  int key = 0;
  std::size_t next = 0;
  for (std::size_t i = 0; i < music.bars.size(); ++i) {
    const Fraction end = music.bars[i].start + music.bars[i].length;
    for (; staff < music.changes.size() && next < music.changes[staff].size(); ++next) {
      const ScoreChange& change = music.changes[staff][next];
      if (change.at >= end) break;
      if (change.item->Is(ObjectKind::Key)) key = change.item->key;
    }
    keys[i] = key;
  }
  return keys;
}

class Conductor {
 public:
  Conductor(const ScoreDocument& score, const ScoreMusic& music)
      : music_(music), keys_(KeysOfBars(score, music)) {}

  Track Play(const std::vector<PlayedPlace>& places) {
    first_ = places.data();
    for (const PlayedPlace& place : places) {
      WriteSignatures(place);
      WriteTempos(place);
    }
    return std::move(track_);
  }

 private:
  // A bar that is not as long as its signature says has one of its own, so that the bars are counted as they
  // are written; the upbeat alone stands at the end of a full bar.
  static ScoreTimeSignature SignatureOf(const ScoreBar& bar, bool first) {
    if (first || !bar.time.Usable() || bar.length == BarLength(bar.time) || bar.length.IsZero())
      return bar.time;
    for (int power = bar.time.power; power <= kFinestPower; ++power) {
      const Fraction beats = bar.length * Fraction(std::int64_t{1} << power);
      if (beats.Denominator() == 1 && beats.Numerator() < 256)
        return {static_cast<std::uint16_t>(beats.Numerator()), static_cast<std::int16_t>(power)};
    }
    return bar.time;
  }

  void WriteSignatures(const PlayedPlace& place) {
    const bool first = &place == first_;
    const ScoreTimeSignature time = SignatureOf(music_.bars[place.bar], first);
    if (time != time_ && time.Usable()) {
      time_ = time;
      const Bytes data = {static_cast<std::uint8_t>(time.numerator), static_cast<std::uint8_t>(time.power),
                          static_cast<std::uint8_t>(96 >> time.power), 8};
      track_.push_back(MetaEvent(first ? 0 : Ticks(place.at), kMetaTimeSignature, data));
    }
    if (key_ != keys_[place.bar]) {
      key_ = keys_[place.bar];
      track_.push_back(MetaEvent(first ? 0 : Ticks(place.at), kMetaKeySignature,
                                 Bytes{static_cast<std::uint8_t>(key_), 0}));
    }
  }

  // The tempo in force where the bar begins, and those that change within it.
  void WriteTempos(const PlayedPlace& place) {
    const ScoreBar& bar = music_.bars[place.bar];
    auto change = std::ranges::upper_bound(music_.tempos, bar.start, {}, &ScoreTempo::at);
    if (change != music_.tempos.begin())
      WriteTempo(std::prev(change)->quarters, &place == first_ ? 0 : Ticks(place.at));
    for (; change != music_.tempos.end() && change->at < bar.start + bar.length; ++change)
      WriteTempo(change->quarters, Ticks(place.at + (change->at - bar.start)));
  }

  void WriteTempo(double quarters, std::int64_t tick) {
    if (quarters <= 0 || quarters == tempo_) return;
    tempo_ = quarters;
    const auto quarter =
        static_cast<std::uint32_t>(std::clamp(60'000'000.0 / quarters, 1.0, 16'777'215.0) + 0.5);
    const Bytes data = {static_cast<std::uint8_t>(quarter >> 16), static_cast<std::uint8_t>(quarter >> 8),
                        static_cast<std::uint8_t>(quarter)};
    track_.push_back(MetaEvent(tick, kMetaSetTempo, data));
  }

  const ScoreMusic& music_;
  std::vector<int> keys_;
  const PlayedPlace* first_ = nullptr;
  Track track_;
  ScoreTimeSignature time_{0, 0};
  int key_ = INT32_MIN;
  double tempo_ = 0;
};

// One voice after another of one staff.
class StaffPlayer {
 public:
  StaffPlayer(const ScoreMusic& music, std::size_t index, const StaffLayout& staff,
              const PlainMidiOptions& options)
      : music_(music), index_(index), staff_(staff), options_(options) {}

  void Play(std::size_t voice, const std::vector<PlayedPlace>& places, std::uint8_t channel) {
    const auto& events = music_.voices[index_][voice];
    channel_ = channel;
    open_.clear();
    loud_ = options_.playback.baseVelocity;
    ramp_ = {};
    grace_ = 0;
    for (const PlayedPlace& place : places) {
      const auto first = std::ranges::lower_bound(events, place.bar, {}, &ScoreEvent::bar);
      for (auto event = first; event != events.end() && event->bar == place.bar; ++event)
        PlayEvent(*event, place);
    }
    for (const Open& note : open_) End(note);
  }
  [[nodiscard]] Track Take() { return std::move(track_); }
  [[nodiscard]] bool HasNotes() const { return notes_; }

 private:
  struct Open {
    std::uint8_t key = 0;
    Fraction writtenEnd;         // where a tied note goes on
    std::int64_t start = 0;      // ticks
    std::int64_t lastStart = 0;  // of the last of the notes tied together
    std::int64_t end = 0;
    bool onward = false;
    std::uint8_t velocity = 0;
  };

  void PlayEvent(const ScoreEvent& event, const PlayedPlace& place) {
    const Fraction at = place.at + (event.start - music_.bars[place.bar].start);
    const std::int64_t tick = Ticks(at);
    Close(at);
    const ScoreItem& item = *event.item;
    const DrawnMarks marks = MarksOf(item);
    ApplyDynamics(marks, item.IsGrace());
    if (event.IsRest() || (item.group.flags & kGroupSilent) != 0) return;
    if ((item.group.flags & kGroupInvisible) != 0 && !options_.invisible) return;
    if (item.IsGrace() && item.group.graceForm == 0 && (item.group.flags & kGroupGrace) != 0) return;

    const std::vector<std::uint8_t> keys = SoundingKeys(event, staff_);
    const int velocity = std::clamp(loud_ + accent_, 1, 127);
    const std::int64_t start = tick + grace_;
    const std::int64_t end = item.IsGrace() ? start + kGraceTicks : Ticks(at + event.length);
    grace_ = item.IsGrace() && item.group.graceForm != 0 ? grace_ + kGraceTicks : 0;
    if (options_.lyrics) Sing(item, place.pass, start);
    for (std::size_t i = 0; i < keys.size(); ++i) {
      const bool each = i < item.noteTies.size();
      const bool onward = each ? (item.noteTies[i] & kTieOnward) != 0 : item.group.tieOnward;
      Strike({.key = keys[i],
              .writtenEnd = at + event.length,
              .start = start,
              .lastStart = start,
              .end = std::max(end, start + 1),
              .onward = onward,
              .velocity = static_cast<std::uint8_t>(velocity)},
             at);
    }
  }

  void Strike(const Open& note, Fraction at) {
    const auto tied = std::ranges::find_if(open_, [&](const Open& open) {
      return open.key == note.key && open.onward && open.writtenEnd == at;
    });
    if (tied != open_.end()) {
      tied->writtenEnd = note.writtenEnd;
      tied->lastStart = note.start;
      tied->end = note.end;
      tied->onward = note.onward;
      return;
    }
    open_.push_back(note);
  }

  // What is not tied beyond this place is over.
  void Close(Fraction at) {
    std::erase_if(open_, [&](const Open& note) {
      const bool over = note.onward ? note.writtenEnd < at : note.writtenEnd <= at;
      if (over) End(note);
      return over;
    });
  }

  void End(const Open& note) {
    notes_ = true;
    const std::int64_t last = note.end - note.lastStart;
    const std::int64_t end =
        std::max(note.lastStart + last * std::clamp(options_.noteValue, 0, 100) / 100, note.start + 1);
    track_.push_back(ChannelEvent(note.start, 3, {0x90 | channel_, note.key, note.velocity}));
    track_.push_back(ChannelEvent(end, 0, {0x90 | channel_, note.key, 0}));
  }

  void ApplyDynamics(const DrawnMarks& marks, bool grace) {
    accent_ = 0;
    if (!options_.playback.dynamics) return;
    const auto level = [this](std::size_t mark) { return int{options_.playback.dynamicVelocities[mark]}; };
    constexpr std::size_t kForte = 2;
    constexpr std::size_t kPiano = 5;
    if (marks.dynamic > 0) {
      const auto mark = std::ranges::find(kDynamicLevels, static_cast<std::uint8_t>(marks.dynamic));
      if (mark != kDynamicLevels.end())
        loud_ = level(static_cast<std::size_t>(mark - kDynamicLevels.begin()));
      ramp_ = {};
    } else if (marks.dynamic == kForcePiano) {
      loud_ = level(kPiano);
      accent_ = level(kForte) - loud_;
      ramp_ = {};
    } else if (marks.dynamic < 0) {
      accent_ = kHairpinSteps;
    }
    if (marks.hairpin) {
      ramp_ = {marks.diminuendo ? -kHairpinSteps : kHairpinSteps, std::max<int>(marks.hairpinSpan, 1)};
    } else if (ramp_.left > 0 && !grace) {
      const int step = ramp_.distance / ramp_.left;
      loud_ = std::clamp(loud_ + step, 1, 127);
      ramp_ = {ramp_.distance - step, ramp_.left - 1};
    }
  }

  void Sing(const ScoreItem& item, std::uint32_t pass, std::int64_t tick) {
    if (item.lyrics.empty()) return;
    std::size_t verse = pass - 1;
    if (verse >= item.lyrics.size() || item.lyrics[verse].syllable.empty()) verse = 0;
    const LyricItem& lyric = item.lyrics[verse];
    if (lyric.syllable.empty()) return;
    const std::string text =
        Windows1252FromUtf8(lyric.syllable + ((lyric.flags & kLyricHyphen) != 0 ? "-" : " "));
    Event event = MetaEvent(tick, kMetaLyric, AsBytes(text));
    event.rank = 2;
    track_.push_back(std::move(event));
  }

  struct Ramp {
    int distance = 0;
    int left = 0;  // groups
  };

  const ScoreMusic& music_;
  std::size_t index_;
  const StaffLayout& staff_;
  const PlainMidiOptions& options_;
  std::uint8_t channel_ = 0;
  std::vector<Open> open_;
  int loud_ = 0;
  int accent_ = 0;
  Ramp ramp_;
  std::int64_t grace_ = 0;  // ticks that grace notes took from the next one
  Track track_;
  bool notes_ = false;
};

// Channels are counted past the drums; those that were chosen stay.
class Channels {
 public:
  explicit Channels(const PlainMidiOptions& options) : chosen_(options.playback.channels) {}

  // The channels of the voices of the next staff.
  [[nodiscard]] VoiceChannels Next(std::size_t staff, bool drums) {
    VoiceChannels channels;
    channels.fill(drums ? kDrumChannel
                        : static_cast<std::uint8_t>((count_ >= kDrumChannel ? count_ + 1 : count_) % 16));
    if (!drums) ++count_;
    for (std::size_t voice = 0; staff < chosen_.size() && voice < kMaxVoices; ++voice) {
      if (chosen_[staff][voice] != kNotSet) channels[voice] = chosen_[staff][voice] & 15;
    }
    return channels;
  }

 private:
  const std::vector<VoiceChannels>& chosen_;
  unsigned count_ = 0;
};

// Name, programs and volumes at the start of a staff's track.
void SetUp(const StaffLayout& staff, std::uint8_t sound, std::span<const std::uint8_t> channels,
           Track& track) {
  const std::string name = Windows1252FromUtf8(staff.name);
  track.push_back(MetaEvent(0, kMetaTrackName, AsBytes(name)));
  const std::set<std::uint8_t> distinct(channels.begin(), channels.end());
  for (const std::uint8_t channel : distinct) {
    if (!staff.usesNoteMap) track.push_back(ChannelEvent(0, 1, {0xC0 | channel, sound & 0x7F}));
    track.push_back(
        ChannelEvent(0, 1, {0xB0 | channel, kVolumeController, std::clamp(staff.volume, 0, 127)}));
  }
}

}  // namespace

Result<Bytes> PlainMidi(const ScoreDocument& score, const PlainMidiOptions& options, const WorkWatch& watch) {
  const ScoreMusic music = ReadMusic(score, watch.cancelled);
  const std::vector<PlayedBar> order = PlayOrder(music, options.repeats);
  std::vector<PlayedPlace> places;
  // An upbeat is the end of a full bar, as the player has it.
  Fraction at;
  if (order.size() > 1) {
    const ScoreBar& first = music.bars[order.front().bar];
    if (first.length < BarLength(first.time)) at = BarLength(first.time) - first.length;
  }
  const Fraction leadIn = at;
  for (const PlayedBar& played : order) {
    places.push_back({played.bar, played.pass, at});
    at += music.bars[played.bar].length;
  }
  if (at == leadIn) return Failure(Outcome::NoPlayingTime);
  const std::int64_t end = Ticks(at);

  ByteWriter tracks;
  std::uint16_t written = 1;
  if (end > std::int64_t{kMaxVarLen} || !WriteTrack(Conductor(score, music).Play(places), end, tracks))
    return Failure(Outcome::DamagedScore);
  Channels channels(options);
  const auto& sounds = options.playback.sounds;
  for (std::size_t i = 0; i < score.staves.size() && i < music.voices.size(); ++i) {
    if (watch.cancelled && watch.cancelled()) return Failure(Outcome::Cancelled);
    if (watch.progress) watch.progress(static_cast<double>(i) / static_cast<double>(score.staves.size()));
    const StaffLayout& staff = score.staves[i];
    const VoiceChannels own = channels.Next(i, staff.usesNoteMap);
    if (i < options.silentStaves.size() && options.silentStaves[i]) continue;
    StaffPlayer player(music, i, staff, options);
    const std::size_t voices = std::min(music.voices[i].size(), kMaxVoices);
    for (std::size_t voice = 0; voice < voices; ++voice) player.Play(voice, places, own[voice]);
    if (!player.HasNotes()) continue;
    const bool chosen = i < sounds.size() && sounds[i] != kNotSet;
    Track track = player.Take();
    SetUp(staff, chosen ? sounds[i] : static_cast<std::uint8_t>(staff.sound), std::span(own).first(voices),
          track);
    if (!WriteTrack(std::move(track), end, tracks)) return Failure(Outcome::DamagedScore);
    ++written;
  }
  ByteWriter out;
  WriteMidiHeader(out, 1, written, kScoreTicksPerQuarter);
  out.Append(tracks.View());
  return out.Release();
}

Result<Bytes> ConvertSTVToMID(ByteView score, const PlainMidiOptions& options, const WorkWatch& watch) {
  const auto document = ReadScore(score, watch.cancelled);
  if (!document) return Failure(document.error());
  return PlainMidi(*document, options, watch);
}

}  // namespace ts5
