// Audio attributes: as a job keeps them, as each format holds them, and that writing them changes nothing
// else.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include "audio/ape/ape_sink.h"
#include "audio/tags/attribute_form.h"
#include "audio/tags/attribute_names.h"
#include "audio/tags/attribute_store.h"
#include "audio/tags/tag_file.h"
#include "audio/wave_stream.h"
#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5::tags {
namespace {

using namespace test;
using testing::ElementsAre;
using testing::HasSubstr;

Attribute Make(std::string_view name, std::string_view value, AttributeType type = AttributeType::String) {
  return {type, std::string(name), std::string(value), false, true};
}

TEST(AttributeValues, FromTexts) {
  const struct {
    AttributeType type;
    std::string text;
    std::optional<std::string> value;
  } cases[] = {
      {AttributeType::String, "Grüße", "Grüße"},
      {AttributeType::String, "", ""},
      {AttributeType::String, "\xFF", std::nullopt},
      {AttributeType::String, std::string(32766, 'a'), std::string(32766, 'a')},
      {AttributeType::String, std::string(32767, 'a'), std::nullopt},  // 65,536 bytes
      {AttributeType::Bool, "Ja", "1"},
      {AttributeType::Bool, "false", "0"},
      {AttributeType::Bool, "2", std::nullopt},
      {AttributeType::Word, "65535", "65535"},
      {AttributeType::Word, "65536", std::nullopt},
      {AttributeType::DWord, "4294967296", std::nullopt},
      {AttributeType::DWord, "-1", std::nullopt},
      {AttributeType::QWord, "18446744073709551615", "18446744073709551615"},
      {AttributeType::QWord, "18446744073709551616", std::nullopt},
      {AttributeType::Binary, "x", std::nullopt},
  };
  for (const auto& row : cases)
    EXPECT_EQ(ValueFromText(row.type, row.text), row.value) << row.text.substr(0, 30);
}

TEST(AttributeValues, AsUsersReadThem) {
  EXPECT_EQ(DisplayValue(Make("HasAudio", "1", AttributeType::Bool)), "Ja");
  EXPECT_EQ(
      DisplayValue(Make("x", std::string("\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0A\x0B\x0C\x0D\x0E\x0F\x10"),
                        AttributeType::Guid)),
      "04030201-0605-0807-090A-0B0C0D0E0F10");
  EXPECT_EQ(DisplayValue(Make("x", "abc", AttributeType::Binary)), "Der Wert kann nicht dargestellt werden.");
  EXPECT_EQ(UnixSecondsOf(FileTimeOf(1234567890)), 1234567890);
  EXPECT_EQ(FileTimeOf(0), 116444736000000000U);
}

TEST(AttributeStore, AsJobsKeepThem) {
  const Attributes attributes{
      Make("Author", "Größe ¡Olé!"),
      Make("HasSomething", "1", AttributeType::Bool),
      {AttributeType::QWord, "WM/EncodingTime", "18446744073709551615", false, false},
      Make("Picture", "\x01\x02", AttributeType::Binary),
      {AttributeType::QWord, "Duration", "5", true, true},
      Make("Title", ""),
  };
  RegistryValues values;
  SaveAttributes(attributes, values);
  EXPECT_EQ(values.Text("FileAttributeNum"), "3");
  EXPECT_EQ(values.Text("FileAttribute001"), "1¡Author¡1¡24¡Größe ¡Olé!");
  EXPECT_EQ(values.Text("FileAttribute002"), "3¡HasSomething¡1¡4¡1");
  EXPECT_EQ(values.Text("FileAttribute003"), "4¡WM/EncodingTime¡0¡8¡18446744073709551615");
  EXPECT_EQ(LoadAttributes(values), Attributes(attributes.begin(), attributes.begin() + 3));
}

TEST(AttributeStore, LeavesOutWhatDoesNotFit) {
  RegistryValues values;
  const std::string texts[] = {
      "1¡Title¡1¡8¡abc",
      "1¡Author¡1¡8",                                 // breaks off
      "7¡Author¡1¡8¡abc",                             // no such type
      "2¡Author¡1¡8¡abc",                             // binary
      "0¡Author¡1¡4¡abc",                             // no number
      "1¡" + std::string(68, 'n') + "¡1¡8¡abc",       // a name of 68 characters
      "4¡Duration¡1¡8¡5",                             // read-only
      "1¡Author¡1¡65536¡" + std::string(65536, 'x'),  // 64 KB
      "1¡title¡1¡8¡twice",
  };
  std::size_t number = 0;
  for (const std::string& text : texts) values.SetText("FileAttribute00" + std::to_string(++number), text);
  values.SetText("FileAttributeNum", "999999999999");
  EXPECT_THAT(LoadAttributes(values), ElementsAre(Make("Title", "abc")));
}

// --- files

std::vector<double> AllSamples(const std::string& path) {
  auto source = OpenPcm(path);
  EXPECT_THAT(source, IsOk()) << path;
  std::vector<double> samples;
  if (!source) return samples;
  std::vector<double> block(1000 * std::size_t{(*source)->Shape().channels});
  for (auto got = (*source)->Read(block); got && *got > 0; got = (*source)->Read(block)) {
    samples.insert(samples.end(), block.begin(),
                   block.begin() + static_cast<std::ptrdiff_t>(*got * (*source)->Shape().channels));
  }
  return samples;
}

std::string CopyOf(const TemporaryDirectory& directory, const std::string& name) {
  if (name != "made.ape") return directory.Write(name, Content(DataPath("audio/" + name)));
  const std::string path = directory.File(name);
  auto staged = StagedFile::Create(path);
  auto sink = OpenApeSink(*staged, {44100, 1, 16, ape::Level::Fast}, std::nullopt);
  std::vector<double> samples(5000);
  for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = static_cast<double>(i % 100) / 128;
  EXPECT_THAT((*sink)->Write(samples), IsOk());
  EXPECT_THAT((*sink)->Finish(), IsOk());
  EXPECT_THAT(staged->Commit(), IsOk());
  return path;
}

const char* const kTagged[] = {"wma_v2_stereo_tags.wma",
                               "mpeg1_layer3_cbr128.mp3",
                               "mpeg1_layer3_vbr_xing_id3v2.mp3",
                               "mpeg2_layer3_mono_22050_id3v1.mp3",
                               "mpeg1_layer2_stereo_44100.mp2",
                               "ogg_vorbis_q3_tags.ogg",
                               "ogg_vorbis_mono_11025.ogg",
                               "made.ape",
                               "wavpack_mono_8000.wv",
                               "aac_stereo_44100.m4a",
                               "alac_mono_16.m4a",
                               "aiff_pcm24_stereo_48000.aiff",
                               "flac_mono_16.flac",
                               "opus_stereo.opus"};

TEST(AttributeFiles, ComeBackAndLeaveTheAudioAlone) {
  AttributeChanges changes;
  changes.set = {
      Make("Author", "Dvořák & Söhne"), Make("Title", "Größe"),
      Make("WM/AlbumTitle", "Album"),   Make("WM/Genre", "Klassik"),
      Make("WM/TrackNumber", "7"),      Make("WM/Year", "1999"),
      Make("Description", "Zeile 1"),   Make("WM/Mood", "heiter"),
      Make("Mein Feld", "eigen"),       Make("WM/EncodingTime", "116444736000000000", AttributeType::QWord)};
  for (const char* name : kTagged) {
    SCOPED_TRACE(name);
    const TemporaryDirectory directory;
    const std::string path = CopyOf(directory, name);
    const std::vector<double> before = AllSamples(path);
    EXPECT_EQ(ChangeAttributes(path, changes).value_or(99), 0U);
    EXPECT_TRUE(AllSamples(path) == before);
    const auto back = ReadAttributes(path);
    ASSERT_THAT(back, IsOk());
    for (const Attribute& wanted : changes.set) {
      const Attribute* const found = FindAttribute(*back, wanted.name);
      ASSERT_NE(found, nullptr) << wanted.name;
      EXPECT_EQ(found->value, wanted.value);
    }
    // All is there already: the file is not touched.
    struct stat first {};
    struct stat second {};
    stat(path.c_str(), &first);
    EXPECT_EQ(ChangeAttributes(path, changes).value_or(99), 0U);
    stat(path.c_str(), &second);
    EXPECT_EQ(first.st_ino, second.st_ino);

    EXPECT_EQ(ChangeAttributes(path, {{}, {"Title", "Mein Feld", "nie dagewesen"}}).value_or(99), 0U);
    const auto less = ReadAttributes(path);
    EXPECT_EQ(FindAttribute(*less, "Title"), nullptr);
    EXPECT_EQ(FindAttribute(*less, "Mein Feld"), nullptr);
    EXPECT_NE(FindAttribute(*less, "Author"), nullptr);
    EXPECT_TRUE(AllSamples(path) == before);
    EXPECT_EQ(Listing(directory.Path()), name);
  }
}

// What other programs look for.
TEST(AttributeFiles, StandUnderTheFormatsOwnFields) {
  const struct {
    const char* file;
    std::vector<std::string> bytes;
  } cases[] = {
      {"mpeg1_layer3_cbr128.mp3",
       {std::string("ID3\x03"), std::string("TIT2\0\0\0\x0D\0\0\x01\xFF\xFEW\0o\0r\0t\0e\0", 23),
        std::string("T\0P\0E\0", 0) + "TPE1"}},
      {"ogg_vorbis_mono_11025.ogg",
       {"ARTIST=Autor", "AUTHOR=Autor", "TITLE=Worte", "WM/ALBUMTITLE=Album", "ALBUM=Album"}},
      {"made.ape", {"Artist", "Author", "WM/AlbumTitle", "APETAGEX"}},
      {"aac_stereo_44100.m4a", {"\251ART", "\251nam", "\251alb", "Worte"}},
      {"aiff_pcm24_stereo_48000.aiff", {"TIT2", "TPE1", "TALB"}},
      {"wav_left_only.wav", {std::string("INAM\x06\0\0\0Worte\0", 14), "IPRD"}},
  };
  for (const auto& row : cases) {
    const TemporaryDirectory directory;
    const std::string path = CopyOf(directory, row.file);
    EXPECT_EQ(
        ChangeAttributes(
            path, {{Make("Author", "Autor"), Make("Title", "Worte"), Make("WM/AlbumTitle", "Album")}, {}})
            .value_or(99),
        0U);
    const std::string content = Content(path);
    for (const std::string& bytes : row.bytes)
      EXPECT_NE(content.find(bytes), std::string::npos) << row.file << bytes;
  }
}

// A frame of ID3v2.3.
std::string Frame(std::string_view id, std::string_view data) {
  ByteWriter out;
  out.Append(id);
  out.U32Be(static_cast<std::uint32_t>(data.size()));
  out.U16Be(0);
  out.Append(data);
  return std::string(AsText(out.View()));
}

TEST(AttributeFiles, UnknownFramesAndPicturesStay) {
  const std::string frames[] = {
      Frame("APIC", std::string("\0image/png\0\x03\0", 13) + "\x89PNG and so on"),
      Frame("PRIV", std::string("owner\0some bytes\0", 17)),
      Frame("RVAD", std::string("\x03\x10\1\2\3\4", 6)),
      Frame("TSIZ", std::string("\0001234", 5)),
      Frame("XYZW", "of nobody"),
  };
  std::string tag;
  for (const std::string& frame : frames) tag += frame;
  tag += Frame("TIT2", std::string("\0Alt", 4));
  const std::size_t size = tag.size();
  const std::string head{
      'I', 'D', '3', 3, 0, 0, 0, 0, static_cast<char>(size >> 7), static_cast<char>(size & 0x7F)};
  const TemporaryDirectory directory;
  const std::string path =
      directory.Write("a.mp3", head + tag + Content(DataPath("audio/mpeg2_layer3_mono_22050_id3v1.mp3")));
  EXPECT_EQ(ChangeAttributes(path, {{Make("Title", "Neu"), Make("Author", "Wer")}, {}}, 4).value_or(99), 0U);
  const std::string content = Content(path);
  EXPECT_EQ(content[3], 3);  // the tag keeps its version
  for (const std::string& frame : frames)
    EXPECT_NE(content.find(frame), std::string::npos) << frame.substr(0, 4);
  EXPECT_EQ(content.find("Alt"), std::string::npos);
  // The short tag at the end says the same.
  const std::string last = content.substr(content.size() - 128);
  EXPECT_EQ(last.substr(0, 7), std::string("TAGNeu\0", 7));
  EXPECT_EQ(last.substr(33, 4), std::string("Wer\0", 4));
}

TEST(AttributeFiles, AFormatsOwnFieldHolds) {
  const TemporaryDirectory directory;
  const std::string path = CopyOf(directory, "ogg_vorbis_mono_11025.ogg");
  EXPECT_EQ(ChangeAttributes(path, {{Make("Author", "Autor")}, {}}).value_or(99), 0U);
  std::string content = Content(path);
  // Another program changed only what it knows; its checksum is not looked at here.
  content.replace(content.find("ARTIST=Autor") + 7, 5, "Andre");
  const std::string other = directory.Write("b.ogg", content);
  EXPECT_EQ(FindAttribute(*ReadAttributes(other), "Author")->value, "Andre");
}

TEST(AttributeFiles, NewTagsHaveTheVersionAskedFor) {
  for (const unsigned version : {3U, 4U}) {
    const TemporaryDirectory directory;
    const std::string path = CopyOf(directory, "mpeg1_layer3_cbr128.mp3");
    EXPECT_EQ(ChangeAttributes(path, {{Make("WM/Year", "1999")}, {}}, version).value_or(9), 0U);
    const std::string content = Content(path);
    EXPECT_EQ(content.substr(0, 4), "ID3" + std::string(1, static_cast<char>(version)));
    EXPECT_NE(content.find(version == 3 ? "TYER" : "TDRC"), std::string::npos);
  }
}

// A wave file with an ID3v2 tag: that says what INFO has no place for, and both are kept in step.
TEST(AttributeFiles, WavesWithBothTags) {
  const TemporaryDirectory directory;
  std::string tag = Frame("TIT2", std::string("\0Alt", 4)) + Frame("TSRC", std::string("\0DE0", 4));
  tag = std::string("ID3\3\0\0\0\0\0", 9) + static_cast<char>(tag.size()) + tag;
  if (tag.size() % 2 != 0) tag += '\0';
  std::string content = Content(DataPath("audio/wav_left_only.wav"));
  content += "id3 " + std::string{static_cast<char>(tag.size()), 0, 0, 0} + tag;
  const std::size_t riff = content.size() - 8;
  for (int i = 0; i < 4; ++i) content[4 + static_cast<std::size_t>(i)] = static_cast<char>(riff >> (8 * i));
  const std::string path = directory.Write("a.wav", content);
  const std::vector<double> before = AllSamples(path);
  EXPECT_EQ(FindAttribute(*ReadAttributes(path), "WM/ISRC")->value, "DE0");
  EXPECT_EQ(ChangeAttributes(path, {{Make("Title", "Dvořák"), Make("WM/ISRC", "DE1")}, {}}).value_or(9), 0U);
  const auto back = ReadAttributes(path);
  EXPECT_EQ(FindAttribute(*back, "Title")->value, "Dvořák");
  EXPECT_EQ(FindAttribute(*back, "WM/ISRC")->value, "DE1");
  EXPECT_TRUE(AllSamples(path) == before);
}

TEST(AttributeFiles, RefusedOnes) {
  const TemporaryDirectory directory;
  const std::string path = CopyOf(directory, "wav_left_only.wav");
  // No place in the list INFO, and a character that its 8 bits lack.
  EXPECT_EQ(ChangeAttributes(path, {{Make("WM/Mood", "heiter"), Make("Title", "Dvořák")}, {}}).value_or(99),
            2U);
  EXPECT_THAT(ReadAttributes(directory.Write("a.txt", "no audio")), FailsWith(Outcome::WrongFormat));
  EXPECT_THAT(ReadAttributes(directory.File("none.mp3")), FailsWith(Outcome::SourceFailed));
  EXPECT_THAT(ReadAttributes(directory.Path()), FailsWith(Outcome::SourceFailed));
  chmod(path.c_str(), 0444);
  const std::string before = Content(path);
  EXPECT_THAT(ChangeAttributes(path, {{Make("Author", "x")}, {}}), FailsWith(Outcome::TargetFailed));
  EXPECT_EQ(Content(path), before);
}

// Cut and damaged files: an outcome, and a file that is never half changed.
TEST(AttributeFiles, DamagedOnes) {
  for (const char* name : kTagged) {
    const TemporaryDirectory directory;
    const std::string whole = Content(CopyOf(directory, name));
    for (std::size_t cut = 1; cut < 3000 && cut < whole.size(); cut = cut * 5 / 4 + 1) {
      const std::string path = directory.Write(std::string("cut-") + name, whole.substr(0, cut));
      (void)ReadAttributes(path);
      std::string flipped = whole;
      flipped[cut] = static_cast<char>(~flipped[cut]);
      const std::string other = directory.Write(std::string("flip-") + name, flipped);
      const auto changed = ChangeAttributes(other, {{Make("Title", "Neu")}, {}});
      if (!changed) {
        EXPECT_EQ(Content(other), flipped) << name << cut;
      }
    }
  }
}

// --- the dialog's form

std::size_t RowOf(const AttributeForm& form, std::string_view name) {
  for (std::size_t i = 0; i < form.Rows().size(); ++i) {
    if (form.Rows()[i].attribute.name == name) return i;
  }
  ADD_FAILURE() << name;
  return 0;
}

TEST(AttributeFormTest, SeveralFilesAndUndo) {
  const Attributes files[] = {{Make("Title", "a"), Make("Author", "same"), Make("Own", "1")},
                              {Make("Title", "b"), Make("Author", "same")}};
  AttributeForm form{std::span(files)};
  const std::size_t title = RowOf(form, "Title");
  const std::size_t author = RowOf(form, "Author");
  EXPECT_TRUE(form.Rows()[title].mixed);
  EXPECT_TRUE(form.Rows()[RowOf(form, "Own")].mixed);
  EXPECT_EQ(form.Rows()[author].attribute.value, "same");
  EXPECT_TRUE(form.Changes().Empty());
  EXPECT_FALSE(form.HasUnselectedValues());

  EXPECT_FALSE(form.SetValue(RowOf(form, "WM/Track"), "x"));
  EXPECT_TRUE(form.SetValue(title, "both"));
  EXPECT_TRUE(form.SetValue(author, ""));
  EXPECT_THAT(form.Changes().set, ElementsAre(Make("Title", "both")));
  EXPECT_THAT(form.Changes().remove, ElementsAre("Author"));
  form.Select(title, false);
  EXPECT_TRUE(form.HasUnselectedValues());
  EXPECT_TRUE(form.Changes().set.empty());
  for (int i = 0; i < 3; ++i) form.Undo();
  EXPECT_FALSE(form.CanUndo());
  EXPECT_TRUE(form.Rows()[title].mixed);
  EXPECT_TRUE(form.Changes().Empty());
}

TEST(AttributeFormTest, OfAJob) {
  AttributeForm form{Attributes{{AttributeType::String, "Title", "T", false, false}}};
  EXPECT_TRUE(form.HasUnselectedValues());
  form.SelectAll(true);
  EXPECT_FALSE(form.HasUnselectedValues());
  EXPECT_THAT(form.JobAttributes(), ElementsAre(Make("Title", "T")));
}

}  // namespace
}  // namespace ts5::tags
