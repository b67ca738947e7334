// The recording engine: writes a disc at once, or track by track, and closes it. What reads sound and what
// writes it are two threads with the pipe between them; the writing thread never touches a file.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string_view>

#include "disc/disc_plan.h"
#include "disc/sector_pipe.h"
#include "platform/disc/cd_drive.h"

namespace ts5::disc {

// What went wrong, as the messages of the jobs show it; 0: nothing. A failed WRITE or CLOSE is a
// SenseNumber().
using EngineError = std::uint32_t;
namespace engine {
inline constexpr EngineError kNone = 0;
inline constexpr EngineError kDiscUnknown = 1200;  // disc information
inline constexpr EngineError kNoWritable = 1202;   // where the next track would begin
inline constexpr EngineError kSourceRead = 2004;
inline constexpr EngineError kPipeBroken = 2005;
inline constexpr EngineError kLastStep = 2008;
inline constexpr EngineError kSourceOpen = 2200;
inline constexpr EngineError kCueSheet = 2401;
inline constexpr EngineError kParametersUnread = 2600;
inline constexpr EngineError kParametersRefused = 2601;
// 03/0C/09 of a WRITE: the buffer ran dry.
[[nodiscard]] bool IsUnderrun(EngineError error);
}  // namespace engine

struct RecordingProgress {
  int track = 0;
  std::uint32_t done = 0;  // sectors that the drive took
  std::uint32_t total = 0;
  std::uint32_t fed = 0;  // sectors that came into the pipe
  double buffer = 0;      // fill of the pipe, 0 to 1
};

// Called on the thread that records; may be empty.
struct RecordingEvents {
  std::function<void(std::string_view)> status = {};
  std::function<void(const RecordingProgress&)> progress = {};
  std::function<void()> ended = {};  // nothing is written any more
};

class Recorder {
 public:
  // The drive outlives the recorder.
  Recorder(CdDrive& drive, RecordingMode mode, RecordingEvents events = {});

  // The whole disc, up to its last sector in the drive; CloseDisc() finishes it.
  [[nodiscard]] EngineError RecordDiscAtOnce(std::span<const ProjectTrack> tracks);
  // One track behind those that are there, and closes it.
  [[nodiscard]] EngineError RecordTrack(const ProjectTrack& track, int number);
  [[nodiscard]] EngineError CloseDisc();

  // Whether the writing thread got the priority that it asked for.
  [[nodiscard]] bool Hurried() const { return hurried_; }
  [[nodiscard]] const DiscLayout& Layout() const { return layout_; }  // of what was recorded

 private:
  struct Stream;
  [[nodiscard]] EngineError SetParameters(std::uint8_t control, const std::string& isrc);
  [[nodiscard]] EngineError WriteTexts();
  [[nodiscard]] EngineError Write(Lba start, std::uint32_t total, std::span<const ProjectTrack> tracks,
                                  std::span<const PlannedTrack> plan, int firstNumber);
  void Say(std::string_view text) const;

  CdDrive& drive_;
  RecordingMode mode_;
  RecordingEvents events_;
  DiscLayout layout_;
  bool hurried_ = false;
};

// --- the two halves, as steps without threads

// Feeds one piece of the stream: silence, sound, padding. step is called after each portion.
[[nodiscard]] EngineError FeedTrack(SectorPipe& pipe, const ProjectTrack& track, const PlannedTrack& plan,
                                    const std::function<void()>& step);

// Takes portions out of the pipe and writes them.
class SectorWriter {
 public:
  SectorWriter(SectorPipe& pipe, CdDrive& drive, Lba start) : pipe_(pipe), drive_(drive), next_(start) {}
  // One portion; false at the end, or after an error.
  [[nodiscard]] bool Step();
  [[nodiscard]] EngineError Error() const { return error_; }
  [[nodiscard]] Lba Next() const { return next_; }

 private:
  SectorPipe& pipe_;
  CdDrive& drive_;
  Lba next_;
  EngineError error_ = engine::kNone;
};

// "Track 2: 100 Frames von 400 gebrannt (25%)..." in the words of the mode.
[[nodiscard]] std::string ProgressText(const RecordingProgress& progress, const RecordingMode& mode);

}  // namespace ts5::disc
