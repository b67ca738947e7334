// The recording engine: what is planned, what goes through the pipe, what the drive's answers become.
#include <gmock/gmock.h>

#include <deque>
#include <latch>
#include <thread>

#include "disc/disc_memory.h"
#include "disc/disc_plan.h"
#include "disc/pause_search.h"
#include "disc/read_ahead.h"
#include "disc/recorder.h"
#include "disc/track_file.h"
#include "disc/track_reader.h"
#include "disc/track_texts.h"
#include "platform/disc/cue_data.h"
#include "platform/files/digest.h"
#include "platform/media/wave_format.h"
#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5::disc {
namespace {

using testing::ElementsAre;

class BytesSound final : public SoundSource {
 public:
  explicit BytesSound(Bytes bytes) : bytes_(std::move(bytes)) {}
  Result<std::size_t> Read(std::span<std::uint8_t> out) override {
    const std::size_t count = std::min(out.size(), bytes_.size() - at_);
    std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(at_), count, out.begin());
    at_ += count;
    return count;
  }

 private:
  Bytes bytes_;
  std::size_t at_ = 0;
};

ProjectTrack Track(std::uint64_t bytes, std::uint32_t pause = 0, std::uint8_t value = 1) {
  ProjectTrack track;
  track.bytes = bytes;
  track.pause = pause;
  track.open = [bytes, value]() -> Result<std::unique_ptr<SoundSource>> {
    return std::make_unique<BytesSound>(Bytes(bytes, value));
  };
  return track;
}

std::vector<std::int32_t> Starts(const DiscPlan& plan) {
  std::vector<std::int32_t> starts;
  for (const DiscTrack& track : plan.layout.tracks) starts.push_back(track.start.value);
  starts.push_back(plan.layout.leadOut.value);
  return starts;
}

TEST(DiscPlan, TracksPausesAndBorders) {
  RecordingMode mode;
  const std::vector<ProjectTrack> three{Track(100'000), Track(2352), Track(2353, 150)};
  EXPECT_EQ(SectorsOf(100'000), 43U);
  DiscPlan plan = DiscPlan::AtOnce(three, mode);
  EXPECT_THAT(Starts(plan), ElementsAre(0, 43, 194, 196));
  EXPECT_EQ(plan.layout.tracks[0].pause, Lba{-150});
  EXPECT_EQ(plan.layout.tracks[1].pause, std::nullopt);
  EXPECT_EQ(plan.layout.tracks[2].pause, Lba{44});
  EXPECT_EQ(plan.Sectors(), 346U);
  mode.catalogue = "0123456789012";
  for (DiscTrack& track : plan.layout.tracks) track.isrc = "DEQLW2600001";
  plan.layout.catalogue = mode.catalogue;
  EXPECT_EQ(MakeCueData(plan.layout, {}).size(), (3 + 4 + 3 + 4 + 1) * 8U);
  // Without a gap, the border lies inside of a sector that both share.
  mode.gapless = true;
  EXPECT_THAT(Starts(DiscPlan::AtOnce(std::vector{Track(3000), Track(3000), Track(3000)}, mode)),
              ElementsAre(0, 1, 2, 4));
  EXPECT_EQ(mode.Control(), kControlCopyPermitted);
  mode.copyProtected = mode.preEmphasis = true;
  EXPECT_EQ(mode.Control(), kControlPreEmphasis);
  mode.atOnce = false;
  EXPECT_EQ(ProjectSectors(three, mode), 43U + 152 + 1 + 152 + 2);
}

TEST(IsrcSeries, CountsOn) {
  IsrcSeries series(2026, 99'999);
  EXPECT_EQ(series.Next(), "DEQLW2699999");
  EXPECT_EQ(series.Next(), "DEQLW2600000");
  EXPECT_TRUE(IsIsrc(IsrcSeries(2100, 5).Next()));
  EXPECT_TRUE(IsIsrc(IsrcSeries::OfNow().Next()));
}

TEST(Crc32, IsTheUsualOne) {
  Crc32 crc;
  crc.Add(AsBytes("12345"));
  crc.Add(AsBytes("6789"));
  EXPECT_EQ(crc.Text(), "CBF43926");
}

// --- what is known of tracks and discs

TEST(TrackTexts, NamesOfFilesSayTitleAndPerformer) {
  struct Case {
    const char* name;
    CdText::Entry text;
  };
  for (const Case& one : {Case{"Abendlied.wav", {"Abendlied", ""}},
                          {"03 - Chor - Abendlied.wav", {"Abendlied", "Chor"}},
                          {"07. Abendlied.mp3", {"Abendlied", ""}},
                          {"1999.wav", {"1999", ""}},
                          {"99 Luftballons.ogg", {"Luftballons", ""}},
                          {"4ever.wav", {"4ever", ""}},
                          {" - Stille.wav", {"- Stille", ""}},
                          {"Chor - Lied - live.wav", {"Lied - live", "Chor"}}})
    EXPECT_EQ(TextOfName(one.name), one.text) << one.name;
}

TEST(TrackTexts, WhatWasEnteredIsStored) {
  const TrackTexts texts{{"/a/b.wav", {"Eins", "Chor"}}, {"X Y\\Track 3", {"", "Solo"}}};
  RegistryValues values;
  SaveTrackTexts(texts, values);
  EXPECT_EQ(LoadTrackTexts(values), texts);
  EXPECT_EQ(TrackText(texts, "/a/b.wav"), (CdText::Entry{"Eins", "Chor"}));
  values.SetText("BurnTextNum", "100");
  EXPECT_TRUE(LoadTrackTexts(values).empty());
}

TEST(DiscMemory, KnowsADiscByItsTableOfContents) {
  const test::TemporaryDirectory place;
  const DiscMemory memory(place.File("tief/discs.ini"));
  const DiscToc toc{{{1, true, 0, 15'213, 0}, {2, true, 15'213, 16'951, 0}}, 32'164};
  // Starts at seconds 2 and 204, 428 seconds of music, two tracks.
  EXPECT_EQ(DiscIdentity(toc).substr(0, 15), "0801AC02-32164-");
  DiscToc other = toc;
  other.tracks[1].start += 1;
  EXPECT_NE(DiscIdentity(other), DiscIdentity(toc));
  EXPECT_TRUE(memory.Recall(toc).Empty());
  const CdText text{{"Über \"uns\"", "Chor"}, 1, {{"Eins=1", ""}, {"", "Solo"}}};
  ASSERT_EQ(memory.Remember(toc, text), Outcome::Success);
  EXPECT_EQ(memory.Recall(toc), text);
  EXPECT_TRUE(memory.Recall(other).Empty());
  // What the disc says itself counts; what is learnt later is added.
  ASSERT_EQ(memory.Remember(toc, {{}, 1, {{"", "Alle"}}}), Outcome::Success);
  const CdText all = memory.Completed(toc, {{"Neu", ""}, 1, {}});
  EXPECT_EQ(all.disc, (CdText::Entry{"Neu", "Chor"}));
  EXPECT_EQ(all.Track(1), (CdText::Entry{"Eins=1", "Alle"}));
}

TEST(SectorPipe, KeepsOrderAndEndsFromBothSides) {
  Bytes sent(5000);
  for (std::size_t i = 0; i < sent.size(); ++i) sent[i] = static_cast<std::uint8_t>(i * 7);
  // What is read at once is more than the pipe holds, or less.
  for (const std::size_t capacity : {1U, 10U, 333U, 1000U}) {
    for (const bool some : {false, true}) {
      const auto next = [some](SectorPipe& pipe) {
        while (some)
          if (const auto got = pipe.NextSome(333)) return *got;
        return pipe.Next(333);
      };
      SectorPipe pipe(capacity);
      Bytes got;
      std::jthread reader([&] {
        for (ByteView part = next(pipe); !part.empty(); part = next(pipe)) {
          got.insert(got.end(), part.begin(), part.end());
          pipe.Drop(part.size());
        }
      });
      EXPECT_TRUE(pipe.Write(sent));
      pipe.CloseWriting();
      reader.join();
      EXPECT_EQ(got, sent) << capacity;
    }
  }
  SectorPipe broken(10);
  broken.CloseReading();
  EXPECT_FALSE(broken.Write(sent));
}

// A source that fails after so many bytes.
class FailingSound final : public SoundSource {
 public:
  explicit FailingSound(std::size_t bytes) : sound_(Bytes(bytes, 3)) {}
  Result<std::size_t> Read(std::span<std::uint8_t> out) override {
    auto got = sound_.Read(out);
    return *got == 0 ? Failure(Outcome::ReadFailed) : got;
  }

 private:
  BytesSound sound_;
};

TEST(ReadAhead, GivesAllUpToTheFailureAndLetsGoBeforeTheEnd) {
  constexpr std::size_t kSound = 900 * kAudioSectorBytes;  // more than the pipe holds
  FailingSound sound(kSound);
  Crc32 crc;
  Bytes got;
  {
    ReadAhead ahead(sound, &crc);
    for (auto part = ahead.Next(); !part || !part->empty(); part = ahead.Next()) {
      if (!part) continue;
      got.insert(got.end(), part->begin(), part->end());
      ahead.Drop(*part);
    }
  }
  EXPECT_EQ(got, Bytes(kSound, 3));
  Crc32 whole;
  whole.Add(got);
  EXPECT_EQ(crc.Value(), whole.Value());

  BytesSound left(Bytes(2 * kSound));
  ReadAhead ahead(left, nullptr);
  std::optional<ByteView> first;
  while (!first) first = ahead.Next();
  EXPECT_FALSE(first->empty());
}

// --- steps without threads

// Answers commands by a function.
class FakeDrive final : public ScsiTransport {
 public:
  explicit FakeDrive(std::function<ScsiReply(const ScsiCommand&)> answer) : answer_(std::move(answer)) {}
  ScsiReply Send(const ScsiCommand& command) override { return answer_(command); }

 private:
  std::function<ScsiReply(const ScsiCommand&)> answer_;
};

constexpr DrivePace kNoWaiting{std::chrono::milliseconds(0), std::chrono::milliseconds(0),
                               std::chrono::milliseconds(0)};

CdDrive Drive(std::function<ScsiReply(const ScsiCommand&)> answer) {
  return CdDrive(std::make_unique<FakeDrive>(std::move(answer)), kNoWaiting);
}

TEST(Engine, TheStreamIsSilenceSoundAndPadding) {
  SectorPipe pipe;
  ASSERT_EQ(FeedTrack(pipe, Track(3000, 2), {2, 3000, 1704}, [] {}), engine::kNone);
  pipe.CloseWriting();
  std::vector<std::int32_t> addresses;
  Bytes written;
  CdDrive drive = Drive([&](const ScsiCommand& command) -> ScsiReply {
    ByteReader in(command.cdb.subspan(2));
    addresses.push_back(static_cast<std::int32_t>(in.U32Be()));
    written.insert(written.end(), command.out.begin(), command.out.end());
    return {true, {}, command.out.size()};
  });
  SectorWriter writer(pipe, drive, Lba{-2});
  while (writer.Step()) {
  }
  EXPECT_EQ(writer.Error(), engine::kNone);
  EXPECT_EQ(writer.Next(), Lba{2});
  EXPECT_THAT(addresses, ElementsAre(-2));
  Bytes expected(4 * kAudioSectorBytes);
  std::fill_n(expected.begin() + 2 * kAudioSectorBytes, 3000, std::uint8_t{1});
  EXPECT_EQ(written, expected);
}

TEST(Engine, EveryFailureHasItsNumber) {
  SectorPipe pipe;
  ProjectTrack shorter = Track(1000);
  EXPECT_EQ(FeedTrack(pipe, shorter, {0, 5000, 0}, [] {}), engine::kSourceRead);
  shorter.open = [] { return Failure(Outcome::SourceFailed); };
  EXPECT_EQ(FeedTrack(pipe, shorter, {0, 5000, 0}, [] {}), engine::kSourceOpen);
  pipe.CloseReading();
  EXPECT_EQ(FeedTrack(pipe, Track(1000), {0, 1000, 0}, [] {}), engine::kPipeBroken);

  // A drive that refuses one of the commands of a recording, with the number that comes out.
  struct Case {
    MmcCommand refused;
    SenseData sense;
    EngineError error;
  };
  for (const Case& one : {Case{MmcCommand::ModeSense10, {5, 0x20, 0}, engine::kParametersUnread},
                          Case{MmcCommand::ModeSelect10, {5, 0x26, 0}, engine::kParametersRefused},
                          Case{MmcCommand::SendCueSheet, {5, 0x26, 0}, engine::kCueSheet},
                          Case{MmcCommand::Write10, {3, 0x0C, 9}, 0xFF030C09},
                          Case{MmcCommand::Write10, {4, 0x09, 1}, 0xFF040901},
                          Case{MmcCommand::SynchronizeCache, {3, 0x0C, 0}, engine::kLastStep},
                          Case{MmcCommand::TestUnitReady, {}, engine::kNone}}) {
    CdDrive drive = Drive([&](const ScsiCommand& command) -> ScsiReply {
      const auto code = static_cast<MmcCommand>(command.cdb[0]);
      if (code == one.refused && one.error != engine::kNone) return {false, one.sense, 0};
      if (code == MmcCommand::ModeSense10) {
        Bytes page(8 + kWriteParametersBytes);
        page[8] = kWriteParametersPage;
        page[9] = kWriteParametersBytes - 2;
        std::ranges::copy(page, command.in.begin());
        return {true, {}, page.size()};
      }
      return {true, {}, command.out.size()};
    });
    Recorder recorder(drive, {});
    const std::vector<ProjectTrack> tracks{Track(3'000'000)};
    EXPECT_EQ(recorder.RecordDiscAtOnce(tracks), one.error) << std::hex << one.error;
    EXPECT_EQ(engine::IsUnderrun(one.error), one.error == 0xFF030C09);
  }
}

// --- reading

TEST(TrackReader, ReadsDoubtfulSectorsUntilTwoAgree) {
  // Sector 7 comes out otherwise each time, sector 3 is unreadable at first; the others are as they are.
  int readings = 0;
  int failures = 2;
  const auto answer = [&](const ScsiCommand& command) -> ScsiReply {
    if (command.cdb[0] != static_cast<std::uint8_t>(MmcCommand::ReadCd)) return {false, {5, 0x20, 0}, 0};
    const auto first = static_cast<std::int32_t>(command.cdb[5]);
    const auto count = static_cast<std::int32_t>(command.cdb[8]);
    for (std::int32_t i = 0; i < count; ++i) {
      if (first + i == 3 && failures > 0 && count == 1) {
        --failures;
        return {false, {3, 0x11, 5}, 0};
      }
      if (first + i == 7 && count > 1) return {false, {3, 0x11, 5}, 0};
      const auto value = static_cast<std::uint8_t>(first + i == 7 ? 100 + readings++ : first + i);
      std::ranges::fill(
          command.in.subspan(static_cast<std::size_t>(i) * kAudioSectorBytes, kAudioSectorBytes), value);
    }
    return {true, {}, command.in.size()};
  };
  CdDrive drive = Drive(answer);
  TrackReader reader(drive, Lba{100});
  Bytes out(10 * kAudioSectorBytes);
  EXPECT_EQ(reader.Read(Lba{0}, out), 0U);
  EXPECT_EQ(reader.Doubtful(), 1U);
  EXPECT_EQ(out[3 * kAudioSectorBytes], 3);
  EXPECT_EQ(out[9 * kAudioSectorBytes], 9);

  CdDrive gone = Drive([](const ScsiCommand&) -> ScsiReply { return {false, {2, 0x3A, 0}, 0}; });
  TrackReader none(gone, Lba{100});
  EXPECT_EQ(none.Read(Lba{0}, out), engine::kDiscChanged);
}

TEST(TrackReader, CompensatesTheOffsetOfTheDrive) {
  // Frame n of the disc has the value n; the drive gives what lies 30 frames later.
  CdDrive drive = Drive([](const ScsiCommand& command) -> ScsiReply {
    if (command.cdb[0] != static_cast<std::uint8_t>(MmcCommand::ReadCd)) return {false, {5, 0x20, 0}, 0};
    ByteReader in(command.cdb.subspan(2));
    const auto first = static_cast<std::int32_t>(in.U32Be());
    ByteWriter out;
    for (std::size_t i = 0; i < command.in.size() / kBytesPerFrame; ++i)
      out.U32Be(static_cast<std::uint32_t>(first * static_cast<std::int32_t>(kFramesPerSector) +
                                           static_cast<std::int32_t>(i) - 30));
    std::ranges::copy(out.View(), command.in.begin());
    return {true, {}, command.in.size()};
  });
  TrackReader reader(drive, Lba{10}, 30);
  Bytes out(2 * kAudioSectorBytes);
  ASSERT_EQ(reader.Read(Lba{5}, out), 0U);
  EXPECT_EQ(ByteReader(out).U32Be(), 5 * kFramesPerSector);
  // Behind the end there is silence.
  ASSERT_EQ(reader.Read(Lba{8}, out), 0U);
  EXPECT_EQ(ByteReader(ByteView(out).last(4)).U32Be(), 0U);
  EXPECT_NE(ByteReader(ByteView(out).subspan(out.size() - 31 * 4, 4)).U32Be(), 0U);
}

// As from a drive that does not come to an end with a sector.
class StuckSound final : public SoundSource {
 public:
  Result<std::size_t> Read(std::span<std::uint8_t> /*out*/) override {
    stopped_.wait();
    return Failure(Outcome::ReadFailed);
  }
  void Interrupt() override { stopped_.count_down(); }

 private:
  std::latch stopped_{1};
};

TEST(ReadAhead, WhoWaitsForADriveCanBeStopped) {
  const test::TemporaryDirectory place;
  StuckSound sound;
  int asked = 0;
  EXPECT_EQ(ReadTrackToFile(sound, {1, 100}, *ts5::WaveFile::Create(place.File("a.wav"), AudioCdFormat(), 0),
                            {[&] { return ++asked == 3; }}),
            engine::kStopped);
  CdDrive bad = Drive([](const ScsiCommand&) -> ScsiReply { return {false, {3, 0x11, 5}, 0}; });
  Bytes sector(kAudioSectorBytes);
  EXPECT_EQ(TrackReader(bad, Lba{100}).Read(Lba{0}, sector, [] { return true; }), engine::kStopped);
}

TEST(PauseSearch, FindsWhereIndex0Begins) {
  DiscToc toc{{{1, true, 0, 1000, 0}, {2, true, 1000, 500, 0}}, 1500};
  for (const std::int32_t pause : {0, 1, 75, 150, 998}) {
    std::int32_t played = 0;
    CdDrive drive = Drive([&](const ScsiCommand& command) -> ScsiReply {
      ByteReader in(command.cdb.subspan(2));
      if (command.cdb[0] == static_cast<std::uint8_t>(MmcCommand::PlayAudio10)) {
        played = static_cast<std::int32_t>(in.U32Be());
        return {true, {}, 0};
      }
      if (command.cdb[0] != static_cast<std::uint8_t>(MmcCommand::ReadSubChannel))
        return {false, {5, 0x20, 0}, 0};
      const bool second = played >= 1000 - pause;
      const bool index1 = !second || played >= 1000;
      Bytes reply(16);
      reply[4] = 1;
      reply[6] = second ? 2 : 1;
      reply[7] = index1 ? 1 : 0;
      std::ranges::copy(reply, command.in.begin());
      return {true, {}, reply.size()};
    });
    EXPECT_EQ(FindPause(drive, toc, 2), static_cast<std::uint32_t>(pause));
  }
  CdDrive mute = Drive([](const ScsiCommand&) -> ScsiReply { return {false, {5, 0x64, 0}, 0}; });
  EXPECT_EQ(FindPause(mute, toc, 2), std::nullopt);
}

}  // namespace
}  // namespace ts5::disc
