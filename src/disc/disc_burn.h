// Files that are ready, written to one disc after the other: simulation, copies, closing, reading back. What
// the burner and the copier have in common.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "disc/burn_parameters.h"
#include "disc/disc_session.h"
#include "frame/run.h"

namespace ts5::disc {

struct BurnOrder {
  BurnAction action = BurnAction::Burn;
  std::int32_t copies = 1;
  std::int32_t speed = 8;
  bool eject = false;
  bool verify = true;
  RecordingMode mode = {};
  CdText::Entry title = {};  // of the disc, to be remembered
  TextId burning;            // "Brenne die gesamte CD-Kopie Nr.%s..."
  TextId simulating;
  TextId done;    // with the number of the copy
  TextId failed;  // with the number of the copy, or without one
};

struct BurnCounts {
  std::uint32_t tracks = 0;  // written well, of all copies
  std::uint32_t discs = 0;
};

// The tracks of a disc that is written track by track: each is made ready when its turn comes.
struct TrackQueue {
  std::size_t count = 0;
  // Number index, which is called anew for each copy; nothing for one that is left out. A failure ends.
  std::function<DiscOutcome(std::size_t index, std::optional<ProjectTrack>&)> next;
  std::function<std::string(std::size_t index)> name;
  std::function<bool()> stopped;  // asks the user
  TextId notBurnt = {};           // with the name, or without one
  TextId notSimulated = {};
};

// The outcome of a whole disc, as the run's status list has it too.
class DiscBurn {
 public:
  // next asks for another disc; false ends.
  DiscBurn(Run& run, DiscSession& session, BurnOrder order, std::function<bool()> next);

  // At once: simulation and all copies, from tracks that are all there.
  [[nodiscard]] DiscOutcome RecordDiscs(std::vector<ProjectTrack>& tracks);
  // Track by track: the same. What is on a disc is closed in any case.
  [[nodiscard]] DiscOutcome RecordTracks(const TrackQueue& queue);

  [[nodiscard]] const BurnCounts& Counts() const { return counts_; }
  // What CD-TEXT the disc gets.
  void SetText(CdText text) { order_.mode.text = std::move(text); }
  // Whether the drive refused the cue sheet the last time.
  [[nodiscard]] bool CueSheetRefused() const { return cueSheetRefused_; }
  // Then a remark where pauses of these tracks may be why.
  void HintAtPauses(std::span<const ProjectTrack> tracks) const;
  [[nodiscard]] RecordingMode Mode(bool testWrite) const;

 private:
  void Say(TextId text, std::int32_t copy) const;
  void SayMode(std::int32_t copy);
  void SayHurry(const Recorder& recorder);
  [[nodiscard]] DiscOutcome Simulate(std::vector<ProjectTrack>& tracks);
  [[nodiscard]] DiscOutcome RecordCopy(std::vector<ProjectTrack>& tracks, std::int32_t copy);
  [[nodiscard]] DiscOutcome RecordQueue(const TrackQueue& queue, bool simulate, std::int32_t copy);
  [[nodiscard]] DiscOutcome RecordOne(Recorder& recorder, const ProjectTrack& track, const TrackQueue& queue,
                                      std::size_t index, bool simulate);
  // Closes what was written, and reads it back.
  [[nodiscard]] DiscOutcome Finish(Recorder& recorder, std::vector<ProjectTrack>& tracks, std::int32_t copy);
  void Remember(const DiscLayout& layout, std::span<const ProjectTrack> tracks) const;
  // Another disc behind that copy, with room for as many sectors.
  [[nodiscard]] DiscOutcome NextDisc(std::int32_t copy);

  Run& run_;
  DiscSession& session_;
  BurnOrder order_;
  std::function<bool()> next_;
  std::vector<ProjectTrack> written_;  // of this disc, track by track
  std::uint32_t needed_ = 0;           // sectors of the project
  BurnCounts counts_;
  bool cueSheetRefused_ = false;
};

// A status text with the number of the copy, the name of a track..., or a text that takes none.
[[nodiscard]] std::string TextWith(TextId text, std::string_view value);

// The question for another disc: shows the results so far, which fill() puts into the run's. True for OK.
[[nodiscard]] bool AskForNextDisc(Run& run, const std::function<void()>& fill);

}  // namespace ts5::disc
