// The two programs of the same family that found melodies can be shown in: the MIDI sequencer and the score
// program. They are looked up in the registry at the start.
#pragma once

#include <string>

namespace ts5 {

class Registry;

struct Sibling {
  bool available = false;
  std::string windowClass;  // at most 63 characters; names the socket that it listens on
  std::string program;      // path of the program file
  int majorVersion = 0;
  int minorVersion = 0;
};

struct SiblingPrograms {
  Sibling sequencer;
  Sibling score;
};

// Available are versions from 3 on whose program file exists.
[[nodiscard]] SiblingPrograms FindSiblings(const Registry& registry);

}  // namespace ts5
