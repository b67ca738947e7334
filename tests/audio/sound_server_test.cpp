// Playing and recording on a sound server, and what is left when it goes.
#include "support/sound_server.h"

#include <gmock/gmock.h>
#include <signal.h>

#include <chrono>
#include <thread>

#include "audio/audio_player.h"
#include "audio/midi_recording.h"
#include "audio/wave_file.h"
#include "frame/player_parameters.h"
#include "frame/run_support.h"
#include "midi/midi_sequence.h"
#include "platform/sound/midi_out.h"
#include "platform/sound/sound_places.h"
#include "platform/sound/synthesizer.h"
#include "support/matchers.h"

namespace ts5 {
namespace {

using namespace std::chrono_literals;
using test::IsOk;

class SoundServerTest : public testing::Test {
 protected:
  void SetUp() override {
    if (!server_.Runs()) GTEST_SKIP() << "no sound server on this machine";
  }

  test::SoundServer server_;
  test::TemporaryDirectory folder_;
};

TEST_F(SoundServerTest, ARecordingHoldsThePieceFromItsFirstNote) {
  if (Synthesizer::InstalledSoundFont().empty()) GTEST_SKIP() << "no sound font on this machine";
  const std::string song = test::DataPath("midi/jazzsoft_test-c-major-scale.mid");
  const std::string content = test::Content(song);
  const auto sequence = MidiSequence::FromFile(AsBytes(content));
  ASSERT_THAT(sequence, IsOk());
  auto target = StagedFile::Create(folder_.File("aufnahme.wav"));
  ASSERT_THAT(target, IsOk());
  ASSERT_THAT(
      RecordMidi(song, *target, AudioCdFormat(), {std::string(kSynthesizerName), "Monitor of Null Output"}),
      IsOk());
  ASSERT_THAT(target->Commit(), IsOk());
  const auto wave = WaveFile::Open(folder_.File("aufnahme.wav"));
  ASSERT_THAT(wave, IsOk());
  const double length = static_cast<double>(wave->DataSize()) / wave->Format().bytesPerSecond;
  // A second is added to the piece; a server that settles while it plays already swallows notes.
  EXPECT_GT(length, std::chrono::duration<double>(sequence->Duration()).count() + 0.8);
}

TEST_F(SoundServerTest, WhatIsToBeHeardAtOnceSoundsThere) {
  const SoundPlaces places = FindSoundPlaces();
  EXPECT_EQ(places.audio, std::optional<std::string>(""));
  const bool font = !Synthesizer::InstalledSoundFont().empty();
  EXPECT_EQ(places.midi == kSynthesizerName, font);
}

TEST_F(SoundServerTest, AServerThatGoesOrHangsEndsThePlayback) {
  const std::string song = folder_.File("lang.wav");
  auto wave = WaveFile::Create(song, PcmFormat(8000, 16, 2));
  ASSERT_THAT(wave, IsOk());
  ASSERT_THAT(wave->Write(Bytes(std::size_t{8000} * 4 * 120, 1)), IsOk());
  ASSERT_THAT(wave->Close(), IsOk());
  const FilterModule module = AudioPlayerModule();
  for (const int signal : {SIGSTOP, SIGKILL}) {
    const Job job = test::ListJob({song, song}, module);
    std::jthread killer([&] {
      for (int i = 0; i < 2000 && job.run->player.Status().position < 300ms; ++i)
        std::this_thread::sleep_for(5ms);
      server_.Signal(signal);
    });
    const auto host = std::make_shared<test::RecordingHost>();
    const RunResult result = test::RunJob(job, module, {}, host);
    killer.join();
    ASSERT_EQ(result.items.size(), 1U) << "the second title is not tried";
    EXPECT_EQ(result.items[0].code, Code(Outcome::WriteFailed));
    EXPECT_THAT(host->notices, testing::Contains("Das Ausgabegerät nimmt keine Daten mehr an."));
    server_.Signal(SIGCONT);
  }
}

}  // namespace
}  // namespace ts5
