// A recorder and the disc in it, as a run of the burner or the copier uses them: waiting for a disc, looking
// at it, making the drive ready, recording with everything that is said about it, closing, reading back.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "disc/disc_plan.h"
#include "disc/recorder.h"
#include "frame/run.h"
#include "platform/disc/claimed_drive.h"

namespace ts5::disc {

// 0, or an outcome code with the number that its message shows.
struct DiscOutcome {
  std::int32_t code = 0;
  std::int32_t number = 0;

  [[nodiscard]] bool Good() const { return code >= 0; }
};

class DiscSession {
 public:
  // path: of the drive.
  DiscSession(Run& run, std::string path) : run_(run), path_(std::move(path)) {}

  // Opens the drive and waits up to two minutes for a disc.
  [[nodiscard]] DiscOutcome Open();
  // Looks at the disc: it must be blank.
  [[nodiscard]] DiscOutcome CheckBlank();
  // Free sectors, as the disc said.
  [[nodiscard]] std::uint32_t FreeSectors() const { return free_; }
  // Sets the speed and calibrates the laser.
  void Initialise(std::int32_t speed);
  [[nodiscard]] bool ProtectsFromUnderruns() const { return protects_; }

  [[nodiscard]] const std::string& Path() const { return path_; }
  [[nodiscard]] CdDrive& Drive() { return held_->drive; }
  // An engine for this drive that tells the run how far it is. track counts from 1; of: how many there are.
  [[nodiscard]] Recorder MakeRecorder(const RecordingMode& mode);
  // Reads the closed disc back. Good, kAnotherDisc, or with the first sector that is another or cannot
  // be read: kNotVerified, kNotReadBack.
  [[nodiscard]] DiscOutcome Verify(const DiscLayout& layout, std::span<const ProjectTrack> tracks,
                                   const RecordingMode& mode);
  // Lets the drive go, so that its disc can be changed.
  void ReleaseDrive(bool eject);
  // The end of the run: says how it ended, and lets the drive go.
  void End(const DiscOutcome& outcome, bool eject);

 private:
  // Takes the drive when there is a disc in it. CdDriveFailed: there is none; InUse; SourceFailed.
  [[nodiscard]] Outcome Take();

  Run& run_;
  std::string path_;
  std::optional<ClaimedDrive> held_;
  std::uint32_t free_ = 0;
  bool protects_ = false;
  RunProgress shown_ = {};  // the last of a recording, as it stands when nothing is written
};

// The drive that a run reads from, held and with a disc in it, or why not; both are said.
[[nodiscard]] tl::expected<ClaimedDrive, DiscOutcome> OpenSourceDrive(Run& run, const std::string& path);

// Puts a failure into the run's status list, and in words what an engine's number means.
void AddOutcome(Run& run, const DiscOutcome& outcome);

// The number of an engine's error for a message of the burner: what it means for the disc.
[[nodiscard]] DiscOutcome OutcomeOf(EngineError error, std::int32_t otherwise);

}  // namespace ts5::disc
