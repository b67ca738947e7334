// Whole runs: names made of attributes, ReplayGain, what sources say, and files of all shapes there and back.
#include <gmock/gmock.h>

#include "audio/encode/compressor.h"
#include "audio/encode/decompressor.h"
#include "audio/encode/encoder.h"
#include "audio/encode/replay_gain.h"
#include "audio/media_probe.h"
#include "audio/tags/tag_file.h"
#include "encode/encode_support.h"
#include "frame/run_support.h"
#include "frame/target_naming.h"
#include "platform/base/text.h"

namespace ts5::encode {
namespace {

using namespace test;
using testing::ElementsAre;

tags::Attribute Make(std::string_view name, std::string_view value) {
  return {tags::AttributeType::String, std::string(name), std::string(value), false, true};
}

std::string ValueIn(const std::string& path, std::string_view name) {
  const auto attributes = tags::ReadAttributes(path);
  const tags::Attribute* const found = attributes ? tags::FindAttribute(*attributes, name) : nullptr;
  return found != nullptr ? found->value : "(none)";
}

class AlbumTest : public testing::Test {
 protected:
  AlbumTest() : module_(AudioCompressorModule()) {
    for (const auto& [name, title, level] :
         {std::tuple{"a.wav", "Eins", 1.0}, {"b.wav", "Zwei/Drei", 0.1}, {"c.wav", "Eins", 0.5}}) {
      const std::string path = WriteMusic(place_, name, PcmFormat(44100, 16, 2), 44100, level);
      EXPECT_EQ(tags::ChangeAttributes(path, {{Make("Title", title), Make("Author", "Wer")}, {}}).value_or(9),
                0U);
      files_.push_back(path);
    }
  }

  Job MakeJob(EncodeMethod method) {
    Job job = ListJob(files_, module_);
    auto& parameters = static_cast<AudioCompressorParameters&>(*job.parameters);
    parameters.encode.method = static_cast<std::int32_t>(method);
    return job;
  }
  static AudioCompressorParameters& Of(Job& job) {
    return static_cast<AudioCompressorParameters&>(*job.parameters);
  }

  TemporaryDirectory place_;
  FilterModule module_;
  std::vector<std::string> files_;
};

TEST_F(AlbumTest, TargetsAreNamedAfterAttributesAndShownBefore) {
  Job job = MakeJob(EncodeMethod::OggVorbis);
  Of(job).namePattern = "%album% - %title%";
  Of(job).attributes = {Make("WM/AlbumTitle", "Mr. X")};
  std::vector<std::string> shown;
  for (const NamedItem& item : PreviewTargets(job, module_, {}, SystemDestinationFiles()))
    shown.push_back(item.target.name);
  EXPECT_THAT(shown, ElementsAre(place_.File("Mr. X - Eins.ogg"), place_.File("Mr. X - Zwei_Drei.ogg"),
                                 place_.File("Mr. X - Eins001.ogg")));
  const RunResult result = RunJob(job, module_);
  for (std::size_t i = 0; i < shown.size(); ++i) EXPECT_EQ(result.items.at(i).destination, shown[i]);
  // What the job does not set comes from the source.
  EXPECT_EQ(ValueIn(shown[1], "Title"), "Zwei/Drei");
  EXPECT_EQ(ValueIn(shown[1], "WM/AlbumTitle"), "Mr. X");
  EXPECT_EQ(ValueIn(shown[1], "Author"), "Wer");
  EXPECT_EQ(ValueIn(shown[1], "WM/EncodedBy"), "Stavora Tonstudio 5");
}

double Decibels(const std::string& text) {
  EXPECT_TRUE(text.ends_with(" dB")) << text;
  return std::strtod(text.c_str(), nullptr);
}

TEST_F(AlbumTest, ReplayGainOfTracksAndAlbum) {
  Job job = MakeJob(EncodeMethod::MonkeysAudio);
  Of(job).replayGain = true;
  const RunResult result = RunJob(job, module_);
  ASSERT_EQ(result.counts[0], 3U);
  std::vector<double> gains;
  for (const RunItem& item : result.items) {
    gains.push_back(Decibels(ValueIn(item.destination, "REPLAYGAIN_TRACK_GAIN")));
    const auto pcm = OpenPcm(item.source);
    const auto loudness = MeasureLoudness(**pcm);
    EXPECT_NEAR(gains.back(), -18 - *loudness->integrated, 0.006);
    EXPECT_EQ(ValueIn(item.destination, "REPLAYGAIN_ALBUM_GAIN"),
              ValueIn(result.items[0].destination, "REPLAYGAIN_ALBUM_GAIN"));
    EXPECT_EQ(ValueIn(item.destination, "REPLAYGAIN_ALBUM_PEAK"),
              ValueIn(result.items[0].destination, "REPLAYGAIN_TRACK_PEAK"));
  }
  EXPECT_NEAR(gains[1] - gains[0], 20, 0.05);
  // The soft one is below the gate of the album.
  const double album = Decibels(ValueIn(result.items[1].destination, "REPLAYGAIN_ALBUM_GAIN"));
  EXPECT_GT(album, gains[0]);
  EXPECT_LT(album, gains[2]);
  const tags::Attributes opus =
      GainAttributes({.track = Loudness{.integrated = -20.5, .truePeak = 0}}, "OPUS");
  EXPECT_THAT(opus, ElementsAre(Make("R128_TRACK_GAIN", "-640")));
}

// Three hundred files of odd lengths, depths, rates and channels: as many samples as went in, and the same
// bits where nothing may be lost.
TEST(RoundTrip, EveryLengthDepthAndRate) {
  const TemporaryDirectory place;
  const FilterModule compressor = AudioCompressorModule();
  const FilterModule decompressor = AudioDecompressorModule();
  constexpr std::uint32_t kRates[] = {1, 999, 8000, 11025, 16000, 22050, 32000, 44100, 48000, 96000, 384000};
  constexpr std::uint16_t kBits[] = {8, 16, 24};
  constexpr std::size_t kLengths[] = {1, 2, 191, 575, 577, 1151, 1153, 2049, 4093};
  std::vector<std::string> files;
  std::vector<WaveFormat> formats;
  std::vector<std::size_t> lengths;
  for (std::size_t i = 0; i < 300; ++i) {
    const auto channels = static_cast<std::uint16_t>(1 + i / 11 % 2);
    formats.push_back(PcmFormat(kRates[i % 11], kBits[i / 2 % 3], channels));
    lengths.push_back(kLengths[i / 3 % 9]);
    files.push_back(WriteMusic(place, std::to_string(i) + ".wav", formats.back(), lengths.back()));
  }
  const auto check = [&](const EncodeSettings& settings, bool everyRate) -> std::size_t {
    Job job = ListJob(files, compressor);
    static_cast<AudioCompressorParameters&>(*job.parameters).encode = settings;
    const RunResult packed = RunJob(job, compressor);
    const Encoder& encoder = *EncoderOf(settings);
    std::size_t checked = 0;
    for (std::size_t i = 0; i < packed.items.size(); ++i) {
      const RunItem& item = packed.items[i];
      SCOPED_TRACE(std::string(encoder.name) + " " + std::to_string(formats[i].sampleRate) + " " +
                   std::to_string(formats[i].bitsPerSample) + " " + std::to_string(lengths[i]));
      if (!everyRate && item.code < 0) continue;  // a rate or a depth that the format lacks
      EXPECT_EQ(item.code, 0);
      auto staged = StagedFile::Create(place.File("back.wav"));
      EXPECT_THAT(DecompressFile(item.destination, *staged), IsOk());
      EXPECT_THAT(staged->Commit(), IsOk());
      const MediaProbe back = ProbeMedia(place.File("back.wav"));
      const double scale = static_cast<double>(back.format.sampleRate) / formats[i].sampleRate;
      EXPECT_NEAR(static_cast<double>(back.frames.value_or(0)), static_cast<double>(lengths[i]) * scale,
                  scale == 1 ? 0 : 1);
      if (encoder.lossless) {
        EXPECT_EQ(back.format.bitsPerSample, formats[i].bitsPerSample);
        EXPECT_TRUE(All(place.File("back.wav")) == All(files[i]));
      }
      ++checked;
    }
    return checked;
  };
  EncodeSettings ape;
  ape.method = static_cast<std::int32_t>(EncodeMethod::MonkeysAudio);
  EXPECT_EQ(check(ape, true), 300U);
  EncodeSettings ogg = ape;
  ogg.method = static_cast<std::int32_t>(EncodeMethod::OggVorbis);
  ogg.ogg = OggSettings{.mode = OggSettings::Quality, .quality = 2};
  EXPECT_GT(check(ogg, false), 130U);  // all but 24 bits and the rates of 1 Hz and 384 kHz
  // Rates too far from the engine's would end the run.
  for (std::size_t i = files.size(); i-- > 0;) {
    if (formats[i].sampleRate != 1) continue;
    const auto at = static_cast<std::ptrdiff_t>(i);
    files.erase(files.begin() + at);
    formats.erase(formats.begin() + at);
    lengths.erase(lengths.begin() + at);
  }
  EXPECT_GT(check(EncodeSettings(), false), 200U);
}

TEST(DecoderPage, HoldsForASingleFile) {
  const TemporaryDirectory place;
  const FilterModule module = AudioDecompressorModule();
  const std::string ogg = place.Write("a.ogg", Content(DataPath("audio/ogg_vorbis_q3_tags.ogg")));
  const std::string mp3 = place.Write("b.mp3", Content(DataPath("audio/mpeg1_layer3_cbr128.mp3")));
  const auto shapeOf = [&](const std::vector<std::string>& files) {
    Job job = ListJob(files, module);
    static_cast<AudioDecompressorParameters&>(*job.parameters).decode = {
        .rateDivisor = 2, .mono = true, .bits = 8};
    const RunResult result = RunJob(job, module);
    return ProbeMedia(result.items.at(0).destination);
  };
  const MediaProbe whole = shapeOf({ogg, mp3});
  const MediaProbe less = shapeOf({ogg});
  EXPECT_EQ(less.format, PcmFormat(whole.format.sampleRate / 2, 8, 1));
  EXPECT_EQ(less.frames, (*whole.frames + 1) / 2);
  EXPECT_EQ(whole.format.bitsPerSample, 16);
  EXPECT_THAT(DescribeCompressed(place.Write("t.mp3", "kein Ton")), FailsWith(Outcome::WrongFormat));
  EXPECT_EQ(DescribeCompressed(mp3)->sampleRate, 44100U);
}

}  // namespace
}  // namespace ts5::encode
