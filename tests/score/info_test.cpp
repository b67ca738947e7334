// The information part of score files: the current format and the older ones, damaged and whole.
#include <gmock/gmock.h>

#include "score/score_properties.h"
#include "score/score_source.h"
#include "score_log.h"
#include "support/matchers.h"

namespace ts5 {
namespace {

using namespace test;
using testing::ElementsAre;

ScoreDocument Sample() {
  ScoreDocument score = OneVoice({ClefItem(0), KeyItem(-2), TimeItem(3, 2), Quarter(), BarItem()});
  score.author = "Müller";
  score.comment = "Zeile";
  score.landscape = true;
  score.gallery = {Bytes(300, 1), Bytes(2, 1)};
  StaffLayout drums = StaffNamed("", 300);
  drums.usesNoteMap = true;
  drums.noteMap.fill(0);
  drums.noteMap[5] = 77;
  drums.transpose = -12;
  score.staves.push_back(drums);
  return score;
}

TEST(ScoreSourceFields, CompactNumbersKeepTheirFormsApart) {
  const Bytes bytes = {0x80, 0xFF, 0xFF, 0x7F, 0xFE, 0xFF, 0xFF, 0xFF, 0x81,
                       0xFD, 0xFE, 0x00, 0x01, 0xFF, 0x00, 0x00, 0x01, 0x00};
  ScoreSource in{ByteView(bytes)};
  EXPECT_EQ(in.CompactSigned(), 65535);  // no sign
  EXPECT_EQ(in.CompactSigned(), -2);
  EXPECT_EQ(in.CompactSigned(), -127);
  EXPECT_EQ(in.CompactUnsigned(), 253U);
  EXPECT_EQ(in.CompactUnsigned(), 256U);
  EXPECT_EQ(in.CompactUnsigned(), 65536U);
  EXPECT_TRUE(in.Ok());
  const Bytes colours = {9, 16, 1, 2, 3};
  ScoreSource colour{ByteView(colours)};
  EXPECT_EQ(colour.Colour(), 0x0000FFU);
  EXPECT_EQ(colour.Colour(), 0x030201U);
}

TEST(ScoreInfo, HoldsWhatWasWritten) {
  const auto info = ReadScoreInfo(WriteScore(Sample()));
  ASSERT_THAT(info, IsOk());
  EXPECT_EQ(info->author, "Müller");
  EXPECT_EQ(info->keywords, "");
  EXPECT_TRUE(info->landscape);
  EXPECT_EQ(info->galleryObjects, 2U);
  EXPECT_EQ(info->systems, 1U);
  ASSERT_EQ(info->staves.size(), 2U);
  EXPECT_EQ(info->staves[0].name, "A");
  EXPECT_EQ(info->staves[0].volume, 100);
  EXPECT_EQ(info->staves[0].noteMap[127], 127);
  EXPECT_EQ(info->staves[1].name, "(ohne Bezeichnung)");
  EXPECT_EQ(info->staves[1].sound, 300);
  EXPECT_EQ(info->staves[1].transpose, -12);
  EXPECT_TRUE(info->staves[1].usesNoteMap);
  EXPECT_EQ(info->staves[1].noteMap[5], 77);
  const auto rows = ScorePropertyRows(*info, CalendarDate{});
  ASSERT_EQ(rows.size(), 9U);
  EXPECT_EQ(rows[0].label + ": " + rows[0].value, "Dateiformat: Stavora 3 (2000)");
  EXPECT_EQ(rows[3].label + ": " + rows[3].value, "Schlüsselbegriffe: (nicht verfügbar!)");
  EXPECT_EQ(rows[5].label + ": " + rows[5].value, "Seitenformat: Querformat");
}

TEST(ScoreInfo, BreaksOffAtEveryByte) {
  const Bytes file = WriteScore(Sample());
  const auto whole = ReadScoreInfo(file);
  ASSERT_THAT(whole, IsOk());
  for (std::size_t size = 0; size < file.size(); ++size) {
    const auto info = ReadScoreInfo(ByteView(file).first(size));
    const Outcome expected = size < 6                   ? Outcome::WrongFormat
                             : size < whole->bodyOffset ? Outcome::ReadFailed
                                                        : Outcome::Success;
    ASSERT_EQ(CodeOf(info), expected) << size;
    if (!info) continue;
    PlaybackParameters parameters;
    ASSERT_THAT(
        OpenAndScan(Bytes(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(size)), parameters),
        FailsWith(Outcome::DamagedScore));
  }
}

TEST(ScoreInfo, TellsFormatsApart) {
  Bytes file = WriteScore(Sample());
  file[5] = 'w';
  EXPECT_THAT(ReadScoreInfo(file), FailsWith(Outcome::WrongFormat));
  file[0] = 'x';
  EXPECT_THAT(ReadScoreInfo(file), FailsWith(Outcome::WrongFormat));
}

TEST(ScoreInfo, ReadsTheOlderFormats) {
  for (const unsigned version : {0U, 1U, 2U}) {
    const Bytes file = OldScore(version, version != 1);
    const auto info = ReadScoreInfo(file);
    ASSERT_THAT(info, IsOk()) << version;
    EXPECT_EQ(info->landscape, version != 1);
    EXPECT_EQ(info->systems, 5U);
    ASSERT_EQ(info->staves.size(), 2U);
    EXPECT_EQ(info->staves[0].name, "B");  // the second name counts
    EXPECT_FALSE(info->staves[0].usesNoteMap);
    EXPECT_EQ(info->staves[0].transpose, 12);
    EXPECT_EQ(info->staves[1].name, "(ohne Bezeichnung)");
    EXPECT_TRUE(info->staves[1].usesNoteMap);
    for (std::size_t size = 4; size < file.size(); ++size)
      ASSERT_THAT(ReadScoreInfo(ByteView(file).first(size)), FailsWith(Outcome::ReadFailed)) << size;

    std::vector<std::string> values;
    for (const PropertyRow& row : ScorePropertyRows(*info, CalendarDate{})) values.push_back(row.value);
    ASSERT_EQ(values.size(), 5U);
    EXPECT_EQ(values[0], "Stavora 2 (1000)");
    EXPECT_EQ(values[4], "2 :\r\n1\tB\r\n2\t(ohne Bezeichnung)\r\n");
    PlaybackParameters parameters;
    EXPECT_THAT(OpenAndScan(file, parameters), FailsWith(Outcome::OldScore));
  }
}

// Engine and all; what it makes of them does not matter, as long as it ends.
void PlayBytes(Bytes file) {
  PlaybackParameters parameters;
  const auto score = OpenAndScan(std::move(file), parameters);
  if (!score || score->scan.ticks > 1'000'000) return;
  (void)ScoreToMidi(*score, parameters, {});
}

TEST(DamagedScores, ChangedAtAnyByteComeToAnEnd) {
  ScoreDocument score = Sample();
  ScoreItem rich = With(With(Quarter(), HairpinDrawing(3, false)), CurveDrawing(2));
  rich.lyrics = {{"La", 0}, {"", 0}};
  rich.group.tuplet = {3, false, false};
  score.systems[0].staves[0].voices[0].push_back(rich);
  score.systems[0].staves[0].voices[0].push_back(BarItem(5));
  score.systems[0].staves[0].voices[0].push_back(WholeBarRest(2));
  const Bytes file = WriteScore(score);
  for (std::size_t at = 0; at < file.size(); ++at) {
    for (const int value : {0x00, 0x01, 0x07, 0x7F, 0x80, 0xFE, 0xFF}) {
      Bytes changed = file;
      changed[at] = static_cast<std::uint8_t>(value);
      PlayBytes(std::move(changed));
    }
    // Any count may promise gigabytes.
    Bytes promising = file;
    promising[at] = 0xFF;
    promising.insert(promising.begin() + static_cast<std::ptrdiff_t>(at) + 1, 4, std::uint8_t{0xFF});
    PlayBytes(std::move(promising));
  }
}

// Repeats may be many and may have nothing between them; a score with more of them than any music is damaged.
TEST(DamagedScores, RepeatsWithoutEndComeToOne) {
  const auto repeated = [](std::size_t times, const VoiceItems& section) {
    VoiceItems items;
    for (std::size_t i = 0; i < times; ++i) items.insert(items.end(), section.begin(), section.end());
    PlaybackParameters parameters;
    const auto score = OpenAndScan(WriteScore(OneVoice(items)), parameters);
    return score ? score->scan.ticks : 0;
  };
  constexpr std::uint64_t kLeadIn = 1440;  // a first quarter alone is an upbeat
  const VoiceItems section = {BarItem(4), Quarter(), BarItem(3)};
  EXPECT_EQ(repeated(1000, section), kLeadIn + 2U * 1000 * 480);
  EXPECT_EQ(repeated(kMaxJumps + 1, section), 0U);
  EXPECT_EQ(repeated(kMaxJumps + 1, {BarItem(4), BarItem(3)}), 0U);
  // Each goes back to where the one before it stood.
  EXPECT_EQ(repeated(100, {Quarter(), BarItem(5)}), kLeadIn + 2U * 100 * 480);
  EXPECT_EQ(repeated(100, {Quarter(), BarItem(3)}), kLeadIn + 2U * 100 * 480);
}

TEST(DamagedScores, VersesWithoutEndAreNotKept) {
  ByteWriter out;
  for (const int byte : {1, 0, 0, 2, 0x40, 255, 0xFF, 0xFF, 0xFF, 0xFF})
    out.U8(static_cast<std::uint8_t>(byte));
  out.Fill(100'000, 0);
  ScoreSource in(out.View());
  const ScoreObject object = ReadObject(in);
  EXPECT_FALSE(in.Ok());
  EXPECT_EQ(object.group.lyrics.size(), kMaxVerses);
}

// Long as they are, records of any kind are left where the user stops.
TEST(DamagedScores, ReadingIsStoppedInsideTheInformationPart) {
  constexpr std::size_t kRecords = 300'000;
  ScoreDocument pictures = Sample();
  pictures.gallery.assign(kRecords, Bytes());
  ScoreDocument music = Sample();
  music.systems[0].staves[0].voices[0].assign(kRecords, RestItem(6));
  ScoreDocument drawn = Sample();
  drawn.systems[0].staves[0].voices[0][3].drawings.assign(kRecords, CurveDrawing(0));
  for (const ScoreDocument* document : {&pictures, &music, &drawn}) {
    const Bytes file = WriteScore(*document);
    std::size_t whole = 0;
    PlaybackParameters parameters;
    EXPECT_THAT(OpenAndScan(file, parameters, true, [&] { return ++whole == SIZE_MAX; }), IsOk());
    EXPECT_GT(whole, 30U);
    for (const std::size_t at : {std::size_t{1}, whole / 3, whole}) {
      std::size_t asked = 0;
      EXPECT_THAT(OpenAndScan(file, parameters, true, [&] { return ++asked == at; }),
                  FailsWith(Outcome::Cancelled));
      EXPECT_EQ(asked, at) << "and does not go on";
    }
  }
}

TEST(ScoreInfo, PromisesOfGigabytesCostNothing) {
  Bytes file = WriteScore(Sample());
  file.resize(8);
  file.insert(file.end(), {0xFF, 0xFF, 0xFF, 0xFF, 0xFF});  // the author's length
  EXPECT_THAT(ReadScoreInfo(file), FailsWith(Outcome::ReadFailed));
}

}  // namespace
}  // namespace ts5
