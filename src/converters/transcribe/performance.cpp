#include "converters/transcribe/performance.h"

#include <algorithm>
#include <array>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <tuple>
#include <utility>

#include "midi/midi_events.h"
#include "midi/midi_file.h"
#include "platform/base/text.h"
#include "score/playback_parameters.h"

namespace ts5::transcribe {
namespace {

constexpr std::uint8_t kMetaText = 0x01;
constexpr std::uint8_t kMetaCopyright = 0x02;
constexpr std::uint8_t kMetaName = 0x03;
constexpr std::uint8_t kMetaLyric = 0x05;
constexpr std::uint8_t kMetaLastText = 0x0F;
constexpr std::uint8_t kMetaKey = 0x59;
constexpr std::uint8_t kVolumeController = 7;
constexpr std::uint8_t kChannelModes = 120;  // controllers from here on silence and reset

std::string TextOf(ByteView payload) {
  const std::string_view text = AsText(payload);
  return std::string(Trim(IsUtf8(text) ? std::string(text) : Utf8FromWindows1252(text)));
}

// The texts of karaoke files: "@" begins what is no word, "/" and "\" a new line, a blank the next word.
struct RawWord {
  std::int64_t at = 0;
  std::string text;  // as it stands
  bool lyric = false;
};

std::vector<SungText> WordsOf(const std::vector<RawWord>& raw, LeftOutCounts& leftOut) {
  const bool lyrics = std::ranges::any_of(raw, &RawWord::lyric);
  const bool karaoke =
      std::ranges::any_of(raw, [](const RawWord& word) { return word.text.starts_with('@'); });
  std::vector<SungText> words;
  bool endsWord = true;
  for (const RawWord& word : raw) {
    if ((!lyrics && !karaoke) || word.lyric != lyrics || word.text.starts_with('@')) {
      leftOut.Add(LeftOut::Texts, word.text.empty() ? 0 : 1);
      continue;
    }
    std::string_view text = word.text;
    bool begins = endsWord;
    while (!text.empty() && std::string_view(" /\\\r\n").find(text.front()) != std::string_view::npos) {
      begins = true;
      text.remove_prefix(1);
    }
    endsWord = false;
    while (!text.empty() && std::string_view(" \r\n").find(text.back()) != std::string_view::npos) {
      endsWord = true;
      text.remove_suffix(1);
    }
    const bool hyphen = text.size() > 1 && text.ends_with('-');
    if (hyphen) text.remove_suffix(1);
    if (text.empty() || text == "_") continue;
    // In karaoke files the next syllable says whether the word goes on.
    if (karaoke && !begins && !words.empty()) words.back().onward = true;
    words.push_back({word.at, std::string(text), hyphen});
  }
  return words;
}

class TrackReader {
 public:
  TrackReader(Performance& performance, std::size_t index) : performance_(performance), index_(index) {}

  [[nodiscard]] Outcome Read(ByteView track, WatchedWork& work, std::size_t& events) {
    MidiEventCursor cursor(track);
    for (MidiEvent event; cursor.Next(event);) {
      if (!work.GoOn(++events)) return Outcome::Cancelled;
      if (event.status == kMetaStatus) {
        TakeMeta(event);
      } else if (event.IsChannelMessage()) {
        TakeMessage(event);
      } else {
        performance_.leftOut.Add(LeftOut::Exclusive);
      }
    }
    if (cursor.Damaged()) return Outcome::DamagedMidi;
    Finish(static_cast<std::int64_t>(cursor.Tick()));
    return Outcome::Success;
  }

 private:
  struct Open {
    std::int64_t start = 0;
    std::uint8_t velocity = 0;
  };
  struct Channel {
    PlayedPart part;
    std::array<std::deque<Open>, 128> open;
  };

  Channel& ChannelOf(std::uint8_t number) {
    auto& channel = channels_[number];
    if (channel == nullptr) {
      channel = std::make_unique<Channel>();
      channel->part.track = index_;
      channel->part.channel = number;
      channel->part.drums = number == kDrumChannel;
    }
    return *channel;
  }

  void TakeMessage(const MidiEvent& event) {
    const auto tick = static_cast<std::int64_t>(event.tick);
    const std::uint8_t key = event.data1 & 0x7F;
    if (event.IsNoteOn()) {
      ChannelOf(event.Channel()).open[key].push_back({tick, event.data2});
    } else if (event.IsNoteOff()) {
      Close(ChannelOf(event.Channel()), key, tick);
    } else {
      TakeControl(ChannelOf(event.Channel()).part, event);
    }
  }

  void TakeControl(PlayedPart& part, const MidiEvent& event) {
    LeftOutCounts& leftOut = performance_.leftOut;
    const bool before = part.notes.empty();
    switch (event.MessageType()) {
      case 0xC0:
        if (before) {
          part.program = event.data1 & 0x7F;
        } else if (part.program != (event.data1 & 0x7F)) {
          leftOut.Add(LeftOut::Programs);
        }
        break;
      case 0xB0:
        if (before && event.data1 == kVolumeController) {
          part.volume = event.data2 & 0x7F;
        } else if (event.data1 < kChannelModes) {
          leftOut.Add(LeftOut::Controllers);
        }
        break;
      case 0xE0:
        leftOut.Add(LeftOut::Bends);
        break;
      default:
        leftOut.Add(LeftOut::Pressures);
    }
  }

  static void Close(Channel& channel, std::uint8_t key, std::int64_t tick) {
    auto& open = channel.open[key];
    if (open.empty()) return;
    const Open note = open.front();
    open.pop_front();
    channel.part.notes.push_back({note.start, std::max(tick, note.start + 1), key, note.velocity});
  }

  void TakeMeta(const MidiEvent& event) {
    const auto tick = static_cast<std::int64_t>(event.tick);
    const ByteView data = event.payload;
    switch (event.metaType) {
      case kMetaName:
        if (name_.empty()) name_ = TextOf(data);
        break;
      case kMetaCopyright:
        if (!performance_.rights.empty()) performance_.leftOut.Add(LeftOut::Texts);
        if (performance_.rights.empty()) performance_.rights = TextOf(data);
        break;
      case kMetaText:
      case kMetaLyric: {
        const std::string_view text = AsText(data);
        words_.push_back({tick, IsUtf8(text) ? std::string(text) : Utf8FromWindows1252(text),
                          event.metaType == kMetaLyric});
        break;
      }
      case kMetaSetTempo:
        if (data.size() >= 3) {
          const std::uint32_t quarter = std::uint32_t{data[0]} << 16 | std::uint32_t{data[1]} << 8 | data[2];
          if (quarter > 0) performance_.tempos.push_back({tick, quarter});
        }
        break;
      case kMetaTimeSignature:
        if (data.size() >= 2 && data[0] > 0 && data[1] <= 6)
          performance_.signatures.push_back({tick, {data[0], static_cast<std::int16_t>(data[1])}});
        break;
      case kMetaKey:
        if (!data.empty()) {
          const auto sharps = static_cast<std::int8_t>(data[0]);
          if (sharps >= -7 && sharps <= 7) performance_.keys.push_back({tick, sharps});
        }
        break;
      default:
        if (event.metaType <= kMetaLastText) performance_.leftOut.Add(LeftOut::Texts, data.empty() ? 0 : 1);
    }
  }

  void Finish(std::int64_t end) {
    performance_.end = std::max(performance_.end, end);
    std::vector<SungText> words = WordsOf(words_, performance_.leftOut);
    bool notes = false;
    for (auto& [number, channel] : channels_) {
      for (std::size_t key = 0; key < channel->open.size(); ++key) {
        while (!channel->open[key].empty()) Close(*channel, static_cast<std::uint8_t>(key), end);
      }
      PlayedPart& part = channel->part;
      if (part.notes.empty()) continue;
      std::ranges::sort(part.notes, {},
                        [](const PlayedNote& note) { return std::tuple(note.start, note.key); });
      const auto struck = [](const PlayedNote& note) { return note.velocity; };
      if (std::ranges::adjacent_find(part.notes, std::ranges::not_equal_to{}, struck) != part.notes.end())
        performance_.leftOut.Add(LeftOut::Velocities, part.notes.size());
      part.name = name_;
      if (!part.drums) part.words = std::exchange(words, {});
      performance_.parts.push_back(std::move(part));
      notes = true;
    }
    if (!notes && performance_.title.empty()) performance_.title = name_;
    if (!words.empty()) loose_ = std::move(words);
  }

 public:
  // Words of a track without notes.
  [[nodiscard]] std::vector<SungText> TakeLooseWords() { return std::move(loose_); }

 private:
  Performance& performance_;
  std::size_t index_;
  std::string name_;
  std::map<std::uint8_t, std::unique_ptr<Channel>> channels_;
  std::vector<RawWord> words_;
  std::vector<SungText> loose_;
};

// To the part that begins a note at most of the words' places.
void PlaceLooseWords(std::vector<SungText> words, Performance& performance) {
  constexpr std::size_t kMostParts = 256;
  PlayedPart* best = nullptr;
  std::size_t most = 0;
  for (PlayedPart& part :
       std::span(performance.parts).first(std::min(performance.parts.size(), kMostParts))) {
    if (part.drums || !part.words.empty()) continue;
    const auto hits = static_cast<std::size_t>(std::ranges::count_if(words, [&part](const SungText& word) {
      return std::ranges::binary_search(part.notes, word.at, {}, &PlayedNote::start);
    }));
    if (hits > most) {
      most = hits;
      best = &part;
    }
  }
  if (best != nullptr) best->words = std::move(words);
}

template <typename Change>
void InOrder(std::vector<Change>& changes) {
  std::ranges::stable_sort(changes, {}, &Change::at);
  std::vector<Change> kept;
  for (const Change& change : changes) {
    if (!kept.empty() && kept.back().at == change.at) kept.pop_back();
    kept.push_back(change);
  }
  changes = std::move(kept);
}

}  // namespace

double Performance::QuarterSeconds(std::int64_t tick) const {
  const auto change = std::ranges::upper_bound(tempos, tick, {}, &TempoChange::at);
  const std::uint32_t quarter = change == tempos.begin() ? TempoChange{}.quarter : std::prev(change)->quarter;
  return quarter / 1e6;
}

Result<Performance> ReadPerformance(ByteView file, const WorkWatch& watch) {
  const MidiFileInfo info = DetectMidiKind(file);
  if (info.kind == MidiFileKind::None) return Failure(Outcome::WrongFormat);
  const ByteView midi = MidiBytesOf(file);
  if (info.header.division == 0) return Failure(Outcome::DamagedMidi);
  const auto tracks = MidiTracks(midi, info.header.trackCount);
  if (!tracks) return Failure(Outcome::DamagedMidi);
  Performance performance;
  performance.division = info.header.division;
  WatchedWork work(watch, file.size());
  std::size_t events = 0;
  std::vector<std::vector<SungText>> loose;
  for (std::size_t i = 0; i < tracks->size(); ++i) {
    TrackReader reader(performance, i);
    if (const Outcome read = reader.Read((*tracks)[i], work, events); Failed(read)) return Failure(read);
    if (auto words = reader.TakeLooseWords(); !words.empty()) loose.push_back(std::move(words));
  }
  for (auto& words : loose) PlaceLooseWords(std::move(words), performance);
  InOrder(performance.tempos);
  InOrder(performance.signatures);
  InOrder(performance.keys);
  return performance;
}

}  // namespace ts5::transcribe
