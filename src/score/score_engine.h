// Interprets a score into timed MIDI messages: one machine for measuring, playing, seeking and writing files,
// so that what sounds is what is written.
//
//   ScoreEngine engine(file, info, parameters, options, &sink);
//   Outcome outcome = engine.Begin();
//   while (outcome == Outcome::Success && !engine.AtEnd()) outcome = engine.Step();
//   engine.Finish();
//
// Time is counted in ticks, 480 to the quarter note, and goes on in steps of 15. The machine is pure: it
// neither sleeps nor opens anything. Damaged scores end with DamagedScore; every run ends, however the score
// repeats.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "midi/conductor.h"
#include "platform/bytes.h"
#include "platform/outcome.h"
#include "platform/work_watch.h"
#include "score/playback_parameters.h"
#include "score/score_info.h"
#include "score/score_objects.h"

namespace ts5 {

inline constexpr std::uint32_t kScoreStep = 15;
inline constexpr std::uint32_t kMaxJumps = 4096;  // repeats of a score; one with more is damaged
inline constexpr std::int8_t kNoKey = 127;
inline constexpr std::uint8_t kMetaBarLine = 0x30;  // in the conductor track, without data
inline constexpr std::uint8_t kMetaMark = 0x31;     // in a staff's track, without data

// Takes what the engine gives out. Track 0 is the conductor, track i + 1 staff layout i.
class ScoreSink {
 public:
  virtual ~ScoreSink() = default;
  // status in the low byte, then the data bytes
  virtual void Message(std::size_t track, std::uint32_t message) = 0;
  virtual void Meta(std::size_t track, std::uint8_t type, ByteView data) = 0;
  virtual void Advance(std::uint64_t ticks) = 0;  // time goes on in all tracks
};

struct ScorePosition {
  std::uint32_t bar = 0;  // from 0
  std::uint32_t beat = 0;
  std::uint32_t tick = 0;  // within the bar
};

// What a walk over the whole score finds out.
struct ScoreScan {
  std::uint64_t ticks = 0;         // with the lead-in
  std::uint64_t time = 0;          // 100 ns
  std::uint32_t leadIn = 0;        // ticks before an upbeat
  std::uint8_t articulations = 0;  // bit per Articulation that occurs
  std::uint8_t dynamics = 0;       // bit per mark fff..ppp
};

struct ScoreOptions {
  bool repeats = true;
  std::optional<std::uint32_t> tempo;  // held by the user
  std::vector<bool> silentStaves;      // by staff layout; shorter: they sound
  std::uint32_t leadIn = 0;            // as the scan found it
};

// Milliseconds that a step lasts.
[[nodiscard]] std::uint32_t StepMilliseconds(std::uint32_t tempo);
// Microseconds of a quarter note as tempo events have them, three bytes.
[[nodiscard]] std::uint32_t TempoMicroseconds(std::uint32_t tempo);

// The voices of each staff layout, from the whole body. DamagedScore, Cancelled.
[[nodiscard]] Result<std::vector<std::uint8_t>> CountVoices(ByteView file, const ScoreFileInfo& info,
                                                            const CancelCheck& cancelled = {});
// Gives every voice a channel that has none.
void AssignChannels(const ScoreFileInfo& info, const std::vector<std::uint8_t>& voices,
                    std::vector<VoiceChannels>& channels);

// Velocity and sounding length (ticks) of a group with an articulation code.
[[nodiscard]] std::uint8_t PlayedVelocity(const PlaybackParameters& parameters, std::uint8_t articulation);
[[nodiscard]] std::uint32_t PlayedLength(const PlaybackParameters& parameters, std::uint8_t articulation,
                                         std::uint32_t length);

class ScoreEngine {
 public:
  // All must outlive the engine. Without a sink it scans: nothing sounds, marks are recorded. The channels of
  // the parameters must be assigned. Parameters may change between steps.
  ScoreEngine(ByteView file, const ScoreFileInfo& info, const std::vector<std::uint8_t>& voices,
              const PlaybackParameters& parameters, ScoreOptions options, ScoreSink* sink);

  [[nodiscard]] Outcome Begin();  // what comes before the first step
  // Interprets what is due, then goes on by steps of which only the first may have had anything to do: at
  // least one, at most so many. DamagedScore.
  [[nodiscard]] Outcome Step(std::uint32_t most = UINT32_MAX);
  // The same, but no farther than to the first step at or behind the place, in the score's own time (100 ns).
  [[nodiscard]] Outcome StepTowards(std::uint64_t scoreTime);
  // Releases what still sounds.
  void Finish();

  [[nodiscard]] bool AtEnd() const { return atEnd_; }
  [[nodiscard]] std::uint64_t Ticks() const { return ticks_; }
  [[nodiscard]] std::uint64_t Time() const { return time_; }  // 100 ns
  // The time that the score itself gives the place, whatever tempo is held.
  [[nodiscard]] std::uint64_t ScoreTime() const { return scoreTime_; }  // 100 ns
  [[nodiscard]] std::uint32_t Tempo() const;
  [[nodiscard]] ScorePosition Position() const;
  [[nodiscard]] ScoreScan Scan() const;
  void HoldTempo(std::optional<std::uint32_t> tempo) { options_.tempo = tempo; }
  void Silence(std::vector<bool> staves) { options_.silentStaves = std::move(staves); }

 private:
  struct Sounding {
    std::uint8_t status = 0;
    std::uint8_t key = 0;  // before the note map
  };
  struct Voice {
    std::size_t position = 0;   // of its next object in the file
    std::uint32_t objects = 0;  // still to come in this system
    std::int64_t time = 0;
    std::int64_t end = 0;  // of what sounds; 0 nothing, negative: tied onward
    std::uint8_t soundingCount = 0;
    std::array<Sounding, kMaxChordKeys> sounding{};
    std::int8_t key = kNoKey;
    std::int16_t level = 0;
    std::int16_t target = 0;
    std::int32_t hairpin = 0;
    std::uint32_t fullLength = 0;  // groups to come that are not shortened
    std::uint32_t graceDebt = 0;   // ticks that grace groups took from the next one
    bool tiedOnward = false;
  };
  struct Staff {
    ScoreClef clef;
    std::array<Voice, kMaxVoices> voices;
  };
  // What a repeat goes back to.
  struct State {
    std::uint32_t tempo = kDefaultTempo;
    ScoreTimeSignature time;
    std::uint32_t bar = 0;
    std::uint32_t barTick = 0;
    std::uint32_t system = 0;        // index of the current one
    std::size_t nextSystem = 0;      // file position behind it
    std::vector<std::size_t> order;  // staff layouts of the current system
    std::vector<Staff> staves;
    std::int64_t now = 0;  // exact time of the place, for moving it
  };
  enum class Pending : std::uint8_t { None, Start, Jump, PassAndStart, Pass };

  [[nodiscard]] Outcome Interpret();  // what is due now
  [[nodiscard]] Outcome GoOn(std::uint32_t most);
  [[nodiscard]] bool ReadSystem();
  [[nodiscard]] bool RunVoices();
  [[nodiscard]] bool RunVoice(std::size_t layout, std::size_t voice, bool first);
  [[nodiscard]] bool SystemEnded() const;
  void BarLine(BarLineType type, std::int64_t at, std::size_t by);
  void Group(const ScoreObject& object, std::size_t layout, std::size_t voice);
  void Chord(const NoteGroup& group, std::size_t layout, std::size_t voice, std::uint32_t length, bool grace);
  void Strike(const NoteGroup& group, std::size_t layout, std::size_t voice);
  void ApplyMarks(const DrawnMarks& marks, std::size_t layout, std::size_t voice);
  void ActDynamics(std::size_t layout, std::size_t voice, std::int16_t before);
  void SetLevel(std::size_t layout, std::size_t voice, int level, int hairpin, bool step);
  void SendVolume(std::size_t layout, std::size_t voice, int level);
  void ReleaseDue();
  void Release(std::size_t layout, Voice& voice);
  void ReleaseAll(State& state);
  [[nodiscard]] bool EndingBegins(std::int64_t& at);
  void SkipEnding(std::int64_t at);
  void SettleRepeat();
  void GoTo(State state, std::int64_t at);
  void NoteSignature(std::int64_t at);
  void WriteConductor();
  void WriteTime();
  void Settle(Pending pending, std::int64_t at, std::size_t by);
  void WriteKey(int key);
  void WriteTempo();
  void SetUp();
  void Advance(std::uint32_t steps);
  [[nodiscard]] std::uint32_t IdleSteps(std::uint32_t most) const;
  [[nodiscard]] int FirstKey() const;
  [[nodiscard]] std::uint8_t Channel(std::size_t layout, std::size_t voice) const;
  [[nodiscard]] static std::uint32_t TicksPerBar(const ScoreTimeSignature& time);
  static void PassBars(State& state, std::uint32_t steps);
  [[nodiscard]] bool Holds() const { return pending_ != Pending::None && pending_ != Pending::Pass; }
  void RecordMarks(const NoteGroup& group);

  ByteView file_;
  const ScoreFileInfo& info_;
  const std::vector<std::uint8_t>& voices_;
  const PlaybackParameters& parameters_;
  ScoreOptions options_;
  ScoreSink* sink_;

  State state_;
  State snapshot_;
  std::array<std::uint8_t, 16> volumes_{};  // last sent to each channel
  std::uint64_t ticks_ = 0;
  std::uint64_t time_ = 0;
  std::uint64_t scoreTime_ = 0;
  bool atEnd_ = false;
  bool secondPass_ = false;
  bool endingSkipped_ = false;
  bool clearSecondPass_ = false;
  std::uint32_t afterJump_ = 0;  // objects for which a tie flag alone does not tie
  std::uint32_t jumps_ = 0;
  Pending pending_ = Pending::None;
  std::int64_t pendingAt_ = 0;
  std::size_t pendingBy_ = 0;
  std::int64_t repeatedAt_ = -1;  // the last repeat, and the voice that had its bar line first
  std::size_t repeatedBy_ = 0;
  bool signatureSeen_ = false;
  std::uint32_t foundLeadIn_ = 0;
  ScoreScan scan_;
  ScoreTimeSignature writtenTime_;
  std::uint32_t writtenTempo_ = 0;
  int writtenKey_ = 0;
  int firstVoiceKey_ = 0;
};

// A walk over the whole score without sound. DamagedScore, Cancelled.
[[nodiscard]] Result<ScoreScan> ScanScore(ByteView file, const ScoreFileInfo& info,
                                          const std::vector<std::uint8_t>& voices,
                                          const PlaybackParameters& parameters, bool repeats = true,
                                          const CancelCheck& cancelled = {});

}  // namespace ts5
