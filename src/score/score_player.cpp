#include "score/score_player.h"

#include <memory>
#include <utility>

#include "frame/player_run.h"
#include "frame/run.h"
#include "frame/texts.h"
#include "midi/midi_transposer.h"
#include "midi/player_output.h"
#include "platform/base/text.h"
#include "platform/files/paths.h"
#include "platform/sound/thread_priority.h"
#include "score/bar_times.h"
#include "score/parameter_set.h"
#include "score/score_filter.h"
#include "score/score_midi.h"
#include "score/score_performer.h"
#include "score/score_stage.h"
#include "score/texts.h"

namespace ts5 {
namespace {

using std::chrono::nanoseconds;

class ScoreTitle final : public PlayedTitle {
 public:
  ScoreTitle(OpenScore score, const PlaybackParameters& parameters, bool repeats, ScoreStage& stage,
             MidiOutput& output)
      : score_(std::move(score)),
        bars_(BarTimes(score_, parameters, repeats)),
        transposer_(output),
        performer_(score_, repeats, stage, transposer_) {}

  Outcome Play(nanoseconds end) override {
    HurryThisThread();
    // A tempo that the user holds makes the title longer or shorter than it is.
    return end < Duration() ? performer_.Run(end) : performer_.Run();
  }
  void Stop() override { performer_.Stop(); }
  void Pause() override { performer_.Pause(); }
  void Resume() override { performer_.Resume(); }
  void Seek(nanoseconds position) override { performer_.Seek(position); }
  nanoseconds Position() const override { return performer_.Position(); }
  nanoseconds Duration() const override { return performer_.Duration(); }
  std::optional<BarBeat> Place() const override { return performer_.Place(); }
  void Practise(const Practice& practice) override {
    transposer_.SetShift(practice.shift);
    performer_.Practise(practice);
  }
  PlayerScore Score() const override {
    std::vector<std::string> names;
    for (const StaffLayout& staff : score_.info.staves) {
      const bool named = !Trim(staff.name).empty();
      names.push_back(named ? staff.name : Format(Text(texts::PracticeStaff), names.size() + 1));
    }
    return {std::move(names), bars_, true};
  }

 private:
  OpenScore score_;
  std::vector<nanoseconds> bars_;
  MidiTransposer transposer_;
  ScorePerformer performer_;
};

class ScoreDevice final : public PlayerDevice {
 public:
  ScoreDevice(Run& run, const ScorePlayerParameters& parameters, std::unique_ptr<MidiLevel> output)
      : run_(run), output_(std::move(output)), stage_(std::make_shared<ScoreStage>(parameters)) {
    run_.Player().SetStage(stage_);
  }

  Result<std::unique_ptr<PlayedTitle>> Open(const std::string& source) override {
    // A title begins on a device that stands as if nothing had been played before.
    if (begun_) {
      if (const Outcome reset = output_->Reset(); Failed(reset)) return Failure(reset);
    }
    begun_ = true;
    run_.StatusText(Format(Text(texts::ScoreReading), FileNameOf(source)));
    ScoreParameters parameters = stage_->Base().For(source);
    auto score =
        OpenAndScan(source, parameters.playback, parameters.playRepeats, [this] { return run_.Cancelled(); });
    if (!score) return Failure(score.error());
    score->image = {};  // the engine plays
    const std::string& sets = run_.GetSettings().playbackParameterDirectory;
    if (Failed(LoadAutomaticSet(sets, source, score->voices, parameters)))
      run_.Notice(SetFailure(AutomaticParameterSet(sets, source)));
    if (score->scan.time == 0) return Failure(Outcome::NoPlayingTime);
    const bool repeats = parameters.playRepeats;
    const PlaybackParameters playback = parameters.playback;
    stage_->Open(std::make_shared<ScoreAtHand>(DescribeScore(source, *score)), std::move(parameters));
    run_.StatusText(Format(Text(texts::PlayerNowPlaying), FileNameOf(source)));
    return std::make_unique<ScoreTitle>(*std::move(score), playback, repeats, *stage_, *output_);
  }
  void SetSound(PlayerSound sound) override { output_->SetSound(sound); }
  bool Alive() override { return output_->Alive(); }
  Outcome Close() override {
    run_.Player().SetStage(nullptr);
    return output_->Close();
  }

 private:
  Run& run_;
  std::unique_ptr<MidiLevel> output_;
  std::shared_ptr<ScoreStage> stage_;
  bool begun_ = false;
};

Result<std::unique_ptr<PlayerDevice>> OpenDevice(Run& run, const ScorePlayerParameters& parameters) {
  auto output = OpenPlayerOutput(run);
  if (!output) return Failure(Outcome::MidiDeviceFailed);
  return std::make_unique<ScoreDevice>(run, parameters, *std::move(output));
}

}  // namespace

FilterModule ScorePlayerModule() {
  using P = ScorePlayerParameters;
  FieldTable<P> table;
  AddPlayerFields(table);
  AddScoreFields(table);
  return MakeModule<P>(
      {.id = FilterId::ScorePlayer,
       .fields = table.Build(),
       .run = [](Run& run,
                 const P& own) { RunPlayer(run, own, [&own](Run& r) { return OpenDevice(r, own); }); },
       .remarks = ScoreRemarks(),
       .midiDevice = [](const P&, const Job& job) { return std::optional(PlayerDeviceIndex(job)); }});
}

}  // namespace ts5
