// The run of a player: the titles of a job one after another, with the pauses between them, short play, and
// what the user does meanwhile. What a title is and where it sounds belongs to each player.
#pragma once

#include <array>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "frame/player_control.h"
#include "frame/player_parameters.h"
#include "frame/remarks.h"
#include "frame/texts.h"
#include "platform/base/outcome.h"

namespace ts5 {

class Run;

// One title, ready to be played. Play blocks on a thread of its own; all else comes from the worker
// meanwhile.
class PlayedTitle {
 public:
  virtual ~PlayedTitle() = default;
  // From the start to end, or to the end of the title. Success, Cancelled after Stop, WriteFailed when the
  // device has gone, ReadFailed when the file cannot be read on.
  [[nodiscard]] virtual Outcome Play(std::chrono::nanoseconds end) = 0;
  virtual void Stop() = 0;
  virtual void Pause() = 0;
  virtual void Resume() = 0;
  virtual void Seek(std::chrono::nanoseconds position) = 0;
  [[nodiscard]] virtual std::chrono::nanoseconds Position() const = 0;
  [[nodiscard]] virtual std::chrono::nanoseconds Duration() const = 0;
  // Where it is in bars, for music that has them.
  [[nodiscard]] virtual std::optional<BarBeat> Place() const { return std::nullopt; }
  // From any thread, also before Play; within the bounds of practice.h. What it cannot do it leaves out. With
  // a passage it does not end by itself.
  virtual void Practise(const Practice& /*practice*/) {}
  [[nodiscard]] virtual PlayerScore Score() const { return {}; }
  // What the window calls it; "" for the name of its file.
  [[nodiscard]] virtual std::string Name() const { return {}; }
};

// The device that the titles of a run are played on; it stays open from the first to the last.
class PlayerDevice {
 public:
  virtual ~PlayerDevice() = default;
  // InUse: a track of an audio CD whose drive is busy; CdDriveFailed: one that no drive plays.
  [[nodiscard]] virtual Result<std::unique_ptr<PlayedTitle>> Open(const std::string& source) = 0;
  virtual void SetSound(PlayerSound sound) = 0;
  // False once the device has gone; asked between two titles.
  [[nodiscard]] virtual bool Alive() { return true; }
  // The end of the run; a device that makes a file completes it.
  [[nodiscard]] virtual Outcome Close() = 0;
};

using OpenPlayer = std::function<Result<std::unique_ptr<PlayerDevice>>(Run&)>;

// What a player says of its titles: as the conversions do, but with its own words for a device that does not
// open, and its own row for titles that are damaged or of no use.
[[nodiscard]] constexpr std::array<Remark, 10> PlayerRemarks(TextId deviceFailed, Remark badTitle) {
  return {{{Code(Outcome::Cancelled), texts::RemarkCancelled},
           {Code(Outcome::OutOfMemory), texts::RemarkOutOfMemory},
           {Code(Outcome::ReadFailed), texts::RemarkReadFailed},
           {Code(Outcome::WriteFailed), texts::PlayerDeviceGone},
           {Code(Outcome::WrongFormat), texts::RemarkWrongFormat},
           {Code(Outcome::TargetFailed), deviceFailed},
           {Code(Outcome::SourceFailed), texts::RemarkSourceFailed},
           {Code(Outcome::CdDriveFailed), texts::PlayerCdFailed},
           {Code(Outcome::InUse), texts::PlayerCdBusy},
           badTitle}};
}

// Fills run.Result(): titles that were begun, that were played to their end (short play: to its end), and all
// that were not. A title that cannot be played is reported, and the run goes on.
void RunPlayer(Run& run, const PlayerOptions& options, const OpenPlayer& open);

}  // namespace ts5
