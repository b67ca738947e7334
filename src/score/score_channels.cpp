// Which voices a score has, and the channels that they get.
#include <algorithm>

#include "score/score_engine.h"

namespace ts5 {

Result<std::vector<std::uint8_t>> CountVoices(ByteView file, const ScoreFileInfo& info) {
  std::vector<std::uint8_t> voices(info.staves.size());
  ScoreSource in(file, info.bodyOffset);
  for (std::uint32_t s = 0; s < info.systems && in.Ok(); ++s) {
    const SystemHeader system = ReadSystemHeader(in);
    for (std::uint32_t i = 0; i < system.staves && in.Ok(); ++i) {
      const StaffHeader staff = ReadStaffHeader(in);
      if (!in.Ok() || staff.layout >= voices.size()) return Failure(Outcome::DamagedScore);
      const auto count = static_cast<std::uint8_t>(std::min<std::uint32_t>(staff.voices, kMaxVoices));
      voices[staff.layout] = std::max(voices[staff.layout], count);
      for (std::uint32_t v = 0; v < staff.voices && in.Ok(); ++v) {
        const VoiceHeader voice = ReadVoiceHeader(in);
        for (std::uint32_t k = 0; k < voice.objects && in.Ok(); ++k) (void)ReadObject(in);
      }
    }
  }
  if (!in.Ok()) return Failure(Outcome::DamagedScore);
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
