// The virtual recorder: what it writes, what it refuses, and what other programs find of it.
#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "platform/disc/cd_drive.h"
#include "platform/disc/cue_data.h"
#include "platform/disc/disc_image.h"
#include "platform/disc/drive_events.h"
#include "platform/disc/recorded_disc.h"
#include "platform/disc/recorder_buffer.h"
#include "platform/disc/scsi_trace.h"
#include "platform/disc/virtual_recorder.h"
#include "platform/files/files.h"
#include "platform/files/json_value.h"
#include "support/home.h"
#include "support/matchers.h"
#include "support/test_data.h"
#include "support/wave_bytes.h"

namespace ts5 {
namespace {

using test::FailsWith;
using test::IsOk;
using testing::HasSubstr;

constexpr std::uint8_t kPermitted = kControlCopyPermitted;

// Two tracks of 40 and 30 sectors, a pause of 20 before the second.
DiscLayout TwoTracks() {
  DiscLayout layout;
  layout.catalogue = "0123456789012";
  layout.tracks = {{1, kPermitted, Lba{-150}, Lba{0}, 40, "DEQLW2600001"},
                   {2, kPermitted, Lba{40}, Lba{60}, 30, "DEQLW2600002"}};
  layout.leadOut = Lba{90};
  return layout;
}

Bytes Pattern(std::size_t sectors, std::uint32_t seed) {
  const std::string noise = test::Noise(sectors * kAudioSectorBytes, seed);
  return {noise.begin(), noise.end()};
}

// --- cue sheets

TEST(CueData, IsTheBytesOfTheStandard) {
  const Bytes expected = {
      0x02, '0',  '1', '2', '3', '4', '5', '6', 0x02, '7', '8', '9', '0', '1', '2', 0,    // catalogue number
      0x01, 0,    0,   0,   0,   0,   0,   0,                                             // lead-in
      0x23, 1,    'D', 'E', 'Q', 'L', 'W', '2', 0x23, 1,   '6', '0', '0', '0', '0', '1',  // ISRC of track 1
      0x21, 1,    0,   0,   0,   0,   0,   0,   0x21, 1,   1,   0,   0,   0,   2,   0,    // pause, start
      0x23, 2,    'D', 'E', 'Q', 'L', 'W', '2', 0x23, 2,   '6', '0', '0', '0', '0', '2',  //
      0x21, 2,    0,   0,   0,   0,   2,   40,  0x21, 2,   1,   0,   0,   0,   2,   60,   //
      0x01, 0xAA, 1,   0,   0,   0,   3,   15};                                           // lead-out
  EXPECT_EQ(MakeCueData(TwoTracks(), {}), expected);
  const auto read = ParseCueData(expected);
  ASSERT_TRUE(read);
  EXPECT_EQ(read->layout.tracks, TwoTracks().tracks);
  EXPECT_EQ(read->layout.leadOut, Lba{90});

  DiscLayout guarded = TwoTracks();
  for (DiscTrack& track : guarded.tracks) track.control = kControlPreEmphasis;
  const Bytes bytes = MakeCueData(guarded, {.copyProtected = true, .cdText = true});
  EXPECT_EQ(bytes[16 + 3], 0x41);
  EXPECT_EQ(bytes[24], 0x13);
  EXPECT_EQ(bytes[40 + 4], 0x80);
  ASSERT_TRUE(ParseCueData(bytes));
  EXPECT_TRUE(ParseCueData(bytes)->copyProtected && ParseCueData(bytes)->cdText);
}

TEST(CueData, ARecorderRefusesEachEntryThatIsWrong) {
  const Bytes good = MakeCueData(TwoTracks(), {});
  struct Fault {
    std::size_t at;
    std::uint8_t value;
  };
  for (const Fault& fault : std::initializer_list<Fault>{
           {1, 'x'}, {15, 1},   {8, 0x01}, {17, 1},    {19, 0x10}, {20, 0}, {23, 1},    {24, 0x03},
           {25, 2},  {26, 'e'}, {32, 1},   {40, 1},    {43, 1},    {44, 1}, {44, 0x80}, {47, 5},
           {48, 1},  {50, 2},   {54, 1},   {55, 75},   {57, 3},    {78, 1}, {81, 1},    {82, 3},
           {87, 60}, {89, 0},   {95, 15},  {89, 0xAB}, {48, 0x61}}) {
    Bytes bytes = good;
    if (bytes.at(fault.at) == fault.value) continue;
    bytes[fault.at] = fault.value;
    EXPECT_FALSE(ParseCueData(bytes)) << fault.at << " = " << int{fault.value};
  }
  for (const std::size_t size :
       {std::size_t{0}, std::size_t{7}, std::size_t{8}, std::size_t{24}, good.size() - 8, good.size() - 1})
    EXPECT_FALSE(ParseCueData(ByteView(good).first(size))) << size;
}

// --- texts

TEST(CdText, GoesIntoPacksAndComesBack) {
  CdText text{{"Live", "Chor"}, 1, {{"Früh–ling", "Anna"}, {"", "Anna"}, {std::string(40, 'x'), ""}}};
  const Bytes packs = CdTextPacks(text);
  ASSERT_EQ(packs.size() % kCdTextPackBytes, 0U);
  const std::uint8_t first[] = {0x80, 0, 0, 0, 'L', 'i', 'v', 'e', 0, 'F', 'r', 0xFC, 'h', '-', 'l', 'i'};
  EXPECT_TRUE(std::ranges::equal(ByteView(packs).first(16), first));
  text.tracks[0].title = "Früh-ling";
  EXPECT_EQ(ParseCdText(packs), text);
  // Every pack is in the sectors of the lead-in.
  Bytes back;
  for (std::size_t sector = 0; sector * kPacksPerSector * kCdTextPackBytes < packs.size(); ++sector) {
    const Bytes bytes = LeadInSector(packs, sector);
    ASSERT_EQ(bytes.size(), kRawSubBytes);
    const Bytes some = PacksOfLeadInSector(bytes);
    back.insert(back.end(), some.begin(), some.end());
  }
  EXPECT_EQ(ParseCdText(back), text);
  // A damaged pack costs the texts that it holds, no others.
  Bytes damaged = packs;
  damaged[5] ^= 1;
  EXPECT_EQ(ParseCdText(damaged).disc.performer, "Chor");
  EXPECT_EQ(ParseCdText(damaged).Track(3).title, std::string(40, 'x'));
  EXPECT_TRUE(ParseCdText(Bytes(18)).Empty());
  EXPECT_TRUE(CdTextPacks({}).empty());
  // 99 long titles are cut until they fit.
  CdText large;
  large.tracks.assign(99, {std::string(100, 'a'), std::string(100, 'b')});
  EXPECT_LE(CdTextPacks(large).size(), 256 * kCdTextPackBytes);
  EXPECT_EQ(ParseCdText(CdTextPacks(large)).Track(99).performer.front(), 'b');
}

// --- the recorder

class RecorderTest : public testing::Test {
 protected:
  std::string Blank(const std::string& name, int minutes = 80, bool rewritable = false) {
    EXPECT_THAT(InsertBlankDisc(place_.File(name), minutes, rewritable), IsOk());
    return place_.File(name);
  }
  static CdDrive Drive() {
    auto drive = CdDrive::Open(VirtualRecorderDirectory());
    EXPECT_THAT(drive, IsOk());
    return *std::move(drive);
  }
  static WriteParameters Parameters(WriteType type, bool test = false) {
    WriteParameters parameters;
    parameters.type = type;
    parameters.testWrite = test;
    parameters.trackMode = kPermitted;
    return parameters;
  }
  // The whole disc of TwoTracks at once; the samples that were sent.
  static Bytes WriteAtOnce(CdDrive& drive, bool test = false) {
    EXPECT_THAT(drive.SetWriteParameters(Parameters(WriteType::SessionAtOnce, test)), IsOk());
    EXPECT_THAT(drive.SendCueSheet(MakeCueData(TwoTracks(), {})), IsOk());
    Bytes data = Pattern(240, 1);
    for (std::size_t sector = 0; sector < 240; sector += 20)
      EXPECT_THAT(
          drive.WriteSectors(Lba{static_cast<std::int32_t>(sector) - 150},
                             ByteView(data).subspan(sector * kAudioSectorBytes, 20 * kAudioSectorBytes)),
          IsOk());
    EXPECT_THAT(drive.SynchronizeCache(), IsOk());
    return data;
  }
  static std::string SenseOf(CdDrive& drive, Outcome outcome) {
    EXPECT_THAT(outcome, FailsWith(Outcome::CdDriveFailed));
    return SenseText(drive.LastSense());
  }

  test::Home place_;
};

TEST_F(RecorderTest, ADiscAtOnceIsReadByTheDriveAndByOthers) {
  const std::string directory = Blank("disc");
  CdDrive drive = Drive();
  EXPECT_EQ(drive.ReadDiscInfo()->status, DiscStatus::Blank);
  EXPECT_EQ(drive.ReadDiscInfo()->leadOut, Lba{359'849});
  EXPECT_EQ(drive.ReadTrackInformation(kInvisibleTrack)->nextWritable, Lba{0});
  EXPECT_EQ(drive.ReadCapabilities()->writeSpeed, 48U);
  const Bytes sent = WriteAtOnce(drive);
  EXPECT_EQ(RecordedDisc::Load(directory)->status, RecordedDisc::Status::Damaged) << "until it is closed";
  ASSERT_THAT(drive.Close(CloseWhat::Session), IsOk());

  EXPECT_EQ(drive.ReadDiscInfo()->status, DiscStatus::Finished);
  const auto toc = drive.ReadToc();
  ASSERT_THAT(toc, IsOk());
  EXPECT_THAT(toc->tracks, testing::ElementsAre(TocTrack{1, true, 0, 60, 2}, TocTrack{2, true, 60, 30, 2}));
  EXPECT_EQ(drive.ReadCatalogue(), "0123456789012");
  EXPECT_EQ(drive.ReadIsrc(2), "DEQLW2600002");
  EXPECT_EQ(drive.PlayAndPosition(Lba{40})->index, 0);
  EXPECT_EQ(drive.PlayAndPosition(Lba{39})->track, 1);
  Bytes back(240 * kAudioSectorBytes);
  ASSERT_THAT(drive.ReadCdAudio(Lba{-150}, back), IsOk());
  EXPECT_EQ(back, sent);

  const auto json = JsonValue::Parse(test::Content(directory + "/disc.json"));
  ASSERT_THAT(json, IsOk());
  EXPECT_EQ((*json)["status"].String(), "finalized");
  const JsonValue& second = (*json)["sessions"].Items().at(0)["tracks"].Items().at(1);
  EXPECT_EQ(second["index"].Items().at(0).Whole(0, 999), 190);
  EXPECT_EQ(second["index"].Items().at(1).Whole(0, 999), 210);
  EXPECT_EQ(second["frames"].Whole(0, 999), 30);
  auto image = DiscImage::Open(directory + "/disc.cue");
  ASSERT_THAT(image, IsOk());
  EXPECT_EQ(image->Layout().tracks, TwoTracks().tracks);
  ASSERT_THAT(image->ReadAudio(Lba{-150}, back), IsOk());
  EXPECT_EQ(back, sent);
  // It is full, and it is no CD-RW.
  EXPECT_EQ(SenseOf(drive, drive.SendCueSheet(MakeCueData(TwoTracks(), {}))), "05/30/00");
  EXPECT_EQ(SenseOf(drive, drive.SendOpc()), "05/30/00");
  EXPECT_EQ(SenseOf(drive, drive.Blank(BlankType::Minimal)), "05/30/00");
  EXPECT_EQ(SenseOf(drive, drive.Close(CloseWhat::Session)), "05/2C/00");
  ASSERT_THAT(drive.SetWriteParameters(Parameters(WriteType::TrackAtOnce)), IsOk());
  EXPECT_EQ(SenseOf(drive, drive.WriteSectors(Lba{90 + 2 + 150}, Pattern(1, 1))), "05/30/00");
}

TEST_F(RecorderTest, TracksOneByOneHaveTheirPausesAndRunOuts) {
  const std::string directory = Blank("disc", 74, true);
  CdDrive drive = Drive();
  WriteParameters parameters = Parameters(WriteType::TrackAtOnce);
  parameters.catalogue = "0123456789012";
  const Bytes data = Pattern(30, 5);
  for (const std::int32_t start : {0, 30 + 2 + 150}) {
    parameters.isrc = start == 0 ? "DEQLW2600001" : "DEQLW2600002";
    ASSERT_THAT(drive.SetWriteParameters(parameters), IsOk());
    EXPECT_EQ(drive.ReadTrackInformation(kInvisibleTrack)->nextWritable, Lba{start});
    EXPECT_EQ(SenseOf(drive, drive.WriteSectors(Lba{start + 1}, data)), "05/21/02");
    ASSERT_THAT(drive.WriteSectors(Lba{start}, data), IsOk());
    EXPECT_EQ(SenseOf(drive, drive.Close(CloseWhat::Session)), "05/72/03");
    ASSERT_THAT(drive.SynchronizeCache(), IsOk());
    ASSERT_THAT(drive.Close(CloseWhat::Track, start == 0 ? 1 : 2), IsOk());
  }
  EXPECT_EQ(drive.ReadDiscInfo()->status, DiscStatus::Open);
  ASSERT_THAT(drive.Close(CloseWhat::Session), IsOk());
  const auto disc = RecordedDisc::Load(directory);
  ASSERT_THAT(disc, IsOk());
  EXPECT_EQ(disc->layout.tracks[1].pause, Lba{32});
  EXPECT_EQ(disc->layout.tracks[1].start, Lba{182});
  EXPECT_EQ(disc->layout.leadOut, Lba{212});
  EXPECT_EQ(std::filesystem::file_size(directory + "/disc.bin"), (150 + 212) * kAudioSectorBytes);
  // Erased, it is as new.
  ASSERT_THAT(drive.Blank(BlankType::Minimal), IsOk());
  EXPECT_EQ(drive.ReadDiscInfo()->status, DiscStatus::Blank);
  EXPECT_FALSE(FileExists(directory + "/disc.cue"));
}

TEST_F(RecorderTest, ATestLeavesTheDiscBlankAndABreakLeavesItSpoilt) {
  const std::string directory = Blank("disc");
  {
    CdDrive drive = Drive();
    (void)WriteAtOnce(drive, true);
    ASSERT_THAT(drive.Close(CloseWhat::Session), IsOk());
    EXPECT_EQ(drive.ReadDiscInfo()->status, DiscStatus::Blank);
    EXPECT_FALSE(FileExists(directory + "/disc.bin"));
    ASSERT_THAT(drive.SetWriteParameters(Parameters(WriteType::SessionAtOnce)), IsOk());
    ASSERT_THAT(drive.SendCueSheet(MakeCueData(TwoTracks(), {})), IsOk());
    EXPECT_EQ(SenseOf(drive, drive.WriteSectors(Lba{0}, Pattern(1, 1))), "05/21/02");
    EXPECT_EQ(SenseOf(drive, drive.WriteSectors(Lba{-150}, Bytes(100), 100)), "05/24/00");
    ASSERT_THAT(drive.WriteSectors(Lba{-150}, Pattern(1, 1)), IsOk());
    EXPECT_EQ(SenseOf(drive, drive.Close(CloseWhat::Session)), "05/72/03");
  }
  CdDrive next = Drive();
  EXPECT_EQ(next.ReadDiscInfo()->status, DiscStatus::Finished);
  EXPECT_EQ(SenseOf(next, next.SendOpc()), "05/30/00");
  EXPECT_EQ(RecordedDisc::Load(directory)->status, RecordedDisc::Status::Damaged);
}

TEST_F(RecorderTest, RefusesWhatComesInTheWrongOrderOrDoesNotFit) {
  Blank("disc");
  CdDrive drive = Drive();
  EXPECT_EQ(SenseOf(drive, drive.SendCueSheet(MakeCueData(TwoTracks(), {}))), "05/2C/00")
      << "no session at once";
  EXPECT_EQ(SenseOf(drive, drive.Close(CloseWhat::Track, 1)), "05/2C/00");
  WriteParameters wrong = Parameters(WriteType::Raw);
  EXPECT_EQ(SenseOf(drive, drive.SetWriteParameters(wrong)), "05/26/00");
  wrong = Parameters(WriteType::TrackAtOnce);
  wrong.isrc = "nicht so wie";
  EXPECT_EQ(SenseOf(drive, drive.SetWriteParameters(wrong)), "05/26/00");
  ASSERT_THAT(drive.SetWriteParameters(Parameters(WriteType::SessionAtOnce)), IsOk());
  EXPECT_EQ(SenseOf(drive, drive.WriteSectors(Lba{0}, Pattern(1, 1))), "05/2C/00") << "no cue sheet";
  DiscLayout large = TwoTracks();
  large.leadOut = Lba{359'850};
  EXPECT_EQ(SenseOf(drive, drive.SendCueSheet(MakeCueData(large, {}))), "05/26/00") << "a frame too long";
  large.leadOut = Lba{359'849};
  EXPECT_THAT(drive.SendCueSheet(MakeCueData(large, {})), IsOk());
}

TEST_F(RecorderTest, TheTrayAndTheDiscInIt) {
  CdDrive drive = Drive();
  EXPECT_EQ(drive.State(), MediaState::NoMedium);
  Blank("eins");
  EXPECT_EQ(drive.State(), MediaState::UnitAttention);
  EXPECT_EQ(drive.State(), MediaState::Ready);
  EXPECT_THAT(InsertBlankDisc(place_.File("eins"), 80, false), FailsWith(Outcome::InUse))
      << "keeps what is there";
  drive.PreventRemoval(true);
  EXPECT_THAT(drive.Eject(), IsOk()) << "allows it first";
  EXPECT_EQ(drive.State(), MediaState::NoMedium);
  EXPECT_EQ(drive.LastSense(), sense::kTrayOpen);
  EXPECT_THAT(drive.Load(), IsOk());
  EXPECT_EQ(drive.State(), MediaState::Ready);
  std::filesystem::remove(place_.File("eins/disc.json"));
  EXPECT_EQ(Drive().State(), MediaState::NoMedium);
}

TEST_F(RecorderTest, DescriptionsThatContradictThemselvesAreNoDisc) {
  std::filesystem::create_directory(place_.File("x"));
  const std::string track = R"({"number":1,"control":2,"isrc":"","index":[0,150],"frames":10})";
  const auto json = [&](const std::string& tracks, const std::string& status = "finalized") {
    return R"({"status":")" + status +
           R"(","minutes":80,"rw":false,"mcn":"","sessions":[{"open":false,"mode":"dao","tracks":[)" +
           tracks + R"(]}],"cdtext":[{"track":1,"title":"A"},{"track":400}]})";
  };
  place_.Write("x/disc.json", json(track));
  ASSERT_THAT(RecordedDisc::Load(place_.File("x")), IsOk());
  EXPECT_EQ(RecordedDisc::Load(place_.File("x"))->text.Track(1).title, "A");
  for (const std::string& text :
       {std::string(), std::string("[]"), json(track, "weg"), json(track + "," + track),
        json(R"({"number":1,"control":2,"index":[150,0],"frames":10})"),
        json(R"({"number":1,"control":2,"index":[],"frames":10})"),
        json(R"({"number":1,"control":2,"index":[0,1e9],"frames":10})"),
        json(R"({"number":1,"control":99,"index":[150],"frames":10})")}) {
    place_.Write("x/disc.json", text);
    EXPECT_THAT(RecordedDisc::Load(place_.File("x")), FailsWith(Outcome::WrongFormat)) << text;
  }
}

TEST_F(RecorderTest, FaultsAndTheTraceOfThem) {
  Blank("disc");
  const auto faults =
      ParseScsiFaults(R"([{"drive":"","op":"2A","lba":-130,"skip":0,"times":1,"sense":"03/0C/00"},
                                          {"op":"35","skip":1,"times":2,"sense":"04/09/01","delayMs":1},
                                          {"op":"52","reply":"001c01FF"}])");
  ASSERT_THAT(faults, IsOk());
  CdDrive drive(WithTrace(WithFaults(OpenVirtualRecorder(), *faults), "X", place_.File("trace")));
  ASSERT_THAT(drive.SetWriteParameters(Parameters(WriteType::SessionAtOnce)), IsOk());
  ASSERT_THAT(drive.SendCueSheet(MakeCueData(TwoTracks(), {})), IsOk());
  ASSERT_THAT(drive.WriteSectors(Lba{-150}, Pattern(20, 1)), IsOk());
  EXPECT_EQ(SenseOf(drive, drive.WriteSectors(Lba{-130}, Pattern(20, 1))), "03/0C/00");
  ASSERT_THAT(drive.WriteSectors(Lba{-130}, Pattern(20, 1)), IsOk());
  EXPECT_THAT(drive.SynchronizeCache(), IsOk());
  EXPECT_EQ(SenseOf(drive, drive.SynchronizeCache()), "04/09/01");
  const std::string trace = test::Content(place_.File("trace"));
  EXPECT_THAT(trace, HasSubstr(R"("cdb":"2a00ffffff7e00001400")"));
  EXPECT_THAT(trace, HasSubstr(R"("sense":"03/0C/00","status":"refused")"));
  const auto first = JsonValue::Parse(trace.substr(0, trace.find('\n')));
  ASSERT_THAT(first, IsOk());
  EXPECT_EQ((*first)["drive"].String(), "X");
  EXPECT_THAT(drive.ReadTrackInformation(kInvisibleTrack), FailsWith(Outcome::CdDriveFailed)) << "four bytes";
  EXPECT_THAT(drive.ReadTrackInformation(kInvisibleTrack), IsOk());
  for (const char* text : {"", "[{}]", R"([{"op":"2A","sense":"1"}])", R"([{"op":"123"}])",
                           R"([{"op":"2A","reply":"123"}])", R"([{"op":"2A","reply":"1x"}])"})
    EXPECT_THAT(ParseScsiFaults(text), FailsWith(Outcome::WrongFormat)) << text;
}

TEST(RecorderBuffer, RunsDryWhenNothingComes) {
  using Taken = RecorderBuffer::Taken;
  RecorderBuffer buffer;
  const RecorderBuffer::Time start{};
  const auto at = [&](int milliseconds) { return start + std::chrono::milliseconds(milliseconds); };
  constexpr double kRate = 1024 * 1024;
  buffer.Start(kRate);
  EXPECT_EQ(buffer.Put(1024 * 1024 + 1, at(0)), Taken::Yes);
  EXPECT_EQ(buffer.Put(1024 * 1024, at(0)), Taken::Full);
  EXPECT_EQ(buffer.Put(512 * 1024, at(900)), Taken::Yes);
  EXPECT_EQ(buffer.Put(1024, at(1400)), Taken::Yes) << "a reserve is left";
  EXPECT_EQ(buffer.Put(1024, at(9000)), Taken::RanDry);
  EXPECT_NEAR(buffer.Rest(at(9000)).count(), 1024 / kRate, 1e-3);
}

TEST(DriveEvents, OnlyDrivesAndTheirDiscsCount) {
  struct Case {
    const char* fields;  // separated by '|'
    std::optional<DriveEvent> event;
  };
  for (const Case& one :
       {Case{"add@/devices/sr0|ACTION=add|SUBSYSTEM=block|DEVNAME=sr0", DriveEvent{true, "/dev/sr0"}},
        {"x|ACTION=remove|DEVNAME=sr12|SUBSYSTEM=block", DriveEvent{true, "/dev/sr12"}},
        {"x|ACTION=change|SUBSYSTEM=block|DEVNAME=sr0|DISK_MEDIA_CHANGE=1", DriveEvent{false, "/dev/sr0"}},
        {"x|ACTION=change|SUBSYSTEM=block|DEVNAME=sr0", std::nullopt},
        {"x|ACTION=add|SUBSYSTEM=block|DEVNAME=sda", std::nullopt},
        {"x|ACTION=add|SUBSYSTEM=scsi|DEVNAME=sr0", std::nullopt},
        {"x|ACTION=add|SUBSYSTEM=block|DEVNAME=sr0/../../etc", std::nullopt},
        {"", std::nullopt}}) {
    std::string message(one.fields);
    std::ranges::replace(message, '|', '\0');
    EXPECT_EQ(ParseDriveEvent(AsBytes(message)), one.event) << one.fields;
  }
}

}  // namespace
}  // namespace ts5
