// Interprets a score into timed MIDI messages: one machine for measuring, playing, seeking and writing files,
// so that what sounds is what is written.
//
//   ScoreEngine engine(file, info, parameters, options, &sink);
//   Outcome outcome = engine.Begin();
//   while (outcome == Outcome::Success && !engine.AtEnd()) outcome = engine.Step();
//   engine.Finish();
//
// Time is counted in ticks, 480 to the quarter note, and goes on in steps of 15. Repeats, endings and the
// words of jumps (jump_words.h) are followed: what is written is what sounds. The machine is pure: it neither
// sleeps nor opens anything. Damaged scores end with DamagedScore; every run ends, however the score repeats.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "midi/conductor.h"
#include "platform/base/bytes.h"
#include "platform/base/outcome.h"
#include "platform/base/work_watch.h"
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

  [[nodiscard]] std::chrono::nanoseconds Length() const {
    return std::chrono::nanoseconds(static_cast<std::int64_t>(time) * 100);
  }
};

struct ScoreOptions {
  bool repeats = true;
  std::optional<std::uint32_t> tempo;  // held by the user
  std::vector<bool> silentStaves;      // by staff layout; shorter: they sound
  std::uint32_t leadIn = 0;            // as the scan found it
};

// What a step lasts at a tempo that is not 0, in 100 ns, without its fraction: 156250 at 120. The engine
// keeps the fractions.
[[nodiscard]] std::uint32_t StepTime(std::uint32_t tempo);
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
  [[nodiscard]] std::uint64_t Time() const { return clock_.time; }  // 100 ns
  // The time that the score itself gives the place, whatever tempo is held.
  [[nodiscard]] std::uint64_t ScoreTime() const { return scoreClock_.time; }  // 100 ns
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
    std::int64_t now = 0;    // exact time of the place, for moving it
    std::uint8_t words = 0;  // of jumps, due at the next bar line behind
    std::int64_t wordsAt = 0;
  };
  using Snapshot = std::shared_ptr<const State>;
  // What the bar lines of a step ask for. A voice that meets one waits until all voices of the step have been
  // seen.
  struct Turn {
    bool end = false;    // of a repeat; it may go back
    bool pass = false;   // of a repeat; it does not
    bool start = false;  // of a repeat
    bool both = false;   // an end that is a start as well
    bool segno = false;
    std::uint8_t words = 0;
    std::int64_t at = 0;
    std::size_t by = 0;  // the voice

    [[nodiscard]] bool Holds() const { return end || start || segno || words != 0; }
    [[nodiscard]] bool Any() const { return Holds() || pass; }
  };
  // An ending that a repeat end closed: passed over later by going to where it led.
  struct Ending {
    std::vector<std::size_t> brackets;  // file positions of their groups
    Snapshot behind;
  };
  // Where a run through a repeated section stands.
  struct Section {
    Snapshot start = {};      // where a repeat end goes back to
    Snapshot origin = {};     // where the passes began
    unsigned pass = 1;        // of the section
    unsigned times = 2;       // that it is played without endings
    bool again = false;       // since a jump back, until the ending is passed
    bool ending = false;      // one was passed over in the step before: again ends with the next one
    std::uint8_t lastOf = 0;  // the last number of the ending that is played
    std::vector<std::size_t> brackets = {};  // seen in this pass
    bool inEnding = false;                   // that began last
    std::uint32_t endingLeft = 0;            // chords of its voice until it is over; 0 the repeat end says so
    std::size_t endingOf = 0;                // its voice
  };
  // A clock of 100 ns that keeps the fractions of steps.
  struct Clock {
    std::uint64_t time = 0;
    std::uint64_t rest = 0;
    std::uint32_t tempo = 0;  // that the rest is a fraction of
    void Advance(std::uint64_t steps, std::uint32_t tempo);
  };

  [[nodiscard]] Outcome Interpret();  // what is due now
  [[nodiscard]] Outcome GoOn(std::uint32_t most);
  [[nodiscard]] bool ReadSystem();
  [[nodiscard]] bool RunVoices();
  [[nodiscard]] bool RunVoice(std::size_t layout, std::size_t voice, bool first);
  [[nodiscard]] bool SystemEnded() const;
  void BarLine(const Voice& voice, BarLineType type, std::size_t by);
  void Group(const ScoreObject& object, std::size_t layout, std::size_t voice);
  void Chord(const NoteGroup& group, std::size_t layout, std::size_t voice, std::uint32_t length, bool grace);
  void Strike(const NoteGroup& group, std::size_t layout, std::size_t voice);
  void ApplyMarks(const DrawnMarks& marks, std::size_t layout, std::size_t voice);
  void ActDynamics(std::size_t layout, std::size_t voice, std::int16_t before, int mark);
  void ActAccent(std::size_t layout, std::size_t voice, int before);
  void SetLevel(std::size_t layout, std::size_t voice, int level, int hairpin, bool step);
  void SendVolume(std::size_t layout, std::size_t voice, int level);
  void RememberVolume(std::size_t layout, std::size_t voice, int level);
  void ReleaseDue();
  void Release(std::size_t layout, Voice& voice);
  void ReleaseAll(State& state);
  void TakeTurn();
  void FollowWords(std::uint8_t words, std::int64_t at);
  [[nodiscard]] Snapshot TurnsBackTo() const;
  void TurnBack(const Snapshot& target, std::int64_t at);
  [[nodiscard]] Snapshot SnapshotAt(std::int64_t at);
  void NoteEnding(const ScoreGroup& group, std::size_t position, std::size_t by);
  void CountEnding(std::size_t by);
  [[nodiscard]] Snapshot EndingBegins(std::int64_t& at) const;
  void SkipEnding(const Snapshot& behind, std::int64_t at);
  [[nodiscard]] Snapshot BehindEnding(const ScoreGroup& group, std::size_t bracket) const;
  [[nodiscard]] std::optional<ScoreGroup> NextGroup(std::size_t position, std::uint32_t objects) const;
  [[nodiscard]] bool NextGroupOfAny(bool (*is)(const ScoreGroup&, unsigned), unsigned wanted) const;
  [[nodiscard]] static bool HasSegno(const ScoreGroup& group, unsigned wanted);
  [[nodiscard]] static bool BeginsEnding(const ScoreGroup& group, unsigned number);
  [[nodiscard]] static bool IsGrace(const ScoreGroup& group);
  [[nodiscard]] static bool IsOfEnding(const ScoreGroup& group);
  [[nodiscard]] Snapshot Leave(std::int64_t at);
  void GoTo(const State& state, std::int64_t at);
  void NoteSignature(std::int64_t at);
  void WriteConductor();
  void WriteTime();
  void WriteKey(int key);
  void WriteTempo();
  void SetUp();
  void Advance(std::uint32_t steps);
  [[nodiscard]] std::uint32_t IdleSteps(std::uint32_t most) const;
  [[nodiscard]] int FirstKey() const;
  [[nodiscard]] std::uint8_t Channel(std::size_t layout, std::size_t voice) const;
  [[nodiscard]] static std::uint32_t TicksPerBar(const ScoreTimeSignature& time);
  static void PassBars(State& state, std::uint32_t steps);
  [[nodiscard]] bool Silent(std::size_t layout) const {
    return layout < options_.silentStaves.size() && options_.silentStaves[layout];
  }
  void RecordMarks(const NoteGroup& group);

  ByteView file_;
  const ScoreFileInfo& info_;
  const std::vector<std::uint8_t>& voices_;
  const PlaybackParameters& parameters_;
  ScoreOptions options_;
  ScoreSink* sink_;

  State state_;
  std::array<std::uint8_t, 16> volumes_{};  // last sent to each channel
  std::uint64_t ticks_ = 0;
  Clock clock_;
  Clock scoreClock_;
  bool atEnd_ = false;

  // repeats
  bool hasSegno_ = false;  // a text of the file may be one
  bool skipping_ = false;  // an ending is passed over: what stands before it is still read
  bool jumped_ = false;    // by Da Capo or Dal Segno
  Section section_;
  std::vector<Ending> endings_;
  Snapshot begin_;
  Snapshot segno_;
  Snapshot coda_;                // behind the last Da Capo or Dal Segno
  std::uint32_t afterJump_ = 0;  // objects for which a tie flag alone does not tie
  std::uint32_t jumps_ = 0;
  Turn turn_;
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
