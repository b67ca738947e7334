#include "modules/file_facts.h"

#include <algorithm>
#include <array>
#include <bitset>
#include <cmath>

#include "audio/media_probe.h"
#include "converters/score_formats.h"
#include "frame/file_types.h"
#include "midi/midi_properties.h"
#include "midi/midi_summary.h"
#include "platform/base/casts.h"
#include "platform/files/files.h"
#include "score/music_summary.h"

namespace ts5 {
namespace {

// What is larger is not read for a list: nobody waits so long for a column.
constexpr std::uint64_t kMaxScoreForFacts = std::uint64_t{32} << 20;

using Milliseconds = std::chrono::milliseconds;

// Tracks with notes; of a file that has all in one, its channels.
std::uint32_t VoicesOf(const MidiSummary& summary) {
  const auto sounding =
      std::ranges::count_if(summary.tracks, [](const auto& track) { return track.notes > 0; });
  if (sounding != 1) return ClampTo<std::uint32_t>(sounding);
  std::bitset<16> channels;
  for (const MidiTrackSummary& track : summary.tracks) {
    for (const MidiPart& part : track.parts) channels.set(part.channel & 15U);
  }
  return ClampTo<std::uint32_t>(channels.count());
}

void ReadMidi(const std::string& path, FileFacts& facts, const CancelCheck& cancelled) {
  const auto summary = SummariseMidiFile(path, cancelled);
  if (!summary || summary->tooLarge) return;
  if (summary->division != 0) facts.length = std::chrono::round<Milliseconds>(summary->length);
  if (!summary->keys.empty()) facts.key = MidiKeyText(summary->keys.front());
  facts.keyChanges = summary->keys.size() > 1;
  if (!summary->signatures.empty()) {
    const TimeSignatureEntry& first = summary->signatures.front();
    facts.metre = std::to_string(first.numerator) + "/" + std::to_string(first.denominator);
  }
  facts.metreChanges = summary->signatures.size() > 1;
  constexpr double kMicroseconds = 60e6;  // of a minute
  if (!summary->tempos.empty()) facts.tempo = kMicroseconds / summary->tempos.front().quarter;
  facts.tempoChanges = summary->tempos.size() > 1;
  facts.voices = VoicesOf(*summary);
}

void ReadScore(const std::string& path, FileFacts& facts, const CancelCheck& cancelled) {
  const auto file = ReadFile(path, kMaxScoreForFacts);
  if (!file) return;
  const auto score = converters::ReadAnyScore(*file, cancelled);
  if (!score) return;
  const MusicSummary music = SummariseMusic(score->document, cancelled);
  facts.length = Milliseconds(std::llround(music.played * 1000));
  if (!music.keys.empty()) facts.key = music.keys.front();
  if (!music.metres.empty()) facts.metre = music.metres.front();
  if (!music.tempos.empty()) facts.tempo = music.tempos.front();
  facts.keyChanges = music.keys.size() > 1;
  facts.metreChanges = music.metres.size() > 1;
  facts.tempoChanges = music.tempos.size() > 1;
  facts.voices = ClampTo<std::uint32_t>(score->document.staves.size());
}

void ReadAudio(const std::string& path, FileFacts& facts, const CancelCheck& /*cancelled*/) {
  const MediaProbe probe = ProbeMedia(path);
  if (probe.kind == MediaKind::None) return;
  facts.length = Milliseconds(std::llround(std::clamp(probe.seconds, 0.0, 1e9) * 1000));
  facts.channels = probe.format.channels;
}

struct KindReader {
  FileTypeId type;
  void (*read)(const std::string& path, FileFacts& facts, const CancelCheck& cancelled);
};
constexpr std::array kReaders{
    KindReader{FileTypeId::Midi, ReadMidi},          KindReader{FileTypeId::Sequencer, ReadMidi},
    KindReader{FileTypeId::Score, ReadScore},        KindReader{FileTypeId::Xml, ReadScore},
    KindReader{FileTypeId::StvXml, ReadScore},       KindReader{FileTypeId::Wave, ReadAudio},
    KindReader{FileTypeId::Aiff, ReadAudio},         KindReader{FileTypeId::Mp3, ReadAudio},
    KindReader{FileTypeId::Mp2, ReadAudio},          KindReader{FileTypeId::Mpga, ReadAudio},
    KindReader{FileTypeId::WindowsMedia, ReadAudio}, KindReader{FileTypeId::Ogg, ReadAudio},
    KindReader{FileTypeId::Ape, ReadAudio},          KindReader{FileTypeId::Flac, ReadAudio},
    KindReader{FileTypeId::Opus, ReadAudio},         KindReader{FileTypeId::M4a, ReadAudio},
};

}  // namespace

void ReadFileFacts(const std::string& path, FileFacts& facts, const CancelCheck& cancelled) {
  const auto* const found = std::ranges::find(kReaders, FileTypeOf(path), &KindReader::type);
  if (found != kReaders.end()) found->read(path, facts, cancelled);
}

}  // namespace ts5
