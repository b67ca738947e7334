// Normalising to the bit, in all modes, and trimming of silence.
#include "audio/normalise.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>

#include "audio/silence_trimmer.h"
#include "platform/files/files.h"
#include "support/matchers.h"
#include "support/test_data.h"
#include "wave_bytes.h"

namespace ts5 {
namespace {

using namespace test;
using testing::ElementsAre;

Bytes DataOf(const std::string& name) {
  auto wave = WaveFile::Open(name);
  if (!wave) return {};
  Bytes data(static_cast<std::size_t>(wave->DataSize()));
  return wave->Read(data).value_or(0) == data.size() ? data : Bytes();
}

Bytes Wave8(std::initializer_list<std::uint8_t> samples) {
  return Wave(PcmFormat(8000, 8, 1), Bytes(samples));
}

TEST(ScanPeakTest, TakesMagnitudesPerChannel) {
  struct Row {
    Bytes file;
    Peaks peaks;
  };
  const std::vector<Row> rows{
      {Wave16({-32768, 10000, 5, -10001}, 2), {32768, 10001}},
      {Wave16({3, -4, 2}, 1), {4, 0}},
      {Wave16({}, 2), {0, 0}},
      {Wave16({7}, 2), {7, 0}},
      {Wave8({0, 255, 128}), {128, 0}},
      {Wave8({130, 127}), {2, 0}},
      {Wave16({1, 2, 3, 4, -5, 6}, 6), {5, 6}},
  };
  for (const Row& row : rows) {
    auto file = WaveFile::Read(InputFile::FromBytes(row.file));
    ASSERT_THAT(file, IsOk());
    const std::uint64_t size = file->DataSize();
    EXPECT_EQ(ScanPeak(*file).value_or(Peaks{99, 99}), row.peaks);
    EXPECT_EQ(file->DataSize(), size) << "not back at the start";
  }
  EXPECT_EQ(LevelsOf({32768, 16384}, 16), (Levels{100000, 50000}));
  EXPECT_EQ(LevelsOf({10000, 1}, 16), (Levels{30518, 3}));
  EXPECT_EQ(LevelsOf({128, 1}, 8), (Levels{100000, 781}));
  auto deep = WaveFile::Read(InputFile::FromBytes(Wave(PcmFormat(44100, 24, 1), Bytes(6))));
  ASSERT_THAT(deep, IsOk());
  EXPECT_THAT(ScanPeak(*deep), FailsWith(Outcome::WrongFormat));
}

struct NormaliseTest : testing::Test {
  const TemporaryDirectory place;
};

TEST_F(NormaliseTest, EachFileByItself) {
  const std::string source = place.Write("a.wav", AsText(Wave16({16384, -8192, 3, -3}, 2)));
  const std::string target = place.File("b.wav");
  const Bytes before = *ReadFile(source);
  ASSERT_THAT(Normalise({{source}}, {{target}}, 0, 1), IsOk());
  EXPECT_EQ(DataOf(target), Samples16({32767, -16384, 6, -6}));
  EXPECT_EQ(*ReadFile(source), before);
  // In place; the gain is a 32-bit float: 32768 / 10000.
  const std::string here = place.Write("c.wav", AsText(Wave16({10000, -10000, 1, 2, -9999})));
  ASSERT_THAT(Normalise({{here}}, {}, 0, 1), IsOk());
  EXPECT_EQ(DataOf(here), Samples16({32767, -32768, 3, 7, -32765}));
  EXPECT_EQ(Listing(place.Path()), "a.wav b.wav c.wav");
  // Before anyone sees it.
  auto staged = StagedFile::Create(place.File("d.wav"));
  ASSERT_THAT(staged, IsOk());
  ASSERT_THAT(staged->Write(Wave16({16384, -8192, 3, -3}, 2)), IsOk());
  ASSERT_THAT(NormaliseStaged(*staged), IsOk());
  ASSERT_THAT(staged->Commit(), IsOk());
  EXPECT_EQ(DataOf(place.File("d.wav")), Samples16({32767, -16384, 6, -6}));
}

TEST_F(NormaliseTest, EightBitsCountFrom128) {
  const std::string name = place.Write("a.wav", AsText(Wave8({128, 138, 78, 129})));  // peak 50: gain 2.56
  ASSERT_THAT(Normalise({{name}}, {}, 0, 1), IsOk());
  EXPECT_THAT(DataOf(name), ElementsAre(128, 154, 0, 131));
  const std::string loud = place.Write("b.wav", AsText(Wave8({192, 64})));
  ASSERT_THAT(Normalise({{loud}}, {}, 0, 1), IsOk());
  EXPECT_THAT(DataOf(loud), ElementsAre(255, 0));
}

TEST_F(NormaliseTest, LeavesAloneWhatNeedsNothing) {
  struct Row {
    const char* name;
    Bytes file;
  };
  for (const Row& row : std::vector<Row>{{"full", Wave16({-32768, 10000}, 2)},
                                         {"silent", Wave16({0, 0, 0, 0}, 2)},
                                         {"empty", Wave16({})},
                                         {"full 8", Wave8({0, 128})},
                                         {"silent 8", Wave8({128, 128})}}) {
    SCOPED_TRACE(row.name);
    const std::string source = place.Write("s.wav", AsText(row.file));
    EXPECT_THAT(Normalise({{source}}, {{place.File("t.wav")}}, 0, 1), FailsWith(Outcome::NotNecessary));
    EXPECT_THAT(Normalise({{source}}, {{place.File("t.wav")}}, kWholeProject, 1),
                FailsWith(Outcome::NotNecessary));
    {
      auto staged = StagedFile::Create(place.File("t.wav"));
      ASSERT_THAT(staged, IsOk());
      ASSERT_THAT(staged->Write(row.file), IsOk());
      EXPECT_THAT(NormaliseStaged(*staged), FailsWith(Outcome::NotNecessary));
      EXPECT_EQ(ReadFile(staged->TemporaryPath()).value_or(Bytes()), row.file);
    }
    EXPECT_EQ(*ReadFile(source), row.file);
    EXPECT_EQ(Listing(place.Path()), "s.wav");
  }
  // 32767 is not yet full scale for a file by itself.
  const std::string almost = place.Write("s.wav", AsText(Wave16({32767})));
  EXPECT_THAT(Normalise({{almost}}, {{place.File("t.wav")}}, 0, 1), IsOk());
}

// A header whose block size and byte rate have nothing to do with its samples: they are not torn apart.
TEST_F(NormaliseTest, TakesWholeSamplesWhateverTheHeaderSaysOfBlocks) {
  std::vector<std::int16_t> samples(20'000);
  for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = static_cast<std::int16_t>(i % 16385);
  std::vector<std::int16_t> louder(samples);
  for (std::int16_t& sample : louder) sample = static_cast<std::int16_t>(std::min(2 * sample, 32767));
  for (const std::uint16_t align : std::initializer_list<std::uint16_t>{0, 1, 3}) {
    SCOPED_TRACE(align);
    WaveFormat format = PcmFormat(44100, 16, 2);
    format.blockAlign = align;
    format.bytesPerSecond = 4097;
    const Bytes file = Wave(format, Samples16(samples));
    for (const int index : {0, kWholeProject}) {
      const std::string name = place.Write("a.wav", AsText(file));
      ASSERT_THAT(Normalise({{name}}, {}, index, 1), IsOk());
      EXPECT_EQ(DataOf(name), Samples16(louder));
    }
    auto staged = StagedFile::Create(place.File("b.wav"));
    ASSERT_THAT(staged, IsOk());
    ASSERT_THAT(staged->Write(file), IsOk());
    ASSERT_THAT(NormaliseStaged(*staged), IsOk());
    EXPECT_EQ(DataOf(staged->TemporaryPath()), Samples16(louder));
  }
}

// The file is cut while it is scanned, and while it is written louder.
TEST_F(NormaliseTest, AFileThatIsCutOnTheWayIsAReadError) {
  for (const int moment : {1, 4}) {
    const TemporaryDirectory place;
    const std::string source = place.Write(
        "a.wav", AsText(Wave(PcmFormat(8000, 16, 1), Samples16(std::vector<std::int16_t>(24'000, 99)))));
    int asked = 0;
    const WorkWatch watch{[&] {
                            if (asked++ == moment) std::filesystem::resize_file(source, 5000);
                            return false;
                          },
                          {}};
    EXPECT_THAT(Normalise({{source}}, {{place.File("b.wav")}}, 0, 1, watch), FailsWith(Outcome::ReadFailed));
    EXPECT_EQ(Listing(place.Path()), "a.wav");
  }
}

TEST_F(NormaliseTest, AProjectGetsTheGainOfItsLoudestFile) {
  const std::vector<std::string> sources{place.Write("a.wav", AsText(Wave16({8192, -100}))), "",
                                         place.Write("b.wav", AsText(Wave8({192, 120}))),  // 50 %: gain 2
                                         place.Write("c.wav", AsText(Wave16({1, 2, 3})))};
  const std::vector<std::string> targets{place.File("A.wav"), "", "", ""};
  EXPECT_EQ(ScanProjectLevel(sources).value_or(Levels{}), (Levels{50000, 0}));
  ASSERT_THAT(Normalise(sources, targets, kWholeProject, sources.size()), IsOk());
  EXPECT_EQ(DataOf(targets[0]), Samples16({16384, -200}));
  EXPECT_EQ(DataOf(sources[0]), Samples16({8192, -100}));
  EXPECT_THAT(DataOf(sources[2]), ElementsAre(255, 112));
  EXPECT_EQ(DataOf(sources[3]), Samples16({2, 4, 6}));
}

TEST_F(NormaliseTest, AProjectWithinATenthOfFullScaleIsLeftAlone) {
  struct Row {
    std::int16_t peak;
    Outcome outcome;
  };
  // Levels of 95 %, and on both sides of 1 / 1.1: 90912 and 90909.
  for (const Row& row : std::vector<Row>{
           {31130, Outcome::NotNecessary}, {29790, Outcome::NotNecessary}, {29789, Outcome::Success}}) {
    const std::string name = place.Write("a.wav", AsText(Wave16({row.peak})));
    EXPECT_EQ(Normalise({{name}}, {}, kWholeProject, 1), row.outcome) << row.peak;
  }
}

TEST_F(NormaliseTest, FailuresAndStopsLeaveEverythingAsItWas) {
  const Bytes quiet = Wave16({1000, -2000, 3000});
  const std::string source = place.Write("a.wav", AsText(quiet));
  const std::string deep = place.Write("d.wav", AsText(Wave(PcmFormat(44100, 24, 1), Bytes(6, 1))));
  EXPECT_THAT(Normalise({{place.File("none.wav")}}, {}, 0, 1), FailsWith(Outcome::SourceNotOpened));
  EXPECT_THAT(Normalise({{source, place.File("none.wav")}}, {}, kWholeProject, 2),
              FailsWith(Outcome::SourceNotOpened));
  EXPECT_THAT(Normalise({{source}}, {{place.File("none/b.wav")}}, 0, 1),
              FailsWith(Outcome::TargetNotCreated));
  EXPECT_THAT(Normalise({{deep}}, {}, 0, 1), FailsWith(Outcome::WrongFormat));
  EXPECT_THAT(Normalise({{source}}, {}, 1, 1), FailsWith(Outcome::InvalidParameter));
  // A stop at each of the questions: while scanning, while writing.
  for (int allowed = 0; allowed < 2; ++allowed) {
    int asked = 0;
    const WorkWatch watch{[&] { return asked++ == allowed; }, {}};
    EXPECT_THAT(Normalise({{source}}, {}, 0, 1, watch), FailsWith(Outcome::Cancelled));
    EXPECT_THAT(Normalise({{source}}, {{place.File("b.wav")}}, 0, 1,
                          watch.cancelled ? WorkWatch{[] { return true; }, {}} : watch),
                FailsWith(Outcome::Cancelled));
  }
  EXPECT_EQ(*ReadFile(source), quiet);
  EXPECT_EQ(Listing(place.Path()), "a.wav d.wav");
}

TEST_F(NormaliseTest, ProgressRisesToTheEnd) {
  std::vector<std::string> names;
  for (const char* name : {"a.wav", "b.wav"}) names.push_back(place.Write(name, AsText(Wave16({1000, 2}))));
  std::vector<double> seen;
  const WorkWatch watch{{}, [&](double fraction) { seen.push_back(fraction); }};
  ASSERT_THAT(Normalise(names, {}, kWholeProject, 2, watch), IsOk());
  EXPECT_TRUE(std::ranges::is_sorted(seen));
  EXPECT_EQ(seen.back(), 1);
}

std::string Trimmed(std::initializer_list<std::string_view> portions) {
  std::string out;
  SilenceTrimmer trimmer(1, [&](ByteView bytes) {
    out.append(AsText(bytes));
    return Outcome::Success;
  });
  for (std::string portion : std::vector<std::string>(portions.begin(), portions.end())) {
    std::ranges::replace(portion, '.', '\0');
    EXPECT_THAT(trimmer.Push(AsBytes(portion)), IsOk());
  }
  EXPECT_THAT(trimmer.Finish(), IsOk());
  std::ranges::replace(out, '\0', '.');
  return out;
}

TEST(SilenceTrimmerTest, KeepsOneSilentFrameAtTheEnd) {
  EXPECT_EQ(Trimmed({"...ab..c.........."}), "ab..c.");
  EXPECT_EQ(Trimmed({"ab"}), "ab");
  EXPECT_EQ(Trimmed({"..", "..a", ".", "..", "b", "", "...", ".."}), "a...b.");
  EXPECT_EQ(Trimmed({"a."}), "a.");
  EXPECT_EQ(Trimmed({"...", "..."}), "");
  EXPECT_EQ(Trimmed({}), "");
  // A frame is silent only when all its bytes are.
  Bytes out;
  SilenceTrimmer trimmer(4, [&](ByteView bytes) {
    out.insert(out.end(), bytes.begin(), bytes.end());
    return Outcome::Success;
  });
  Bytes frames(4 * 20000);
  frames[7] = 1;
  frames[4 * 12000] = 2;
  EXPECT_THAT(trimmer.Push(frames), IsOk());
  EXPECT_THAT(trimmer.Finish(), IsOk());
  EXPECT_EQ(out.size(), 4U * 12001);
  EXPECT_EQ(out[3], 1);
}

}  // namespace
}  // namespace ts5
