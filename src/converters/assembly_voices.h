// Which voice of its staff each rest and chord of a part goes to, and the chords of each voice in order. Used
// inside the reader only.
#pragma once

#include <array>
#include <map>
#include <string>
#include <vector>

#include "converters/assembly_part.h"

namespace ts5::musicxml {

class PartVoices {
 public:
  explicit PartVoices(PartToPlace place) : place_(place) {}

  // False when it is to stop.
  [[nodiscard]] bool Allot(const CancelCheck& cancelled);

  // Voices of a staff; 1 at least.
  [[nodiscard]] std::size_t Count(std::size_t staff) const { return slots_[staff]; }
  // The place of a voice by its name in the file; kMaxVoices or more: it has none.
  [[nodiscard]] std::size_t SlotOf(std::size_t staff, const std::string& voice) const;
  // In order of time.
  [[nodiscard]] const std::vector<std::size_t>& Groups(std::size_t measure, std::size_t staff,
                                                       std::size_t slot) const;
  [[nodiscard]] const std::vector<ChordAt>& Chords(std::size_t staff, std::size_t slot) const {
    return chords_[staff][slot];
  }

 private:
  // Orders the numbers of voices by their value, other names behind them.
  struct VoiceBefore {
    bool operator()(const std::string& a, const std::string& b) const;
  };
  using VoiceGroups = std::vector<std::vector<std::size_t>>;  // of each voice
  using VoiceEnds = std::array<Fraction, kMaxVoices>;         // where each voice of a staff has come to

  void NameVoices();
  void Place(std::size_t index, std::size_t measure, VoiceEnds& ends, VoiceGroups& content);
  void NumberChords();

  PartToPlace place_;
  std::vector<std::map<std::string, std::size_t, VoiceBefore>> names_;  // of each staff, and their numbers
  std::vector<std::size_t> slots_;
  std::vector<std::vector<VoiceGroups>> contents_;         // measure, staff
  std::vector<std::vector<std::vector<ChordAt>>> chords_;  // staff, voice
};

}  // namespace ts5::musicxml
