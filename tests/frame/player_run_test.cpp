// The run of every player, with a device that does as the test wants.
#include "frame/player_run.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

#include "frame/practice_book.h"
#include "frame/run_support.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using std::chrono::nanoseconds;
using testing::ElementsAre;

constexpr const char* kGone = "Das Ausgabegerät nimmt keine Daten mehr an.";
constexpr const char* kFailed = "Diese Datei kann nicht abgespielt werden.";
constexpr const char* kSomeFailed = "Eine oder mehrere Dateien konnten nicht abgespielt werden.";

class Title final : public PlayedTitle {
 public:
  Title(Outcome end, PlayerControl& control) : end_(end), control_(control) {}
  // The user chooses something just before the end.
  Outcome Play(nanoseconds /*end*/) override {
    Practice slow;
    slow.speed = 60;
    control_.SetPractice(slow);
    return end_;
  }
  void Stop() override {}
  void Pause() override {}
  void Resume() override {}
  void Seek(nanoseconds /*position*/) override {}
  nanoseconds Position() const override { return {}; }
  nanoseconds Duration() const override { return std::chrono::seconds(1); }

 private:
  Outcome end_;
  PlayerControl& control_;
};

// Titles end as their names say: "gut", "weg" (the device goes), "still" (it is found gone afterwards). Any
// other cannot be opened.
class Device final : public PlayerDevice {
 public:
  explicit Device(PlayerControl& control) : control_(control) {}
  Result<std::unique_ptr<PlayedTitle>> Open(const std::string& source) override {
    if (!alive_) return Failure(Outcome::WriteFailed);
    if (source == "still") alive_ = false;
    if (source == "gut" || source == "still") return std::make_unique<Title>(Outcome::Success, control_);
    if (source == "weg") return std::make_unique<Title>(Outcome::WriteFailed, control_);
    return Failure(Outcome::WrongFormat);
  }
  void SetSound(PlayerSound /*sound*/) override {}
  bool Alive() override { return alive_; }
  Outcome Close() override { return Outcome::Success; }

 private:
  PlayerControl& control_;
  bool alive_ = true;
};

class PlayerRunTest : public testing::Test {
 protected:
  RunResult Play(const std::vector<std::string>& titles, const PlayerOptions& options = {}) {
    FilterModule module;
    module.id = FilterId::MidiPlayer;
    module.create = [] { return std::make_unique<PlayerParameters>(); };
    const auto open = [](ts5::Run& run) -> Result<std::unique_ptr<PlayerDevice>> {
      return std::make_unique<Device>(run.Player());
    };
    module.run = [&](ts5::Run& run) { RunPlayer(run, options, open); };
    static constexpr auto kRemarks =
        PlayerRemarks(texts::PlayerMidiDeviceFailed, {Code(Outcome::DamagedMidi), texts::RemarkDamagedMidi});
    module.remarks = kRemarks;
    host_ = std::make_shared<test::RecordingHost>();
    RunSetup setup{.job = test::ListJob(titles, module)};
    setup.practices = practices_;
    return test::RunJob(setup.job, module, {}, host_, setup);
  }
  static std::vector<std::uint32_t> Counts(const RunResult& result) {
    return {result.counts[0], result.counts[1], result.counts[2]};
  }

  test::TemporaryDirectory directory_;
  std::shared_ptr<PracticeBook> practices_ = std::make_shared<PracticeBook>(directory_.File("practice.ini"));
  std::shared_ptr<test::RecordingHost> host_;
};

TEST_F(PlayerRunTest, ATitleThatCannotBePlayedIsReportedAndTheRunGoesOn) {
  RunResult result = Play({"gut", "kaputt", "gut"});
  EXPECT_THAT(Counts(result), ElementsAre(2, 2, 1));
  EXPECT_THAT(host_->notices, ElementsAre(kSomeFailed));
  EXPECT_THAT(host_->lines, ElementsAre("kaputt: " + std::string(kFailed)));
  EXPECT_EQ(result.remarks.back(), kSomeFailed);
  result = Play({"kaputt"});
  EXPECT_THAT(host_->notices, ElementsAre(kFailed)) << "once";
  EXPECT_EQ(result.remarks.back(), kSomeFailed);
  result = Play({"gut"});
  EXPECT_THAT(host_->notices, testing::IsEmpty());
  EXPECT_THAT(result.remarks, testing::IsEmpty());
}

TEST_F(PlayerRunTest, WhatIsChosenAtTheVeryEndHoldsTheNextTime) {
  Play({"gut"});
  EXPECT_EQ(practices_->Of("gut").speed, 60);
}

TEST_F(PlayerRunTest, ADeviceThatGoesEndsTheRunAndIsNamed) {
  RunResult result = Play({"gut", "weg", "gut"});
  EXPECT_THAT(Counts(result), ElementsAre(2, 1, 1)) << "the third is not tried";
  EXPECT_EQ(result.items.back().code, Code(Outcome::WriteFailed));
  EXPECT_THAT(host_->notices, ElementsAre(kGone, kSomeFailed));
  EXPECT_THAT(result.remarks, ElementsAre(kGone, kSomeFailed));

  PlayerOptions options;
  options.interval = kLongestPause;  // nor is the pause kept: it takes an hour
  result = Play({"still", "gut", "gut"}, options);
  EXPECT_THAT(Counts(result), ElementsAre(1, 1, 1));
  EXPECT_THAT(host_->notices, ElementsAre(kGone, kSomeFailed));
}

}  // namespace
}  // namespace ts5
