// Every kind of file says what it has.
#include "modules/file_facts.h"

#include <gtest/gtest.h>

#include "support/test_data.h"

namespace ts5 {
namespace {

FileFacts Read(const std::string& path) {
  FileFacts facts;
  ReadFileFacts(path, facts, {});
  return facts;
}

TEST(FileFacts, OfEveryKind) {
  const std::string demo = test::DataPath("../../demo/");
  const FileFacts midi = Read(demo + "Gymnopédie Nr. 1.mid");
  EXPECT_TRUE(midi.length && *midi.length > std::chrono::minutes(1));
  EXPECT_EQ(midi.metre, "3/4");
  EXPECT_GT(midi.tempo, 20);
  EXPECT_GE(midi.voices, 1U);
  EXPECT_EQ(midi.channels, 0U);
  const FileFacts rondelis = Read(demo + "Gymnopédie Nr. 1.rdl");
  EXPECT_EQ(rondelis.length, midi.length);
  const FileFacts score = Read(demo + "Menuett G-Dur.stv");
  EXPECT_EQ(score.key, "G-Dur/e-Moll");
  EXPECT_EQ(score.metre, "3/4");
  const FileFacts repeats = Read(demo + "When the Saints.stv");
  EXPECT_EQ(std::chrono::round<std::chrono::seconds>(*repeats.length).count(), 46) << "as it is played";
  EXPECT_GE(score.voices, 1U);

  const test::TemporaryDirectory place;
  std::string wave("RIFF\0\0\0\0WAVEfmt \x10\0\0\0\1\0\2\0\x44\xAC\0\0\x10\xB1\2\0\4\0\x10\0data\x20\x62\5\0",
                   44);
  wave.resize(44 + 352'800);
  const FileFacts audio = Read(place.Write("a.wav", wave));
  EXPECT_EQ(audio.channels, 2U);
  EXPECT_EQ(audio.length, std::chrono::milliseconds(2000));
  EXPECT_EQ(audio.key, "");

  for (const char* name : {"kaputt.mid", "kaputt.stv", "kaputt.xml", "kaputt.mp3", "kaputt.txt"})
    EXPECT_EQ(Read(place.Write(name, "no music")), FileFacts{}) << name;
  EXPECT_EQ(Read(place.File("weg.mid")), FileFacts{});
}

}  // namespace
}  // namespace ts5
