// Discs from the CUE sheet up to the drive: what a sheet makes, what commands look like and what a drive
// answers.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <scsi/sg.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <deque>
#include <filesystem>
#include <numeric>

#include "platform/disc/cd_drive.h"
#include "platform/disc/cue_sheet.h"
#include "platform/disc/disc_image.h"
#include "platform/disc/drive_claim.h"
#include "platform/disc/mmc_commands.h"
#include "platform/disc/mmc_replies.h"
#include "platform/disc/scsi_generic.h"
#include "platform/disc/virtual_cd.h"
#include "platform/disc/virtual_recorder.h"
#include "platform/files/files.h"
#include "support/child.h"
#include "support/home.h"
#include "support/matchers.h"
#include "support/test_data.h"
#include "support/wave_bytes.h"

namespace ts5 {
namespace {

using test::FailsWith;
using test::IsOk;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

std::vector<std::uint32_t> Starts(const DiscImage& disc) {
  std::vector<std::uint32_t> starts;
  for (const DiscTrack& track : disc.Layout().tracks)
    starts.push_back(static_cast<std::uint32_t>(track.start.value));
  starts.push_back(static_cast<std::uint32_t>(disc.Layout().leadOut.value));
  return starts;
}

Bytes ReadSectors(DiscImage& disc, std::uint32_t sector, std::uint32_t count) {
  Bytes bytes(count * kAudioSectorBytes);
  EXPECT_THAT(disc.ReadAudio(Lba{static_cast<std::int32_t>(sector)}, bytes), IsOk());
  return bytes;
}

TEST(CueSheet, ReadsWhatItSaysOfADisc) {
  const auto sheet = CueSheet::Parse(test::Content(test::DataPath("cd/three_tracks.cue")));
  ASSERT_THAT(sheet, IsOk());
  EXPECT_EQ(sheet->catalogue, "4012345678901");
  EXPECT_EQ(sheet->title, "Drei Proben");
  ASSERT_EQ(sheet->files.size(), 1U);
  EXPECT_EQ(sheet->files[0].name, "three_tracks.bin");
  ASSERT_EQ(sheet->tracks.size(), 3U);
  EXPECT_EQ(sheet->tracks[0].isrc, "DEABC2400001");
  EXPECT_EQ(sheet->tracks[0].performer, "Niemand");
  EXPECT_EQ(sheet->tracks[1].title, "Zweite – grün");
  EXPECT_EQ(sheet->tracks[1].pause, (CuePlace{0, 75}));
  EXPECT_EQ(sheet->tracks[1].start, (CuePlace{0, 105}));
  EXPECT_FALSE(sheet->tracks[1].copyPermitted);
  EXPECT_TRUE(sheet->tracks[2].copyPermitted);

  // UTF-8 with its mark, old line ends, names without quotes, words in any case.
  const auto other = CueSheet::Parse(
      "\xEF\xBB\xBFrem x\rfile Mein Lied.mp3 mp3\r track 5 audio\r title \"Süß\"\r flags pre dcp\r"
      " pregap 00:02:00\r index 01 99:59:74\r postgap 0:0:1");
  ASSERT_THAT(other, IsOk());
  EXPECT_EQ(other->files[0].name, "Mein Lied.mp3");
  EXPECT_EQ(other->files[0].kind, CueFile::Kind::Audio);
  const CueTrack& track = other->tracks[0];
  EXPECT_EQ(track.number, 5);
  EXPECT_EQ(track.title, "Süß");
  EXPECT_TRUE(track.preEmphasis && track.copyPermitted);
  EXPECT_EQ(track.pregap, 150U);
  EXPECT_EQ(track.postgap, 1U);
  EXPECT_EQ(track.start.sector, 449'999U);
}

TEST(CueSheet, RefusesWhatMakesNoDisc) {
  const std::string file = "FILE a.bin BINARY\n";
  const std::string track = file + "TRACK 01 AUDIO\nINDEX 01 00:10:00\n";
  ASSERT_THAT(CueSheet::Parse(track), IsOk());
  for (const std::string& text : {
           std::string(),
           std::string("RIFF"),
           file,
           std::string("TRACK 01 AUDIO\nINDEX 01 00:00:00\n"),
           file + "TRACK 01 AUDIO\n",
           file + "TRACK 01 AUDIO\nINDEX 00 00:00:00\n",
           file + "TRACK 00 AUDIO\nINDEX 01 00:00:00\n",
           file + "TRACK 100 AUDIO\nINDEX 01 00:00:00\n",
           file + "TRACK 01 MODE3/2048\nINDEX 01 00:00:00\n",
           file + "TRACK 01 AUDIO\nINDEX 01 00:60:00\n",
           file + "TRACK 01 AUDIO\nINDEX 01 00:00:75\n",
           file + "TRACK 01 AUDIO\nINDEX 01 -1:00:00\n",
           file + "INDEX 01 00:00:00\n",
           file + "PREGAP 00:01:00\n",
           track + "INDEX 01 00:20:00\n",
           track + "INDEX 00 00:20:00\n",
           track + "INDEX 02 00:09:00\n",
           track + "TRACK 03 AUDIO\nINDEX 01 00:20:00\n",
           track + "TRACK 02 AUDIO\n",
           track + "TRACK 02 AUDIO\nINDEX 01 00:09:00\n",
           track + "TRACK",
           track + "INDEX 02",
       }) {
    EXPECT_THAT(CueSheet::Parse(text), FailsWith(Outcome::WrongFormat)) << text;
  }
}

TEST(DiscImage, ARawImageIsReadSectorBySector) {
  auto disc = DiscImage::Open(test::DataPath("cd/three_tracks.cue"));
  ASSERT_THAT(disc, IsOk());
  EXPECT_THAT(Starts(*disc), ElementsAre(0, 105, 165, 215));
  const std::string raw = test::Content(test::DataPath("cd/three_tracks.bin"));
  EXPECT_EQ(AsText(ReadSectors(*disc, 0, 215)), raw);
  EXPECT_EQ(AsText(ReadSectors(*disc, 104, 2)), raw.substr(104 * 2352, 2 * 2352));
  Bytes bytes(2 * kAudioSectorBytes);
  EXPECT_THAT(disc->ReadAudio(Lba{214}, bytes), FailsWith(Outcome::InvalidParameter));
  EXPECT_THAT(disc->ReadAudio(Lba{-1}, bytes), FailsWith(Outcome::InvalidParameter));
  EXPECT_THAT(disc->ReadAudio(Lba{0}, std::span(bytes).first(100)), FailsWith(Outcome::InvalidParameter));
}

TEST(DiscImage, AudioFilesAreFilledUpToWholeSectorsAndGapsAreSilent) {
  const test::TemporaryDirectory place;
  const std::string first = test::Noise(3 * 2352 + 100);
  const std::string second = test::Noise(2 * 2352);
  place.Write("Eins.wav", test::WaveBytes(first, 44'100, 2));
  std::string mono;
  for (std::size_t i = 0; i < second.size(); i += 4) mono += second.substr(i, 2);
  place.Write("zwei.WAV", test::WaveBytes(mono, 44'100, 1));
  // The names as another system wrote them.
  const std::string sheet =
      place.Write("disc.cue",
                  "FILE \"C:\\Musik\\EINS.WAV\" WAVE\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n"
                  "POSTGAP 00:00:02\nTRACK 02 AUDIO\nINDEX 00 00:00:03\n"
                  "FILE \"zwei.wav\" WAVE\nPREGAP 00:00:05\nINDEX 01 00:00:00\n");
  auto disc = DiscImage::Open(sheet);
  ASSERT_THAT(disc, IsOk());
  // Three sectors of the first track and its gap, then the gap and the rest of the file before the second.
  EXPECT_THAT(Starts(*disc), ElementsAre(0, 3 + 2 + 5 + 1, 11 + 2));
  const Bytes all = ReadSectors(*disc, 0, 13);
  EXPECT_EQ(AsText(all).substr(0, 3 * 2352), first.substr(0, 3 * 2352));
  EXPECT_TRUE(std::ranges::all_of(std::span(all).subspan(3 * 2352, 7 * 2352), [](int b) { return b == 0; }));
  EXPECT_EQ(AsText(all).substr(10 * 2352, 100), first.substr(3 * 2352));
  EXPECT_TRUE(
      std::ranges::all_of(std::span(all).subspan(10 * 2352 + 100, 2252), [](int b) { return b == 0; }));
  for (std::size_t i = 0; i < second.size(); i += 4) {
    ASSERT_EQ(AsText(all).substr(11 * 2352 + i, 2), second.substr(i, 2)) << "left, " << i;
    ASSERT_EQ(AsText(all).substr(11 * 2352 + i + 2, 2), second.substr(i, 2)) << "right, " << i;
  }
  // Backwards: what comes before is decoded again.
  EXPECT_EQ(AsText(ReadSectors(*disc, 1, 1)), first.substr(2352, 2352));

  place.Write("Eins.wav", test::WaveBytes(first, 48'000, 2));
  EXPECT_THAT(DiscImage::Open(sheet), FailsWith(Outcome::WrongFormat)) << "not the rate of a disc";
}

TEST(DiscImage, SectorsOfManySizesLieInOneFile) {
  const test::TemporaryDirectory place;
  std::string swapped = test::Noise(2 * 2352);
  const std::string audio = swapped;
  for (std::size_t i = 0; i < swapped.size(); i += 2) std::swap(swapped[i], swapped[i + 1]);
  place.Write("b.bin", swapped);
  const std::string tail = test::Noise(2448);
  place.Write("a.bin", std::string(3 * 2048, 'd') + audio + tail);
  const std::string sheet = place.Write(
      "disc.cue",
      "FILE a.bin BINARY\nTRACK 01 MODE1/2048\nINDEX 01 00:00:00\nTRACK 02 AUDIO\nINDEX 01 00:00:03\n"
      "TRACK 03 CDG\nINDEX 01 00:00:05\nFILE b.bin MOTOROLA\nTRACK 04 AUDIO\nINDEX 01 00:00:00\n");
  auto disc = DiscImage::Open(sheet);
  ASSERT_THAT(disc, IsOk());
  EXPECT_THAT(Starts(*disc), ElementsAre(0, 3, 5, 6, 8));
  EXPECT_EQ(AsText(ReadSectors(*disc, 3, 5)), audio + tail.substr(0, 2352) + audio);
  Bytes bytes(2 * kAudioSectorBytes);
  EXPECT_THAT(disc->ReadAudio(Lba{2}, bytes), FailsWith(Outcome::InvalidParameter)) << "data";

  // A file that is cut after it was opened, and places behind its end.
  std::filesystem::resize_file(place.File("b.bin"), 2352);
  EXPECT_THAT(disc->ReadAudio(Lba{6}, bytes), FailsWith(Outcome::ReadFailed));
  for (const char* text : {"TRACK 01 AUDIO\nINDEX 01 00:00:02\n", "TRACK 01 AUDIO\nINDEX 01 99:59:74\n",
                           "TRACK 01 AUDIO\nINDEX 01 00:00:00\nTRACK 02 AUDIO\nINDEX 01 00:00:00\n",
                           "TRACK 01 AUDIO\nPREGAP 99:59:74\nINDEX 01 00:00:00\nPOSTGAP 00:00:01\n"}) {
    place.Write("bad.cue", std::string("FILE b.bin BINARY\n") + text);
    EXPECT_THAT(DiscImage::Open(place.File("bad.cue")), FailsWith(Outcome::WrongFormat)) << text;
  }
  place.Write("bad.cue", "FILE weg.bin BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n");
  EXPECT_THAT(DiscImage::Open(place.File("bad.cue")), FailsWith(Outcome::SourceFailed));
  EXPECT_THAT(DiscImage::Open(place.File("none.cue")), FailsWith(Outcome::SourceFailed));
  EXPECT_THAT(DiscImage::Open(place.File("a.bin")), FailsWith(Outcome::WrongFormat));
}

// --- the kernel's interface

TEST(ScsiGeneric, SendsWhatItIsGivenAndTellsWhatCameBack) {
  std::vector<sg_io_hdr> seen;
  Bytes cdbSeen;
  std::deque<std::function<int(sg_io_hdr&)>> answers;
  const auto transport =
      ScsiGeneric(FileDescriptor(::open("/dev/null", O_RDONLY)), [&](int descriptor, void* request) {
        EXPECT_GE(descriptor, 0);
        auto& header = *static_cast<sg_io_hdr*>(request);
        seen.push_back(header);
        cdbSeen.assign(header.cmdp, header.cmdp + header.cmd_len);
        const auto answer = std::move(answers.front());
        answers.pop_front();
        return answer(header);
      });
  const auto cdb = ReadCdAudioCdb(Lba{0x010203}, 0x1A);
  Bytes data(10);

  // A signal, then a short answer.
  answers = {[](sg_io_hdr&) {
               errno = EINTR;
               return -1;
             },
             [](sg_io_hdr& header) {
               std::memset(header.dxferp, 7, 6);
               header.resid = 4;
               return 0;
             }};
  ScsiReply reply = transport->Send({cdb, data, {}, std::chrono::seconds(3)});
  EXPECT_TRUE(reply.good);
  EXPECT_EQ(reply.transferred, 6U);
  EXPECT_EQ(data[5], 7);
  EXPECT_EQ(cdbSeen, Bytes(cdb.begin(), cdb.end()));
  ASSERT_EQ(seen.size(), 2U);
  EXPECT_EQ(seen[0].interface_id, 'S');
  EXPECT_EQ(seen[0].dxfer_direction, SG_DXFER_FROM_DEV);
  EXPECT_EQ(seen[0].dxfer_len, 10U);
  EXPECT_EQ(seen[0].timeout, 3000U);

  const auto refuse = [](Bytes sense) {
    return [sense](sg_io_hdr& header) {
      header.info = SG_INFO_CHECK;
      header.status = 2;
      header.masked_status = 1;
      header.sb_len_wr = static_cast<unsigned char>(sense.size());
      std::ranges::copy(sense, header.sbp);
      return 0;
    };
  };
  // Fixed and descriptor sense data; some that are cut; a host that did not carry the command; no device.
  answers = {refuse({0x70, 0, 0x02, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0x3A, 0x01, 0, 0}),
             refuse({0x72, 0x06, 0x28, 0x00, 0, 0, 0, 0}),
             refuse({0xF0, 0, 0x25}),
             refuse({}),
             [](sg_io_hdr& header) {
               header.info = SG_INFO_CHECK;
               header.host_status = 3;
               return 0;
             },
             [](sg_io_hdr&) {
               errno = ENODEV;
               return -1;
             }};
  const SenseData expected[] = {{2, 0x3A, 1}, {6, 0x28, 0}, {}, {}, {}, {}};
  for (const SenseData& sense : expected) {
    reply = transport->Send({TestUnitReadyCdb()});
    EXPECT_FALSE(reply.good);
    EXPECT_EQ(reply.sense, sense);
  }
  EXPECT_EQ(seen.back().dxfer_direction, SG_DXFER_NONE);
  EXPECT_THAT(OpenScsiDevice("/dev/gibt-es-nicht"), FailsWith(Outcome::SourceFailed));
}

// --- commands and replies

TEST(Mmc, CommandsAreTheBytesOfTheStandard) {
  struct Case {
    Cdb cdb;
    Bytes bytes;
  };
  const Case cases[] = {
      {TestUnitReadyCdb(), {0x00, 0, 0, 0, 0, 0}},
      {InquiryCdb(), {0x12, 0, 0, 0, 36, 0}},
      {ModeSense6Cdb(0x2A, 255), {0x1A, 0, 0x2A, 0, 255, 0}},
      {EjectCdb(), {0x1B, 0, 0, 0, 2, 0}},
      {LoadCdb(), {0x1B, 0, 0, 0, 3, 0}},
      {PreventRemovalCdb(false), {0x1E, 0, 0, 0, 0, 0}},
      {ReadCapacityCdb(), {0x25, 0, 0, 0, 0, 0, 0, 0, 0, 0}},
      {WriteCdb(Lba{-150}, 26), {0x2A, 0, 0xFF, 0xFF, 0xFF, 0x6A, 0, 0, 26, 0}},
      {SynchronizeCacheCdb(), {0x35, 0, 0, 0, 0, 0, 0, 0, 0, 0}},
      {ReadSubChannelCdb(SubChannelFormat::Isrc, 7, 0x0118), {0x42, 0, 0x40, 3, 0, 0, 7, 1, 0x18, 0}},
      {ReadTocCdb(), {0x43, 0, 0, 0, 0, 0, 0, 0x03, 0x24, 0}},
      {ReadTocCdb(TocFormat::Full, 1, 4), {0x43, 0, 2, 0, 0, 0, 1, 0, 4, 0}},
      {PlayAudioCdb(Lba{0x01020304}, 1), {0x45, 0, 1, 2, 3, 4, 0, 0, 1, 0}},
      {ReadDiscInformationCdb(34), {0x51, 0, 0, 0, 0, 0, 0, 0, 34, 0}},
      {ReadTrackInformationCdb(0xFF, 28), {0x52, 1, 0, 0, 0, 0xFF, 0, 0, 28, 0}},
      {SendOpcCdb(), {0x54, 1, 0, 0, 0, 0, 0, 0, 0, 0}},
      {ModeSelect10Cdb(60), {0x55, 0x10, 0, 0, 0, 0, 0, 0, 60, 0}},
      {ModeSense10Cdb(5, 256), {0x5A, 0, 5, 0, 0, 0, 0, 1, 0, 0}},
      {CloseTrackSessionCdb(CloseWhat::Track, 3), {0x5B, 1, 1, 0, 0, 3, 0, 0, 0, 0}},
      {CloseTrackSessionCdb(CloseWhat::Session, 3), {0x5B, 1, 2, 0, 0, 0, 0, 0, 0, 0}},
      {SendCueSheetCdb(0x010208), {0x5D, 0, 0, 0, 0, 0, 1, 2, 8, 0}},
      {BlankCdb(BlankType::Minimal), {0xA1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}},
      {BlankCdb(BlankType::Complete), {0xA1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}},
      {SetCdSpeedCdb(8), {0xBB, 0, 0x05, 0x88, 0x05, 0x88, 0, 0, 0, 0, 0, 0}},
      {SetCdSpeedCdb(0), {0xBB, 0, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0, 0, 0}},
      {MechanismStatusCdb(), {0xBD, 0, 0, 0, 0, 0, 0, 0, 0, 8, 0, 0}},
      {ReadCdAudioCdb(Lba{0x01020304}, 26), {0xBE, 0x04, 1, 2, 3, 4, 0, 0, 26, 0xF8, 0, 0}},
      {ReadCdAudioCdb(Lba{-2}, 1, true, ReadSub::Q), {0xBE, 4, 0xFF, 0xFF, 0xFF, 0xFE, 0, 0, 1, 0xFA, 2, 0}},
  };
  for (const Case& one : cases) {
    EXPECT_EQ(Bytes(one.cdb.begin(), one.cdb.end()), one.bytes);
    EXPECT_EQ(FindMmcCommand(one.bytes[0])->cdbBytes, one.bytes.size());
  }
  EXPECT_GE(BlankCdb(BlankType::Complete).Patience(), std::chrono::hours(1));
  EXPECT_EQ(WriteCdb(Lba{}, 1).Patience(), std::chrono::seconds(10));
}

Bytes TocBytes(const std::vector<std::array<std::uint32_t, 3>>& entries) {  // control, number, start
  ByteWriter out;
  out.U16Be(static_cast<std::uint16_t>(2 + entries.size() * 8));
  out.U16Be(0x0163);
  for (const auto& [control, number, start] : entries) {
    out.U8(0);
    out.U8(static_cast<std::uint8_t>(0x10 | control));
    out.U8(static_cast<std::uint8_t>(number));
    out.U8(0);
    out.U32Be(start);
  }
  return out.Release();
}

TEST(Mmc, ATableOfContentsTellsTheTracks) {
  const auto toc = DiscToc::Parse(TocBytes({{0, 1, 0}, {2, 2, 105}, {0, 0xAA, 165}}));
  ASSERT_THAT(toc, IsOk());
  EXPECT_THAT(toc->tracks, ElementsAre(TocTrack{1, true, 0, 105}, TocTrack{2, true, 105, 60, 2}));
  EXPECT_TRUE(toc->IsAudioCd());
  EXPECT_EQ(toc->Find(3), nullptr);
  // Music and, in a session of its own, data: what lies between the sessions is no music.
  const auto extra = DiscToc::Parse(TocBytes({{0, 1, 0}, {4, 2, 20'000}, {4, 0xAA, 30'000}}));
  ASSERT_THAT(extra, IsOk());
  EXPECT_EQ(extra->tracks[0].sectors, 8'600U);
  EXPECT_TRUE(extra->IsAudioCd());
  EXPECT_FALSE(DiscToc::Parse(TocBytes({{4, 1, 0}, {0, 2, 900}, {0, 0xAA, 3000}}))->IsAudioCd());

  // A time has two digits of minutes, so music ends there; data may be on a larger disc.
  EXPECT_THAT(DiscToc::Parse(TocBytes({{0, 1, 0}, {0, 0xAA, 449'850}})), IsOk());
  EXPECT_THAT(DiscToc::Parse(TocBytes({{4, 1, 0}, {4, 0xAA, 4'000'000}})), IsOk());
  Bytes cut = TocBytes({{0, 1, 0}, {0, 0xAA, 165}});
  cut.resize(cut.size() - 1);
  for (const Bytes& bytes :
       {Bytes{}, Bytes{0, 2, 1, 1}, cut, TocBytes({{0, 1, 0}, {0, 2, 100}}),
        TocBytes({{0, 1, 100}, {0, 2, 50}, {0, 0xAA, 165}}),
        TocBytes({{0, 1, 0}, {0, 3, 50}, {0, 0xAA, 165}}), TocBytes({{0, 0, 0}, {0, 0xAA, 165}}),
        TocBytes({{0, 1, 165}, {0, 0xAA, 165}}), TocBytes({{0, 1, 0}, {0, 0xAA, 449'851}})})
    EXPECT_THAT(DiscToc::Parse(bytes), FailsWith(Outcome::WrongFormat));
}

// --- the virtual drive

TEST(VirtualCd, AnswersAsADriveDoes) {
  auto image = DiscImage::Open(test::DataPath("cd/three_tracks.cue"));
  ASSERT_THAT(image, IsOk());
  const auto drive = VirtualCd(*std::move(image));
  Bytes data(kTocBytes);
  const auto send = [&](const Bytes& cdb) { return drive->Send({cdb, data}); };
  const auto toc = ReadTocCdb();
  ScsiReply reply = send(Bytes(toc.begin(), toc.end()));
  ASSERT_TRUE(reply.good);
  const Bytes expected = {0, 34,  1, 3,    0, 0x10, 1, 0, 0, 0,   0, 0,    0,    0x10, 2, 0, 0, 0,
                          0, 105, 0, 0x12, 3, 0,    0, 0, 0, 165, 0, 0x10, 0xAA, 0,    0, 0, 0, 215};
  EXPECT_THAT(std::span(data).first(reply.transferred), ElementsAreArray(expected));
  // From a track on, as times, cut to the length that is allowed: two seconds stand before sector 0.
  reply = send({0x43, 2, 0, 0, 0, 0, 3, 0, 20, 0});
  const Bytes times = {0, 18, 1, 3, 0, 0x12, 3, 0, 0, 0, 4, 15, 0, 0x10, 0xAA, 0, 0, 0, 4, 65};
  EXPECT_THAT(std::span(data).first(reply.transferred), ElementsAreArray(times));

  struct Refusal {
    Bytes cdb;
    SenseData sense;
  };
  for (const Refusal& one :
       std::vector<Refusal>{{{0x43, 0, 0, 0, 0, 0, 4, 3, 0x24, 0}, {5, 0x24, 0}},
                            {{0x43, 0, 4, 0, 0, 0, 0, 3, 0x24, 0}, {5, 0x24, 0}},
                            {{0x2A, 0, 0, 0, 0, 0, 0, 0, 0, 0}, {5, 0x20, 0}},
                            {{0x12, 0}, {5, 0x24, 0}},
                            {{0xBE, 4, 0, 0, 0, 215, 0, 0, 1, 0x10, 0, 0}, {5, 0x21, 0}},
                            {{0xBE, 4, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x10, 0, 0}, {5, 0x21, 0}},
                            {{0xBE, 4, 0, 0, 0, 0, 0, 0, 1, 0x10, 3, 0}, {5, 0x24, 0}},
                            {{0xBE, 4, 0, 0, 0, 0, 0, 0, 1, 0x10, 0, 0}, {5, 0x24, 0}}}) {
    reply = send(one.cdb);
    EXPECT_FALSE(reply.good);
    EXPECT_EQ(reply.sense, one.sense) << testing::PrintToString(one.cdb);
  }
  const auto empty = VirtualCd(std::nullopt);
  EXPECT_EQ(empty->Send({TestUnitReadyCdb()}).sense, (SenseData{2, 0x3A, 0}));
  EXPECT_TRUE(empty->Send({InquiryCdb(), data}).good);
}

class VirtualDriveTest : public testing::Test {
 protected:
  test::Home data_;
};

TEST_F(VirtualDriveTest, KeepsItsDiscUntilItIsTakenOut) {
  const std::string sheet = test::DataPath("cd/three_tracks.cue");
  EXPECT_EQ(VirtualDisc(), std::nullopt);
  EXPECT_THAT(InsertVirtualDisc(data_.File("none.cue")), FailsWith(Outcome::SourceFailed));
  EXPECT_THAT(InsertVirtualDisc(test::DataPath("cd/three_tracks.bin")), FailsWith(Outcome::WrongFormat));
  ASSERT_THAT(InsertVirtualDisc(std::filesystem::relative(sheet).string()), IsOk());
  ASSERT_TRUE(VirtualDisc());
  EXPECT_TRUE(std::filesystem::path(*VirtualDisc()).is_absolute());
  auto drive = CdDrive::Open(VirtualCdDirectory());
  ASSERT_THAT(drive, IsOk());
  EXPECT_EQ(*drive->Name(), VirtualCdName());
  const auto toc = drive->ReadToc();
  ASSERT_THAT(toc, IsOk());
  EXPECT_EQ(toc->tracks.size(), 3U);
  {
    // While it plays, the disc stays where it is.
    const auto claim = DriveClaim::Take(VirtualCdDirectory());
    ASSERT_THAT(claim, IsOk());
    EXPECT_THAT(DriveClaim::Take(VirtualCdDirectory()), FailsWith(Outcome::InUse));
    EXPECT_THAT(EjectVirtualDisc(), FailsWith(Outcome::InUse));
    EXPECT_THAT(InsertVirtualDisc(sheet), FailsWith(Outcome::InUse));
  }
  // Its own tray is emptied, too, and closing it brings nothing back.
  EXPECT_EQ(drive->Eject(), Outcome::Success);
  EXPECT_EQ(drive->Load(), Outcome::Success);
  EXPECT_THAT(drive->ReadToc(), FailsWith(Outcome::CdDriveFailed));
  EXPECT_EQ(VirtualDisc(), std::nullopt);
  EXPECT_THAT(EjectVirtualDisc(), IsOk());
  EXPECT_THAT(CdDrive::Open(VirtualCdDirectory())->ReadToc(), FailsWith(Outcome::CdDriveFailed));
  EXPECT_EQ(ScanDrives().back().path, VirtualRecorderDirectory());

  // Where nothing can be kept.
  EXPECT_EQ(test::InChild([&] {
              ::setenv("XDG_DATA_HOME", "/proc/self", 1);
              const auto inserted = InsertVirtualDisc(sheet);
              return inserted == Outcome::TargetFailed && !VirtualDisc() &&
                     CdDrive::Open(VirtualCdDirectory())->ReadToc().error() == Outcome::CdDriveFailed;
            }),
            0);

  // A disc whose files have gone is none.
  const std::string copy = data_.Write("weg.cue", test::Content(sheet));
  data_.Write("three_tracks.bin", test::Content(test::DataPath("cd/three_tracks.bin")));
  ASSERT_THAT(InsertVirtualDisc(copy), IsOk());
  std::filesystem::remove(data_.File("three_tracks.bin"));
  EXPECT_EQ(CdDrive::Open(VirtualCdDirectory())->State(), MediaState::NoMedium);
}

// --- a drive with moods

class ScriptedTransport final : public ScsiTransport {
 public:
  explicit ScriptedTransport(std::deque<ScsiReply> replies) : replies_(std::move(replies)) {}
  ScsiReply Send(const ScsiCommand& command) override {
    if (replies_.empty()) return {false, {5, 0x20, 0}, 0};
    ScsiReply reply = replies_.front();
    replies_.pop_front();
    if (reply.good) reply.transferred = std::min(reply.transferred, command.in.size());
    return reply;
  }

 private:
  std::deque<ScsiReply> replies_;
};

CdDrive Scripted(std::deque<ScsiReply> replies) {
  return CdDrive(std::make_unique<ScriptedTransport>(std::move(replies)));
}

TEST(CdDrive, WaitsTriesAgainAndGivesUp) {
  constexpr ScsiReply kChanged{false, {6, 0x28, 0}, 0};
  constexpr ScsiReply kBecomingReady{false, {2, 0x04, 0x01}, 0};
  constexpr ScsiReply kNoDisc{false, {2, 0x3A, 0x01}, 0};
  constexpr ScsiReply kScratch{false, {3, 0x11, 0x05}, 0};
  constexpr ScsiReply kGood{true, {}, 1 << 20};

  EXPECT_EQ(Scripted({kGood}).State(), MediaState::Ready);
  EXPECT_EQ(Scripted({kChanged}).State(), MediaState::UnitAttention);
  EXPECT_EQ(Scripted({kBecomingReady}).State(), MediaState::NotReady);
  EXPECT_EQ(Scripted({kNoDisc}).State(), MediaState::NoMedium);

  EXPECT_THAT(Scripted({kChanged, kBecomingReady, kNoDisc}).ReadToc(), FailsWith(Outcome::CdDriveFailed));
  EXPECT_THAT(Scripted({kBecomingReady}).ReadToc([] { return true; }), FailsWith(Outcome::Cancelled));
  EXPECT_THAT(Scripted({kGood, kScratch}).ReadToc(), FailsWith(Outcome::CdDriveFailed));
  EXPECT_THAT(Scripted({kGood, kGood}).ReadToc(), FailsWith(Outcome::CdDriveFailed)) << "all zeros";
  EXPECT_THAT(Scripted({kGood}).Name(), FailsWith(Outcome::CdDriveFailed)) << "a disk, by its zeros";

  Bytes sectors(27 * kAudioSectorBytes);
  EXPECT_THAT(Scripted({kGood, kGood}).ReadCdAudio(Lba{0}, sectors), IsOk()) << "26 sectors and one";
  EXPECT_THAT(Scripted({kScratch, kScratch, kGood, kGood}).ReadCdAudio(Lba{0}, sectors), IsOk());
  EXPECT_THAT(Scripted({kScratch, kScratch, kScratch, kGood}).ReadCdAudio(Lba{0}, sectors),
              FailsWith(Outcome::ReadFailed));
  for (const ScsiReply& another : {kNoDisc, kChanged}) {
    CdDrive drive = Scripted({another, kGood, kGood});
    for (int time = 0; time < 2; ++time)
      EXPECT_THAT(drive.ReadCdAudio(Lba{0}, sectors), FailsWith(Outcome::ReadFailed));
  }
  EXPECT_THAT(Scripted({{true, {}, 100}, {true, {}, 100}, {true, {}, 100}}).ReadCdAudio(Lba{0}, sectors),
              FailsWith(Outcome::ReadFailed));
}

}  // namespace
}  // namespace ts5
