#include <gmock/gmock.h>

#include <algorithm>
#include <string>
#include <utility>

#include "midi/midi_containers.h"
#include "midi/midi_file.h"
#include "midi_bytes.h"
#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using namespace test;

const CalendarDate kDate{std::chrono::year(2024), std::chrono::month(1), std::chrono::day(31)};
const RiffFileInfo kInfo{{"Übung", "E. Satie", "", "Klavier"}, kDate};

// 29 and 30 bytes.
const Bytes kSong = Join({Header(0, 1, 96), Track("00 C0 05 00 FF 2F 00")});
const Bytes kEvenSong = Join({Header(0, 1, 96), Track("00 90 3C 40 00 FF 2F 00")});

Bytes WithMagic(Bytes file, std::string_view magic) {
  std::ranges::copy(magic, file.begin());
  return file;
}

TEST(MidiKindTest, IsFoundInTheFirstBytes) {
  const Bytes inRiff = Riff(Join({Header(0, 1, 96)}));
  const struct {
    const char* what;
    Bytes file;
    int kind;
  } cases[] = {
      {"format 0", Header(0, 1, 96), 13},
      {"format 0 with several tracks", Header(0, 3, 96), 13},
      {"format 1", Header(1, 2, 96), 14},
      {"format 1 with one track", Header(1, 1, 96), 13},
      {"format 2", Header(2, 1, 96), 14},
      {"RIFF", Riff(Header(0, 1, 96)), 15},
      {"RIFF around format 1", Riff(Header(1, 2, 96)), 15},
      {"RIFF around format 1 with one track", Riff(Header(1, 1, 96)), 13},
      {"sequencer", Header(1, 2, 96, "RDL3"), 16},
      {"score variant", Header(0, 1, 96, "STVR"), 16},
      {"sequencer with one track of format 1", Header(1, 1, 96, "RDL3"), 13},
      {"only the last byte of the length counts", Hex("4D546864 FFFFFF06 0000 0001 0060"), 13},
      {"another length", Hex("4D546864 00000007 0000 0001 0060"), -1},
      {"SMPTE division", Header(0, 1, 0xE728), -1},
      {"the highest division", Header(0, 1, 0x7FFF), 13},
      {"RIFF around something else", Riff(Header(0, 1, 96, "RDL3")), -1},
      {"another magic", Header(0, 1, 96, "MThD"), -1},
      {"nothing", {}, -1},
      {"a header cut short", Hex("4D546864 00000006 0000 0001 00"), -1},
      {"a RIFF header cut short", Bytes(inRiff.begin(), inRiff.begin() + 33), -1},
  };
  for (const auto& c : cases) EXPECT_EQ(static_cast<int>(DetectMidiKind(c.file).kind), c.kind) << c.what;
}

TEST(MidiKindTest, HeaderOfAFile) {
  const TemporaryDirectory directory;
  const std::string path = directory.Write("a.rmi", AsText(Riff(Header(1, 7, 480))));
  const auto info = ReadMidiFileHeader(path);
  ASSERT_THAT(info, IsOk());
  EXPECT_EQ(info->kind, MidiFileKind::Riff);
  EXPECT_EQ(info->header.format, 1);
  EXPECT_EQ(info->header.trackCount, 7);
  EXPECT_EQ(info->header.division, 480);
  EXPECT_EQ(info->header.Magic(), "MThd");
  EXPECT_THAT(ReadMidiFileHeader(directory.File("none.mid")), FailsWith(Outcome::SourceFailed));
  EXPECT_THAT(ReadMidiFileHeader(directory.Path()), FailsWith(Outcome::SourceFailed));
  EXPECT_THAT(ReadMidiFileHeader(directory.Write("a.mid", "MThd")), FailsWith(Outcome::WrongFormat));
}

TEST(ContainerTest, RiffFileByteForByte) {
  const auto riff = SmfToRiff(kEvenSong, kInfo);
  ASSERT_THAT(riff, IsOk());
  ByteWriter expected;
  expected.Append(Hex("52494646 96000000 524D4944"));  // RIFF, 150 bytes, RMID
  expected.Append(Hex("64617461 1E000000"));           // data: 30 bytes
  expected.Append(kEvenSong);
  expected.Append(Hex("44495350 0A000000 01000000 DC 62 75 6E 67 00"));  // DISP 1 "Übung"
  expected.Append(Hex("4C495354 52000000 494E464F"));                    // LIST 82 INFO
  expected.Append(Hex("49415254 09000000"));
  expected.Append(std::string_view("E. Satie\0\0", 10));
  expected.Append(Hex("49434F50 12000000"));
  expected.Append(std::string_view("(nicht verwendet)\0", 18));
  expected.Append(Hex("4953424A 08000000"));
  expected.Append(std::string_view("Klavier\0", 8));
  expected.Append(Hex("49435244 0A000000"));
  expected.Append(std::string_view("31/1/2024\0", 10));
  EXPECT_EQ(Dump(*riff), Dump(expected.View()));
}

TEST(ContainerTest, OddMusicIsPadded) {
  const auto wrapped = WrapInRiff(kSong);
  ASSERT_THAT(wrapped, IsOk());
  EXPECT_EQ(Dump(*wrapped),
            Dump(Join({Hex("52494646 2A000000 524D4944 64617461 1D000000"), kSong, Hex("00")})));
  EXPECT_EQ(*RiffToSmf(*wrapped), kSong);
}

TEST(ContainerTest, SettingsBlockOfASequencerFile) {
  const auto file = SmfToSequencer(kSong);
  ASSERT_THAT(file, IsOk());
  ASSERT_EQ(file->size(), kSong.size() + 8696);
  EXPECT_EQ(Bytes(file->begin(), file->begin() + 29), WithMagic(kSong, "RDL3"));

  const ByteView settings = ByteView(*file).subspan(kSong.size());
  const auto at = [&](std::size_t offset) {
    ByteReader in(settings);
    in.Seek(offset);
    return in.U32Le();
  };
  const std::pair<std::size_t, std::uint32_t> values[] = {
      {0x000, 1},           {0x004, 0},           {0x01C, 9},           {0x024, 63},
      {0x028, 0},           {0x15C, 9999},        {0x38C, 50},          {0x608, 420},
      {0x60C, 653},         {0x610, 506},         {0x868, 400},         {0xC80, UINT32_MAX},
      {0x1090, 0},          {0x1094, 0x64646464}, {0x1298, 0x64646464}, {0x129C, 0x40404040},
      {0x14A0, 0x40404040}, {0x14A4, 0},          {0x1988, 0xFFFF},     {0x1990, 0x7FFF},
      {0x1994, UINT32_MAX}, {0x19A0, UINT32_MAX}, {0x19A4, 0xFFFF},     {0x19A8, 0},
      {0x21F4, 0}};
  for (const auto& [offset, value] : values) EXPECT_EQ(at(offset), value) << std::hex << offset;
  // All of it, so that no value can be forgotten: the sum of its bytes, added up from the list by hand.
  std::uint64_t sum = 0;
  for (const std::uint8_t byte : settings) sum += byte;
  EXPECT_EQ(sum, 94000U);
}

TEST(ContainerTest, TakesWhatTheHeaderCounts) {
  const Bytes track = Track("00 FF 2F 00");
  const Bytes two = Join({Header(1, 2, 96), track, track});
  const Bytes junk = Hex("00 11 22 33 44 55 66 77 88");
  // A plain file goes over whole, with what lies behind its tracks and with chunks that nobody knows.
  const Bytes trailing = Join({two, junk});
  EXPECT_EQ(RiffMidiData(*SmfToRiff(trailing, kInfo))->size(), SmfToRiff(trailing, kInfo)->size() - 20);
  EXPECT_EQ(SmfToSequencer(trailing)->size(), trailing.size() + kSequencerSettingsSize);
  // Out of the others come the tracks only.
  EXPECT_EQ(*RiffToSmf(Riff(trailing)), two);
  EXPECT_EQ(*SequencerToSmf(WithMagic(trailing, "RDL3")), WithMagic(two, "MThd"));
  // The header's other bytes stay as they are.
  Bytes odd = two;
  odd[4] = 0xAB;
  EXPECT_EQ(*RiffToSmf(Riff(odd)), odd);
  // A data chunk whose size lies: the tracks decide.
  Bytes lying = Riff(two);
  lying[16] = 0;
  EXPECT_EQ(*RiffToSmf(lying), two);
}

TEST(ContainerTest, Refusals) {
  const Bytes track = Track("00 FF 2F 00");
  const Bytes riff = Riff(Join({Header(1, 2, 96), track, track}));
  const Bytes sequencer = Join({Header(1, 2, 96, "RDL3"), track, track});
  const auto patched = [](Bytes file, std::size_t at, std::string_view text) {
    std::ranges::copy(text, file.begin() + static_cast<std::ptrdiff_t>(at));
    return file;
  };
  const auto cut = [](Bytes file, std::size_t size) {
    file.resize(size);
    return file;
  };
  EXPECT_THAT(SmfToRiff(sequencer, kInfo), FailsWith(Outcome::WrongFormat));
  EXPECT_THAT(SmfToSequencer(riff), FailsWith(Outcome::WrongFormat));
  EXPECT_THAT(SmfToSequencer(Hex("4D546864 00")), FailsWith(Outcome::ReadFailed));
  const struct {
    const char* what;
    Bytes file;
    Outcome code;
  } riffs[] = {
      {"another form", patched(riff, 8, "WAVE"), Outcome::WrongFormat},
      {"no data chunk", patched(riff, 12, "junk"), Outcome::WrongFormat},
      {"no MIDI header", patched(riff, 20, "RDL3"), Outcome::WrongFormat},
      {"no track", patched(riff, 34, "XFIH"), Outcome::WrongFormat},
      {"no second track", patched(riff, 46, "XFIH"), Outcome::WrongFormat},
      {"cut in the header", cut(riff, 30), Outcome::ReadFailed},
      {"cut in a track", cut(riff, 57), Outcome::ReadFailed},
      {"cut before a track", cut(riff, 46), Outcome::ReadFailed},
      {"a track as long as the world", patched(riff, 50, "\xFF\xFF\xFF\xFF"), Outcome::ReadFailed},
      {"nothing", {}, Outcome::WrongFormat},
  };
  for (const auto& c : riffs) {
    EXPECT_THAT(RiffToSmf(c.file), FailsWith(c.code)) << c.what;
    EXPECT_THAT(RiffToSequencer(c.file), FailsWith(c.code)) << c.what;
  }
  EXPECT_THAT(SequencerToSmf(patched(sequencer, 0, "STVR")), FailsWith(Outcome::WrongFormat));
  EXPECT_THAT(SequencerToSmf(patched(sequencer, 26, "XFIH")), FailsWith(Outcome::WrongFormat));
  EXPECT_THAT(SequencerToRiff(cut(sequencer, 30), kInfo), FailsWith(Outcome::ReadFailed));
}

// --- INFO lists

std::string Entries(const Result<std::vector<RiffInfoEntry>>& entries) {
  if (!entries) return ToString(entries.error());
  std::string text;
  for (const auto& e : *entries) text += e.id + '=' + e.text + '|';
  return text;
}

TEST(RiffInfoTest, ReadsWhatItWrote) {
  const RiffFileInfo info{{"", "Größe – €", "c", std::string(70001, 'x')}, kDate};
  EXPECT_EQ(Entries(ReadRiffInfo(*SmfToRiff(kSong, info))),
            "IART=Größe – €|ICOP=c|ISBJ=" + std::string(70001, 'x') + "|ICRD=31/1/2024|");
  const RiffFileInfo foreign{{"", "Dvořák \xFF", "", ""}, kDate};
  EXPECT_THAT(Entries(ReadRiffInfo(*SmfToRiff(kSong, foreign))), testing::StartsWith("IART=Dvo?ák ?|"));
}

TEST(RiffInfoTest, ReadsDamagedLists) {
  const std::string form("RIFF\0\0\0\0WAVE", 12);
  const struct {
    const char* what;
    std::string chunks;
    const char* entries;
  } cases[] = {
      {"none", "", ""},
      {"not a list of INFO", std::string("LIST\x04\0\0\0adtl", 12), ""},
      {"a list without a type", std::string("LIST\0\0\0\0", 8), ""},
      {"no terminating zero", std::string("LIST\x0E\0\0\0INFOINAM\x02\0\0\0ab", 22), "INAM=ab|"},
      {"a text that claims too much",
       std::string("LIST\x0E\0\0\0INFOINAM\xFF\xFF\xFF\xFF"
                   "ab",
                   22),
       "INAM=ab|"},
      {"a list that claims too much", std::string("LIST\xFF\xFF\xFF\x7FINFOINAM\x02\0\0\0ab", 22),
       "INAM=ab|"},
      {"two lists", std::string("LIST\x0C\0\0\0INFOINAM\0\0\0\0LIST\x0C\0\0\0INFOIART\0\0\0\0", 40),
       "INAM=|IART=|"},
      {"an id of no letters", std::string("LIST\x0C\0\0\0INFO\x80\xFF\x01\0\0\0\0\0", 20), "€ÿ\x01"},
  };
  for (const auto& c : cases) {
    EXPECT_THAT(Entries(ReadRiffInfo(AsBytes(form + c.chunks))), testing::StartsWith(c.entries)) << c.what;
  }
  EXPECT_THAT(ReadRiffInfo(AsBytes("RIFF")), FailsWith(Outcome::WrongFormat));
  EXPECT_THAT(ReadRiffInfo(kSong), FailsWith(Outcome::WrongFormat));
  EXPECT_THAT(ReadRiffInfo(std::string("/no/such/file")), FailsWith(Outcome::SourceFailed));
}

}  // namespace
}  // namespace ts5
