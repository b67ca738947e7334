// Which voices a score has, and the channels that they get.
#include <algorithm>

#include "score/score_engine.h"
#include "score/score_system.h"

namespace ts5 {

Result<std::vector<std::uint8_t>> CountVoices(ByteView file, const ScoreFileInfo& info,
                                              const CancelCheck& cancelled) {
  std::vector<std::uint8_t> voices(info.staves.size());
  ScoreSource in(file, info.bodyOffset, &cancelled);
  for (std::uint32_t s = 0; s < info.systems && in.Ok(); ++s) {
    const ScoreSystem system = ReadSystem(in, voices.size());
    for (const SystemStaff& staff : system.staves)
      voices[staff.layout] = std::max(voices[staff.layout], static_cast<std::uint8_t>(staff.voices));
  }
  if (!in.Ok()) return Failure(in.Stopped() ? Outcome::Cancelled : Outcome::DamagedScore);
  return voices;
}

void AssignChannels(const ScoreFileInfo& info, const std::vector<std::uint8_t>& voices,
                    std::vector<VoiceChannels>& channels) {
  channels.resize(info.staves.size(), kNoChannels);
  unsigned count = 0;
  for (std::size_t i = 0; i < channels.size(); ++i) {
    for (std::size_t voice = 0; voice < voices[i]; ++voice) {
      std::uint8_t& channel = channels[i][voice];
      if (channel != kNotSet) continue;
      if (info.staves[i].usesNoteMap) {
        channel = kDrumChannel;
        continue;
      }
      channel = static_cast<std::uint8_t>((count >= kDrumChannel ? count + 1 : count) % 16);
      ++count;
    }
  }
}

}  // namespace ts5
