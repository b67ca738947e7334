// Showing a hit in the program it belongs to: the messages that the sequencer and the score editor
// understand, and the way from a hit to a running program that has them.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "frame/search_hit.h"
#include "platform/base/strings.h"
#include "platform/programs/sibling_link.h"

namespace ts5 {

// Numbers are little-endian 32-bit, names end with a zero byte.
[[nodiscard]] SiblingMessage SequencerOpenMessage(const SearchHit& hit);
[[nodiscard]] SiblingMessage SequencerPlaceMessage(const SearchHit& hit);  // bar and track, from 0
// Open the score; its vertical position; the range of the hit.
[[nodiscard]] std::vector<SiblingMessage> ScoreMessages(const SearchHit& hit);

// A sibling program as the system knows it.
struct SiblingProgram {
  std::string path;         // "" when it is not there
  std::string windowClass;  // "" when it tells none
};

// What the way to a sibling needs of its surroundings.
struct SiblingServices {
  std::function<bool(const std::string& windowClass)> isThere;
  std::function<Outcome(const std::string& program, const std::vector<std::string>& arguments)> start;
  std::function<Outcome(const std::string& windowClass, const std::vector<SiblingMessage>& messages)> send;
  // Shows the window of the class, in front of all others.
  std::function<void(const std::string& windowClass)> raise;
  // False when the program that waits ends meanwhile.
  std::function<bool(std::chrono::milliseconds)> sleep;
};

// Blocks until the hit is shown or cannot be: the message for the user then. A sibling that does not run is
// started and waited for, until sleep() says no. Nothing happens when the sequencer is not known.
[[nodiscard]] std::optional<TextId> ShowInSequencer(const SearchHit& hit, const SiblingProgram& sequencer,
                                                    const SiblingServices& services);
// windowClass is asked anew while the program starts.
[[nodiscard]] std::optional<TextId> ShowInScoreEditor(const SearchHit& hit,
                                                      const std::function<SiblingProgram()>& editor,
                                                      const SiblingServices& services);

}  // namespace ts5
