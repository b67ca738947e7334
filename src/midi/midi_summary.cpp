#include "midi/midi_summary.h"

#include <algorithm>
#include <array>
#include <new>
#include <string_view>
#include <utility>

#include "midi/instruments.h"
#include "midi/midi_events.h"
#include "midi/riff_info.h"
#include "platform/base/text.h"

namespace ts5 {
namespace {

constexpr std::uint8_t kMetaText = 0x01;
constexpr std::uint8_t kMetaCopyright = 0x02;
constexpr std::uint8_t kMetaTrackName = 0x03;
constexpr std::uint8_t kMetaLyric = 0x05;
constexpr std::uint8_t kMetaKeySignature = 0x59;
constexpr std::size_t kMaxName = 200;          // bytes of a name that are looked at
constexpr std::size_t kMaxLyrics = 64 * 1024;  // bytes of the words of a track
constexpr std::size_t kMaxChanges = 100'000;   // of tempo, key and metre
constexpr std::size_t kEventsPerPoll = 1 << 14;

std::string Decoded(ByteView bytes) {
  const std::string_view text = AsText(bytes);
  return IsUtf8(text) ? std::string(text) : Utf8FromWindows1252(text);
}

// Of one line.
std::string NameOf(ByteView bytes) {
  std::string name = Decoded(bytes.first(std::min(bytes.size(), kMaxName)));
  std::ranges::replace_if(
      name, [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }, ' ');
  return std::string(Trim(name));
}

// The name of a track without the colon that some engravers put behind it.
std::string TrackNameOf(ByteView bytes) {
  std::string name = NameOf(bytes);
  while (name.ends_with(':')) name.pop_back();
  return name;
}

// Names that programs give to a first track by themselves, which say nothing of the music.
bool IsTitle(std::string_view name) {
  constexpr std::array<std::string_view, 8> kNoTitles{"control track", "conductor",   "conductor track",
                                                      "tempo",         "tempo track", "untitled",
                                                      "master track",  "track 0"};
  return std::ranges::none_of(kNoTitles,
                              [name](std::string_view no) { return EqualsIgnoringCase(no, name); });
}

// The words of a song as its events spell them, syllable by syllable.
class Words {
 public:
  void Add(ByteView bytes) {
    if (text_.size() > kMaxLyrics) return;
    ++syllables_;
    for (const char c : Decoded(bytes.first(std::min(bytes.size(), kMaxName)))) {
      if (c == '\r' || c == '\n') {
        EndLine();
      } else if (static_cast<unsigned char>(c) >= 0x20 && c != 0x7F) {
        text_ += c;
      }
    }
    ends_.push_back(text_.size());
  }
  // As karaoke files write them: signs for lines and verses, "@" before what is no song.
  void AddKaraoke(ByteView bytes) {
    const std::string_view text = AsText(bytes);
    if (text.empty() || text.front() == '@') return;
    const bool sign = text.front() == '/' || text.front() == '\\';
    if (sign) EndLine();
    Add(sign ? bytes.subspan(1) : bytes);
    signs_ = signs_ || sign;
  }

  [[nodiscard]] std::size_t Syllables() const { return syllables_; }
  [[nodiscard]] bool HasSigns() const { return signs_; }
  // Where nothing parts the syllables, blanks do.
  [[nodiscard]] std::string Text() const {
    if (text_.find_first_of(" -\n") != std::string::npos) return std::string(Trim(text_));
    std::string spaced;
    std::size_t start = 0;
    for (const std::size_t end : ends_) {
      if (end == start) continue;
      if (!spaced.empty()) spaced += ' ';
      spaced += text_.substr(start, end - start);
      start = end;
    }
    return spaced;
  }

 private:
  void EndLine() {
    if (!text_.empty() && text_.back() != '\n') text_ += '\n';
  }

  std::string text_;
  std::vector<std::size_t> ends_;  // of the syllables
  std::size_t syllables_ = 0;
  bool signs_ = false;
};

constexpr std::uint8_t kNoProgram = 0xFF;
using ChannelPrograms = std::array<std::uint8_t, 16>;

class Summariser {
 public:
  explicit Summariser(std::uint16_t division) {
    summary_.division = division;
    filePrograms_.fill(kNoProgram);
  }

  // False: stopped.
  bool AddTrack(ByteView bytes, const CancelCheck& cancelled) {
    Track track;
    track.programs.fill(kNoProgram);
    MidiEventCursor cursor(bytes);
    std::size_t untilPoll = kEventsPerPoll;
    for (MidiEvent event; cursor.Next(event); ++track.summary.events) {
      if (--untilPoll == 0) {
        if (cancelled && cancelled()) return false;
        untilPoll = kEventsPerPoll;
      }
      if (event.status == kMetaStatus) {
        Take(track, event);
      } else if (event.IsNoteOn()) {
        PartOf(track, event.Channel()).notes += 1;
        ++track.summary.notes;
      } else if (event.MessageType() == 0xC0 && event.IsChannelMessage() && event.data1 < 0x80) {
        track.programs[event.Channel()] = event.data1;
        std::uint8_t& first = filePrograms_[event.Channel()];
        if (first == kNoProgram) first = event.data1;
      }
    }
    track.summary.damaged = cursor.Damaged();
    summary_.notes += track.summary.notes;
    lastTick_ = std::max(lastTick_, cursor.Tick());
    TakeWords(track);
    if (track.hasSignature && !track.summary.damaged && summary_.division != 0 &&
        summary_.signatures.empty()) {
      if (auto conductor = ScanConductorTrack(bytes, summary_.division, cancelled))
        summary_.signatures = std::move(conductor->signatures);
    }
    summary_.tracks.push_back(std::move(track.summary));
    return true;
  }

  MidiSummary Finish(std::size_t missingTracks) {
    summary_.missingTracks = missingTracks;
    std::ranges::stable_sort(summary_.tempos, {}, &TempoEvent::tick);
    std::ranges::stable_sort(summary_.keys, {}, &MidiKey::tick);
    if (summary_.division != 0)
      summary_.length = TempoMap(summary_.division, summary_.tempos).TimeOf(lastTick_);
    KeepChanges(summary_.tempos,
                [](const TempoEvent& a, const TempoEvent& b) { return a.quarter == b.quarter; });
    KeepChanges(summary_.keys, [](const MidiKey& a, const MidiKey& b) {
      return a.sharps == b.sharps && a.minor == b.minor;
    });
    for (MidiTrackSummary& track : summary_.tracks) SettlePrograms(track);
    summary_.lyrics = words_.Text();
    if (!karaokeTitle_.empty()) summary_.title = karaokeTitle_;
    const bool named = !summary_.tracks.empty() && IsTitle(summary_.tracks.front().name);
    if (summary_.title.empty() && named) summary_.title = summary_.tracks.front().name;
    return std::move(summary_);
  }

 private:
  struct Track {
    MidiTrackSummary summary;
    ChannelPrograms programs;
    bool hasSignature = false;
    Words lyrics;
    Words karaoke;
  };

  void Take(Track& track, const MidiEvent& event) {
    ByteReader payload(event.payload);
    switch (event.metaType) {
      case kMetaSetTempo:
        if (event.payload.size() == 3 && summary_.tempos.size() < kMaxChanges) {
          if (const std::uint32_t quarter = payload.U24Be(); quarter != 0)
            summary_.tempos.push_back({event.tick, quarter});
        }
        break;
      case kMetaTimeSignature:
        track.hasSignature = true;
        break;
      case kMetaKeySignature:
        if (event.payload.size() >= 2 && summary_.keys.size() < kMaxChanges) {
          const auto sharps = static_cast<std::int8_t>(event.payload[0]);
          if (sharps >= -7 && sharps <= 7)
            summary_.keys.push_back({event.tick, sharps, event.payload[1] == 1});
        }
        break;
      case kMetaTrackName:
        if (track.summary.name.empty()) track.summary.name = TrackNameOf(event.payload);
        break;
      case kMetaCopyright:
        if (summary_.copyright.empty()) summary_.copyright = NameOf(event.payload);
        break;
      case kMetaLyric:
        track.lyrics.Add(event.payload);
        break;
      case kMetaText:
        if (AsText(event.payload).starts_with("@T") && karaokeTitle_.empty())
          karaokeTitle_ = NameOf(event.payload.subspan(2));
        track.karaoke.AddKaraoke(event.payload);
        break;
      default:
        break;
    }
  }

  // The track with the most syllables has the words.
  void TakeWords(Track& track) {
    if (track.karaoke.HasSigns() && track.lyrics.Syllables() == 0) track.lyrics = std::move(track.karaoke);
    if (track.lyrics.Syllables() > words_.Syllables()) words_ = std::move(track.lyrics);
  }

  static MidiPart& PartOf(Track& track, std::uint8_t channel) {
    std::vector<MidiPart>& parts = track.summary.parts;
    const std::uint8_t program = channel == kDrumChannel ? std::uint8_t{0} : track.programs[channel];
    const auto found = std::ranges::find_if(
        parts, [&](const MidiPart& part) { return part.channel == channel && part.program == program; });
    if (found != parts.end()) return *found;
    parts.push_back({channel, program, 0});
    return parts.back();
  }

  // A track that does not say its sound has the one that another track sets for the channel, or the first.
  void SettlePrograms(MidiTrackSummary& track) const {
    for (MidiPart& part : track.parts) {
      if (part.program != kNoProgram) continue;
      part.program = filePrograms_[part.channel];
      if (part.program == kNoProgram) part.program = 0;
    }
  }

  template <typename Mark, typename Same>
  static void KeepChanges(std::vector<Mark>& marks, Same same) {
    std::vector<Mark> kept;
    for (const Mark& mark : marks) {
      if (!kept.empty() && kept.back().tick == mark.tick) kept.pop_back();
      if (kept.empty() || !same(kept.back(), mark)) kept.push_back(mark);
    }
    marks = std::move(kept);
  }

  MidiSummary summary_;
  ChannelPrograms filePrograms_{};  // the first of each channel in the file
  std::uint64_t lastTick_ = 0;
  Words words_;
  std::string karaokeTitle_;
};

// The title that a RIFF form says in its list of attributes.
std::string RiffTitle(ByteView file) {
  if (ContainerOf(file) != MidiContainer::Riff) return {};
  const auto entries = ReadRiffInfo(file);
  if (!entries) return {};
  const auto row = std::ranges::find(*entries, "INAM", &RiffInfoEntry::id);
  return row == entries->end() ? std::string{} : std::string(Trim(row->text));
}

}  // namespace

bool MidiSummary::Damaged() const {
  return missingTracks != 0 || (division == 0 && !tooLarge) ||
         std::ranges::any_of(tracks, &MidiTrackSummary::damaged);
}

std::uint64_t MidiSummary::BarAt(std::uint64_t tick) const {
  static const TimeSignatureMap kCommonTime{TimeSignatureEntry{}};
  return BarOf(signatures.empty() ? kCommonTime : signatures, division, tick) + 1;
}

Result<MidiSummary> SummariseMidi(ByteView file, const CancelCheck& cancelled) {
  const MidiFileInfo info = DetectMidiKind(file);
  if (info.kind == MidiFileKind::None) return Failure(Outcome::WrongFormat);
  Summariser summariser(info.header.division);
  MidiTrackReader tracks(MidiBytesOf(file), info.header.trackCount);
  std::size_t read = 0;
  for (ByteView track; tracks.Next(track); ++read) {
    if (!summariser.AddTrack(track, cancelled)) return Failure(Outcome::Cancelled);
  }
  const std::size_t counted =
      std::max<std::size_t>(info.header.trackCount, tracks.HasFault() ? read + 1 : read);
  MidiSummary summary = summariser.Finish(counted - read);
  if (std::string title = RiffTitle(file); !title.empty()) summary.title = std::move(title);
  return summary;
}

Result<MidiSummary> SummariseMidiFile(const std::string& path, const CancelCheck& cancelled) {
  const auto file = InputFile::Open(path);
  return file ? SummariseMidiFile(*file, cancelled) : Failure(file.error());
}

Result<MidiSummary> SummariseMidiFile(const InputFile& input, const CancelCheck& cancelled) {
  try {
    const auto start = ReadMidiFileHeader(input);
    if (!start) return Failure(start.error());
    if (input.Size() > kMaxSummaryFile) {
      MidiSummary summary;
      summary.tooLarge = true;
      return summary;
    }
    const auto file = input.ReadAll(kMaxSummaryFile, cancelled);
    if (!file) return Failure(file.error());
    return SummariseMidi(*file, cancelled);
  } catch (const std::bad_alloc&) {
    return Failure(Outcome::OutOfMemory);
  }
}

}  // namespace ts5
