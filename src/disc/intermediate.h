// The sources of a disc made into wave files that can be burnt: decoded, converted, read from a disc,
// synthesised, normalised. What is in the format of the disc already is burnt as it is.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "disc/burn_parameters.h"
#include "disc/disc_session.h"
#include "frame/run.h"

namespace ts5::disc {

// A file that is synthesised: by its extension.
[[nodiscard]] bool IsMidiSource(const std::string& path);

struct PreparedFile {
  std::string source = {};
  std::string name = {};  // what is burnt
  bool original = true;   // that is the source itself
  bool usable = false;
  DiscOutcome outcome = {};
  std::uint64_t bytes = 0;  // of sound
  std::uint32_t pause = 0;  // sectors
  CdText::Entry text = {};
};

class Intermediate {
 public:
  Intermediate(Run& run, const BurnParameters& parameters);
  ~Intermediate();  // removes what is not to stay
  Intermediate(const Intermediate&) = delete;
  Intermediate& operator=(const Intermediate&) = delete;

  // Item number index of the run. Cancelled when the user has stopped it and said Yes.
  [[nodiscard]] PreparedFile Prepare(std::size_t index);
  // All prepared files with one gain, in place or into intermediate files. Good, or why not.
  [[nodiscard]] DiscOutcome NormaliseProject(std::vector<PreparedFile>& files);

  // The question that a stop asks.
  [[nodiscard]] bool ConfirmStop();

 private:
  [[nodiscard]] std::string NameOf(std::size_t index);
  [[nodiscard]] DiscOutcome Make(PreparedFile& file, const std::string& target, std::size_t index);
  [[nodiscard]] DiscOutcome ReadTrack(const std::string& source, const std::string& target,
                                      std::size_t index);
  [[nodiscard]] DiscOutcome ConvertMidi(const std::string& source, const std::string& target,
                                        const WorkWatch& watch);
  [[nodiscard]] DiscOutcome NormaliseOne(PreparedFile& file, const std::string& target);
  [[nodiscard]] WorkWatch Watch(std::size_t index);

  Run& run_;
  const BurnParameters& parameters_;
  std::string folder_;
  std::vector<std::string> made_;
  bool ownFolder_ = false;
};

}  // namespace ts5::disc
