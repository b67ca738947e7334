// Which voice of its staff each rest and chord of a part goes to, and the chords of each voice in order. Used
// inside the reader only.
#pragma once

#include <array>
#include <map>
#include <span>
#include <string>
#include <vector>

#include "converters/assembly_part.h"

namespace ts5::converters::musicxml {

class PartVoices {
 public:
  explicit PartVoices(PartToPlace place) : place_(place) {}

  // False when it is to stop.
  [[nodiscard]] bool Allot(const CancelCheck& cancelled);

  // Voices of a staff; 1 at least.
  [[nodiscard]] std::size_t Count(std::size_t staff) const { return voices_[staff].size(); }
  // The place of a voice by its name in the file; kMaxVoices or more: it has none.
  [[nodiscard]] std::size_t SlotOf(std::size_t staff, const std::string& voice) const;
  // In order of time.
  [[nodiscard]] std::span<const std::size_t> Groups(std::size_t measure, std::size_t staff,
                                                    std::size_t slot) const;
  [[nodiscard]] const std::vector<ChordAt>& Chords(std::size_t staff, std::size_t slot) const {
    return voices_[staff][slot].chords;
  }

 private:
  // Orders the numbers of voices by their value, other names behind them.
  struct VoiceBefore {
    bool operator()(const std::string& a, const std::string& b) const;
  };
  struct Voice {
    std::vector<std::size_t> groups;  // one measure after another
    std::vector<std::size_t> begins;  // where those of each measure begin, up to the last one that has any
    std::vector<ChordAt> chords;
  };
  using VoiceEnds = std::array<Fraction, kMaxVoices>;  // where each voice of a staff has come to

  void NameVoices();
  void Place(std::size_t index, std::size_t measure, VoiceEnds& ends);

  PartToPlace place_;
  std::vector<std::map<std::string, std::size_t, VoiceBefore>> names_;  // of each staff, and their numbers
  std::vector<std::vector<Voice>> voices_;                              // of each staff
};

}  // namespace ts5::converters::musicxml
