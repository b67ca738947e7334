// Encoding and decoding: whole files through every encoder and back, what their headers say, and what is
// refused.
#include "audio/encode/encode.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "audio/encode/compressor.h"
#include "audio/encode/decompressor.h"
#include "audio/media_probe.h"
#include "audio/quick_probe.h"
#include "audio/sample_codec.h"
#include "audio/tags/tag_file.h"
#include "audio/wave_bytes.h"
#include "audio/wave_converter.h"
#include "audio/wave_stream.h"
#include "encode/encode_support.h"
#include "frame/run_support.h"
#include "platform/media/mp3_frame.h"
#include "platform/media/open_media.h"
#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5::encode {
namespace {

using namespace test;
using testing::ElementsAre;
using testing::HasSubstr;

Outcome Encode(const std::string& source, const std::string& target, const EncodeSettings& settings) {
  auto staged = StagedFile::Create(target);
  if (!staged) return staged.error();
  if (const Outcome encoded = EncodePath(source, *staged, settings); Failed(encoded)) return encoded;
  return staged->Commit();
}

EncodeSettings Codec(EncoderId id, std::int32_t format = 0) {
  EncodeSettings settings;
  settings.object = CodecIndexOf(id);
  settings.format = format;
  return settings;
}
EncodeSettings Method(EncodeMethod method) {
  EncodeSettings settings;
  settings.method = static_cast<std::int32_t>(method);
  return settings;
}
EncodeSettings Engine(Mp3Engine engine,
                      std::initializer_list<std::pair<std::string_view, std::uint32_t>> values) {
  EncodeSettings settings = Codec(engine == Mp3Engine::Lame ? EncoderId::Lame : EncoderId::Blade);
  settings.engine = BeConfig::Defaults(engine);
  for (const auto& [name, value] : values) {
    for (const BeValue& row : BeValues()) {
      if (row.name == name) settings.engine.Set(row.For(engine), value);
    }
  }
  return settings;
}

// Level and correlation of what came out, in the place where it went in.
void ExpectAlike(const std::vector<double>& in, const std::vector<double>& out, double least) {
  double a = 0;
  double b = 0;
  double both = 0;
  for (std::size_t i = 0; i < std::min(in.size(), out.size()); ++i) {
    a += in[i] * in[i];
    b += out[i] * out[i];
    both += in[i] * out[i];
  }
  EXPECT_NEAR(std::sqrt(b / a), 1, 0.1);
  EXPECT_GT(both / std::sqrt(a * b), least);
}

// What is told of a file without a decoder is what the decoder tells.
void ExpectToldQuickly(const std::string& path) {
  const auto quick = QuickProbe(*InputFile::Open(path));
  const auto reader = OpenMedia(path);
  ASSERT_TRUE(quick.has_value() && reader.has_value());
  const MediaInfo& info = (*reader)->Info();
  EXPECT_EQ(quick->kind, KindOf(info));
  EXPECT_EQ(quick->codec, info.codec);
  EXPECT_EQ(quick->format, info.format);
  EXPECT_EQ(quick->frames, info.frames);
  EXPECT_EQ(quick->seconds, info.seconds);
  EXPECT_EQ(quick->encoder, info.encoder);
  EXPECT_EQ(quick->delay, info.delay);
}

TEST(EncodeTest, OddLengthsComeBackExactly) {
  const TemporaryDirectory place;
  const struct {
    const char* what;
    EncodeSettings settings;
  } encoders[] = {
      {"LAME, constant", Engine(Mp3Engine::Lame, {{"EncoderVbr", 0}})},
      {"LAME, variable", Engine(Mp3Engine::Lame, {})},
      {"Blade", Engine(Mp3Engine::Blade, {})},
      {"Blade with checksums", Engine(Mp3Engine::Blade, {{"EncoderCrc", 1}})},
      {"MP3 codec", Codec(EncoderId::Mp3Codec, 14)},  // 44100 Hz, stereo, 128 kbit/s
      {"Ogg", Method(EncodeMethod::OggVorbis)},
      {"Monkey's Audio", Method(EncodeMethod::MonkeysAudio)},
  };
  for (const auto& encoder : encoders) {
    const Encoder* const row = EncoderOf(encoder.settings);
    ASSERT_NE(row, nullptr) << encoder.what;
    for (const std::size_t frames : {1U, 575U, 1152U, 4607U, 30011U}) {
      SCOPED_TRACE(encoder.what + std::string(" ") + std::to_string(frames));
      const std::string source = WriteMusic(place, "in.wav", PcmFormat(44100, 16, 2), frames);
      const std::string target = place.File("out." + std::string(row->extension));
      ASSERT_THAT(Encode(source, target, encoder.settings), IsOk());
      const std::vector<double> in = All(source);
      const std::vector<double> out = All(target);
      EXPECT_EQ(out.size(), in.size());
      if (row->lossless) {
        EXPECT_EQ(out, in);
      } else if (frames > 4000) {
        if (row->extension == "mp3") ExpectToldQuickly(target);
        ExpectAlike(in, out, 0.998);
      }
      EXPECT_THAT(ProvePath(source, target, encoder.settings), IsOk());
      auto wave = StagedFile::Create(place.File("back.wav"));
      ASSERT_THAT(DecompressFile(target, *wave), IsOk());
      ASSERT_THAT(wave->Commit(), IsOk());
      EXPECT_EQ(ProbeMedia(place.File("back.wav")).frames, frames);
      if (row->lossless) {
        EXPECT_EQ(All(place.File("back.wav")), in);
      }
    }
  }
}

// Everything that the configuration of an engine offers makes a file that is proven.
TEST(EncodeTest, EveryRateOfTheEngines) {
  const TemporaryDirectory place;
  const std::string source = WriteMusic(place, "in.wav", PcmFormat(44100, 16, 2), 5000);
  const std::string target = place.File("out.mp3");
  std::uint32_t turn = 0;  // mono and checksums take turns
  for (const Mp3Engine engine : {Mp3Engine::Lame, Mp3Engine::Blade}) {
    for (const std::uint32_t rate : {48000U, 44100U, 32000U}) {
      for (const std::uint32_t bitRate :
           {32U, 40U, 48U, 56U, 64U, 80U, 96U, 112U, 128U, 144U, 160U, 192U, 224U, 256U, 320U}) {
        const std::uint32_t flags = ++turn % 4;
        SCOPED_TRACE(std::to_string(rate) + " " + std::to_string(bitRate) + " " + std::to_string(flags));
        const EncodeSettings settings = Engine(engine, {{"EncoderVbr", 0},
                                                        {"EncoderSampleRate", rate},
                                                        {"EncoderMode", flags & 1U ? 3 : 0},
                                                        {"EncoderCrc", flags >> 1},
                                                        {"EncoderBitrate", bitRate}});
        ASSERT_THAT(Encode(source, target, settings), IsOk());
        ASSERT_THAT(ProvePath(source, target, settings), IsOk());
        ExpectToldQuickly(target);
      }
    }
  }
}

// Depths, rates and channels that the encoders do not take as they are.
TEST(EncodeTest, EverySourceBecomesWhatTheEncoderTakes) {
  const TemporaryDirectory place;
  const EncodeSettings lame = Engine(Mp3Engine::Lame, {{"EncoderVbr", 0}});
  EncodeSettings ogg = Method(EncodeMethod::OggVorbis);
  ogg.ogg = OggSettings{.mode = OggSettings::Quality};
  const EncodeSettings ape = Method(EncodeMethod::MonkeysAudio);
  const EncodeSettings mp2 = Codec(EncoderId::Mp2Codec, 13);
  const EncodeSettings wma = Codec(EncoderId::WmaCodec, 9);
  const Outcome ok = Outcome::Success;
  const struct {
    WaveFormat format;
    Outcome ogg;
    Outcome ape;
  } sources[] = {
      {PcmFormat(22050, 8, 1), ok, ok},
      {PcmFormat(48000, 24, 2), Outcome::NotNecessary, ok},
      {PcmFormat(44100, 32, 2), Outcome::NotNecessary, Outcome::ConverterFailed},
      {PcmFormat(96000, 32, 1, kTagFloat), ok, Outcome::ConverterFailed},
      {PcmFormat(44100, 16, 6), ok, Outcome::ConverterFailed},
  };
  for (const auto& c : sources) {
    SCOPED_TRACE(std::to_string(c.format.sampleRate) + " " + std::to_string(c.format.bitsPerSample));
    const std::string source = WriteMusic(place, "in.wav", c.format, 20000);
    const auto check = [&](const EncodeSettings& settings, Outcome outcome, std::uint32_t rate,
                           std::uint32_t channels) {
      const std::string target = place.File("out");
      ASSERT_EQ(Encode(source, target, settings), outcome);
      if (Failed(outcome)) return;
      const MediaProbe probe = ProbeMedia(target);
      EXPECT_EQ(probe.format.sampleRate, rate);
      EXPECT_EQ(probe.format.channels, channels);
      EXPECT_THAT(ProvePath(source, target, settings), IsOk());
    };
    check(lame, ok, 44100, 2);
    check(mp2, ok, 44100, 2);
    check(wma, ok, 44100, 2);
    check(ogg, c.ogg, c.format.sampleRate, c.format.channels);
    check(ape, c.ape, c.format.sampleRate, c.format.channels);
  }
}

TEST(EncodeTest, TheHeadersSayWhatWasAsked) {
  const TemporaryDirectory place;
  const std::string source = WriteMusic(place, "in.wav", PcmFormat(44100, 16, 2), 20000);
  for (const Mp3Engine engine : {Mp3Engine::Lame, Mp3Engine::Blade}) {
    for (const std::uint32_t flag : {0U, 1U}) {
      const EncodeSettings settings = Engine(engine, {{"EncoderVbr", 0},
                                                      {"EncoderSampleRate", 32000},
                                                      {"EncoderMode", flag == 1 ? 3 : 0},
                                                      {"EncoderBitrate", 144},
                                                      {"EncoderPrivate", flag},
                                                      {"EncoderCrc", flag},
                                                      {"EncoderCopyright", flag},
                                                      {"EncoderOriginal", 1 - flag}});
      ASSERT_THAT(Encode(source, place.File("out.mp3"), settings), IsOk());
      const std::string content = Content(place.File("out.mp3"));
      ByteView rest = AsBytes(content);
      for (int frame = 0; frame < 8; ++frame) {
        SCOPED_TRACE(std::to_string(static_cast<int>(engine)) + " " + std::to_string(flag) + " " +
                     std::to_string(frame));
        const auto header = ParseMp3Header(rest);
        ASSERT_TRUE(header);
        EXPECT_EQ(header->sampleRate, 32000U);
        if (frame > 0) {
          EXPECT_EQ(header->bitRate, 160U) << "layer III has no 144";
        }
        EXPECT_EQ(header->bytes[3] >> 6 == 3, flag == 1) << "mono";
        EXPECT_EQ(header->bytes[2] & 1U, flag) << "private";
        EXPECT_EQ(header->bytes[3] >> 3 & 1U, flag) << "copyright";
        EXPECT_EQ(header->bytes[3] >> 2 & 1U, 1 - flag) << "original";
        if (frame > 0) {
          EXPECT_EQ(header->HasCrc(), flag == 1);
        }
        // One engine computes its checksums by itself, those of the other are ours.
        if (header->HasCrc()) {
          const std::uint16_t sum = Mp3Checksum(rest.first(4), rest.subspan(6, header->sideSize));
          EXPECT_EQ(rest[4] << 8 | rest[5], sum);
        }
        rest = rest.subspan(header->size);
      }
      if (engine == Mp3Engine::Blade) {
        EXPECT_NE(content.find("Info"), std::string::npos);
      }
    }
  }
  // The least bit rate of a variable one is kept to, even in silence.
  place.Write("silence.wav", AsText(Wave(PcmFormat(44100, 16, 2), Bytes(200000))));
  ASSERT_THAT(Encode(place.File("silence.wav"), place.File("out.mp3"),
                     Engine(Mp3Engine::Lame, {{"EncoderBitrate", 112}})),
              IsOk());
  const std::string content = Content(place.File("out.mp3"));
  std::size_t frames = 0;
  for (ByteView rest = AsBytes(content); const auto header = ParseMp3Header(rest); ++frames) {
    EXPECT_GE(header->bitRate, 112U);
    rest = rest.subspan(std::min(header->size, rest.size()));
  }
  EXPECT_GT(frames, 40U);
  // The preset for voices stands above the bit rate.
  const auto size = [&](std::int32_t preset) {
    EXPECT_THAT(Encode(source, place.File("out.mp3"),
                       Engine(Mp3Engine::Lame,
                              {{"EncoderVbr", 0}, {"EncoderBitrate", 192}, {"EncoderPreset", preset}})),
                IsOk());
    return Content(place.File("out.mp3")).size();
  };
  EXPECT_LT(size(3), size(-1) / 2);
}

TEST(EncodeTest, NothingBecomesAnEmptyFileOrAFailure) {
  const TemporaryDirectory place;
  const std::string source = place.Write("in.wav", AsText(Wave16({})));
  for (const EncodeMethod method : {EncodeMethod::OggVorbis, EncodeMethod::MonkeysAudio}) {
    ASSERT_THAT(Encode(source, place.File("out"), Method(method)), IsOk());
    EXPECT_TRUE(All(place.File("out")).empty());
  }
  for (const EncoderId id : {EncoderId::Lame, EncoderId::Blade, EncoderId::Mp2Codec, EncoderId::WmaCodec})
    EXPECT_EQ(Encode(source, place.File("none"), Codec(id)), Outcome::SourceFailed);
  EXPECT_FALSE(FileExists(place.File("none")));
}

// A stop at every look for one ends each piece of work at once, and a later one lets it succeed.
TEST(EncodeTest, AStopAtEveryStage) {
  const TemporaryDirectory place;
  const std::string source = WriteMusic(place, "in.wav", PcmFormat(44100, 16, 2), 60000);
  const auto everywhere = [](const std::function<Outcome(const WorkWatch&)>& work) {
    for (int stage = 0; stage < 100000; stage = stage * 3 / 2 + 1) {
      int looks = 0;
      const Outcome outcome = work({[&] { return looks++ >= stage; }, {}});
      if (Succeeded(outcome)) return stage > 0;
      EXPECT_EQ(outcome, Outcome::Cancelled);
      EXPECT_EQ(looks, stage + 1) << "it went on";
    }
    return false;
  };
  for (const EncodeSettings& settings :
       {Engine(Mp3Engine::Lame, {}), Engine(Mp3Engine::Blade, {}), Method(EncodeMethod::OggVorbis),
        Method(EncodeMethod::MonkeysAudio), Codec(EncoderId::WmaCodec, 9)}) {
    SCOPED_TRACE(EncoderOf(settings)->name);
    const std::string target = place.File("out");
    EXPECT_TRUE(everywhere([&](const WorkWatch& watch) {
      auto staged = StagedFile::Create(target);
      const Outcome outcome = EncodePath(source, *staged, settings, watch);
      return Succeeded(outcome) ? staged->Commit() : outcome;
    }));
    EXPECT_TRUE(
        everywhere([&](const WorkWatch& watch) { return ProvePath(source, target, settings, watch); }));
    EXPECT_TRUE(everywhere([&](const WorkWatch& watch) {
      auto staged = StagedFile::Create(place.File("back.wav"));
      return DecompressFile(target, *staged, watch);
    }));
    EXPECT_EQ(Listing(place.Path()), "in.wav out");
    std::filesystem::remove(target);
  }
}

TEST(EncodeTest, TheProofFindsWhatIsBroken) {
  const TemporaryDirectory place;
  const std::string source = WriteMusic(place, "in.wav", PcmFormat(44100, 16, 2), 30000);
  const std::string other = WriteMusic(place, "other.wav", PcmFormat(44100, 16, 2), 29000);
  std::vector<std::int16_t> noise(60000);
  std::uint32_t random = 7;
  for (std::int16_t& sample : noise)
    sample = static_cast<std::int16_t>((random = random * 1664525 + 1013904223) >> 17);
  const std::string noisy = place.Write("noise.wav", AsText(Wave(PcmFormat(44100, 16, 2), Samples16(noise))));
  for (const EncodeSettings& settings : {Engine(Mp3Engine::Lame, {}), Method(EncodeMethod::OggVorbis),
                                         Method(EncodeMethod::MonkeysAudio), Codec(EncoderId::WmaCodec, 9)}) {
    for (const std::string& made : {other, noisy}) {
      const bool lengthTold = EncoderOf(settings)->exactLength;
      if (made == other && !lengthTold) continue;
      ASSERT_THAT(Encode(made, place.File("out"), settings), IsOk());
      EXPECT_EQ(ProvePath(source, place.File("out"), settings), Outcome::NotProven) << made;
    }
    EXPECT_EQ(ProvePath(source, place.Write("junk", "kein Audio"), settings), Outcome::NotProven);
  }
}

// Tones that go on and on, another one on each channel, behind a second of silence: where coders have put
// them is found.
TEST(EncodeTest, TheProofFindsTheDelay) {
  const TemporaryDirectory place;
  std::vector<std::int16_t> tones(2 * 44100);
  for (int i = 0; i < 88200; ++i) {
    for (const double pitch : {440, 550})
      tones.push_back(static_cast<std::int16_t>(20000 * std::sin(i * pitch * 2 * M_PI / 44100)));
  }
  const std::string source = place.Write("in.wav", AsText(Wave(PcmFormat(44100, 16, 2), Samples16(tones))));
  for (const EncodeSettings& settings : {Codec(EncoderId::Mp2Codec, 13), Codec(EncoderId::WmaCodec, 9)}) {
    ASSERT_THAT(Encode(source, place.File("out"), settings), IsOk());
    EXPECT_THAT(ProvePath(source, place.File("out"), settings), IsOk());
  }
}

TEST(CompressorTest, ARunCountsAndKeepsNothingOfFailures) {
  const TemporaryDirectory place;
  const FilterModule module = AudioCompressorModule();
  const std::vector<std::string> files{
      WriteMusic(place, "a.wav", PcmFormat(44100, 16, 2), 20000),
      place.Write("b.mp3", Content(DataPath("audio/mpeg1_layer3_cbr128.mp3"))),
      place.Write("c.wav", "kein Audio"), place.File("d.wav"),
      place.Write("e.aif", Content(DataPath("audio/aiff_pcm24_stereo_48000.aiff")))};
  Job job = ListJob(files, module);
  auto& settings = static_cast<AudioCompressorParameters&>(*job.parameters).encode;
  settings = Engine(Mp3Engine::Lame, {});
  settings.verify = true;
  RunResult result = RunJob(job, module);
  std::vector<std::int32_t> codes;
  for (const RunItem& item : result.items) codes.push_back(item.code);
  EXPECT_THAT(codes, ElementsAre(0, -104, -104, -103, 0));
  EXPECT_EQ(Listing(place.Path()), "a.mp3 a.wav b.mp3 c.wav e.aif e.mp3");
  EXPECT_EQ(TitleText(result), "Ergebnisse der Wave-Komprimierung");
  settings.method = static_cast<std::int32_t>(EncodeMethod::OggVorbis);
  codes.clear();
  result = RunJob(job, module);
  for (const RunItem& item : result.items) codes.push_back(item.code);
  EXPECT_THAT(codes, ElementsAre(0, -103, -103, -103, -7));
  EXPECT_THAT(result.items[4].remark, HasSubstr("nimmt Quellen mit 8 oder 16 Bit"));
}

TEST(CompressorTest, AConversionBeforeTheEncoderThatFailsEndsTheRun) {
  const TemporaryDirectory place;
  const FilterModule module = AudioCompressorModule();
  std::vector<std::string> files;
  for (const auto& [name, rate] : {std::pair{"a.wav", 44100U}, {"b.wav", 10U}, {"c.wav", 44100U}})
    files.push_back(WriteMusic(place, name, PcmFormat(rate, 16, 2), 5000));
  Job job = ListJob(files, module);
  static_cast<AudioCompressorParameters&>(*job.parameters).encode = Engine(Mp3Engine::Lame, {});
  const RunResult result = RunJob(job, module);
  ASSERT_EQ(result.items.size(), 2U);
  EXPECT_EQ(result.items[1].code, Code(Outcome::FormatRefused));
  EXPECT_THAT(result.items[1].remark, HasSubstr("der Lauf endet hier"));
  EXPECT_FALSE(result.cancelled);
  EXPECT_THAT(result.counts, ElementsAre(1, 2, 0, 0));
  EXPECT_EQ(Listing(place.Path()), "a.mp3 a.wav b.wav c.wav");
}

// Layer II and Windows Media do not tell where the music lies: it is noted, and nothing of it is lost.
TEST(CompressorTest, EveryLengthComesBackThroughRuns) {
  const TemporaryDirectory place;
  const FilterModule compressor = AudioCompressorModule();
  const FilterModule decompressor = AudioDecompressorModule();
  std::vector<std::string> files;
  for (const std::size_t frames : {1U, 2047U, 2048U, 30011U})
    files.push_back(WriteMusic(place, std::to_string(frames) + ".wav", PcmFormat(44100, 16, 2), frames));
  for (const auto& [id, format] : {std::pair{EncoderId::Mp2Codec, 13}, {EncoderId::WmaCodec, 9}}) {
    Job job = ListJob(files, compressor);
    auto& parameters = static_cast<AudioCompressorParameters&>(*job.parameters);
    parameters.encode = Codec(id, format);
    parameters.attributes = {{tags::AttributeType::String, "Title", "Größe", false, true}};
    const RunResult packed = RunJob(job, compressor);
    ASSERT_EQ(packed.counts[0], files.size());
    for (std::size_t i = 0; i < files.size(); ++i) {
      auto wave = StagedFile::Create(place.File("back.wav"));
      ASSERT_THAT(DecompressFile(packed.items[i].destination, *wave), IsOk());
      ASSERT_THAT(wave->Commit(), IsOk());
      const std::vector<double> in = All(files[i]);
      const std::vector<double> out = All(place.File("back.wav"));
      EXPECT_EQ(out.size(), in.size()) << packed.items[i].destination;
      if (i == 3) ExpectAlike(in, out, 0.99);
      const auto attributes = tags::ReadAttributes(place.File("back.wav"));
      ASSERT_THAT(attributes, IsOk());
      const tags::Attribute* const title = tags::FindAttribute(*attributes, "Title");
      ASSERT_NE(title, nullptr);
      EXPECT_EQ(title->value, "Größe");
    }
  }
}

TEST(CompressorTest, FieldsAreKeptByteForByteAndInAnyOrder) {
  const std::vector<ParameterField> fields = AudioCompressorFields();
  const auto set = [&](AudioCompressorParameters& p, std::string_view name, std::string_view value) {
    const auto field = std::ranges::find(fields, name, &ParameterField::name);
    return field != fields.end() && field->set(p, value);
  };
  AudioCompressorParameters first;
  const std::string blade = std::to_string(CodecIndexOf(EncoderId::Blade));
  ASSERT_TRUE(set(first, "EncoderBitrate", "192") && set(first, "EncoderMode", "1") &&
              set(first, "CodingObject", blade));
  AudioCompressorParameters second;
  ASSERT_TRUE(set(second, "CodingObject", blade) && set(second, "EncoderBitrate", "192"));
  EXPECT_EQ(first.encode.engine.For(Mp3Engine::Blade), second.encode.engine.For(Mp3Engine::Blade));
  for (const auto& [name, value] : {std::pair{"CodecType", "5"},
                                    {"EncoderVbr", "2"},
                                    {"OggQuality", "11"},
                                    {"OggMode", "0"},
                                    {"CodingFormat", "-1"},
                                    {"EncoderRecord", "1 2 3"}})
    EXPECT_FALSE(set(first, name, value)) << name;

  // Every byte of the record, also those that nothing reads, and what was never set stays so.
  Bytes image(kBeConfigSize);
  for (std::size_t i = 4; i < image.size(); ++i) image[i] = static_cast<std::uint8_t>(i * 7);
  image[1] = 1;  // the variant for LAME
  first.encode.engine.SetImage(image);
  RegistryValues values;
  for (const ParameterField& field : fields) field.save(first, values);
  EXPECT_FALSE(values.Text("OggMode"));
  EXPECT_FALSE(values.Text("EncodeVerify"));
  AudioCompressorParameters loaded;
  for (const ParameterField& field : fields) field.load(loaded, values);
  const Bytes kept(loaded.encode.engine.Image().begin(), loaded.encode.engine.Image().end());
  EXPECT_EQ(kept, image);
  EXPECT_EQ(loaded.encode.object, CodecIndexOf(EncoderId::Blade));
}

TEST(DecompressorTest, EveryKindAndWhatIsRefused) {
  const TemporaryDirectory place;
  const struct {
    const char* name;
    std::int32_t code;
    std::uint64_t frames;
  } cases[] = {
      {"mpeg1_layer1_stereo_44100.mp1", 0, 23040},
      {"mpeg1_layer2_stereo_44100.mp2", 0, 44928},
      {"mpeg1_layer3_vbr_xing_id3v2.mp3", 0, 44100},
      {"ogg_vorbis_mono_11025.ogg", 0, 11025},
      {"wma_v2_stereo_tags.wma", 0, 43008},
      {"wav_pcm16_mono_8000.wav", -104, 0},
      {"aiff_pcm8_mono_22050.aif", -104, 0},
      {"flac_mono_16.flac", 0, 4000},
      {"alac_mono_16.m4a", 0, 4000},
      {"aac_stereo_44100.m4a", 0, 22050},
      {"opus_stereo.opus", 0, 24000},
  };
  const FilterModule module = AudioDecompressorModule();
  std::vector<std::string> files;
  for (const auto& c : cases)
    files.push_back(place.Write(c.name, Content(DataPath(std::string("audio/") + c.name))));
  const std::string ogg = Content(DataPath("audio/ogg_vorbis_mono_11025.ogg"));
  files.push_back(place.Write("kurz.ogg", ogg.substr(0, 100)));
  files.push_back(place.Write("text.ogg", "OggS und sonst nichts"));
  files.push_back(place.File("fehlt.mp3"));
  files.push_back(place.Write("mitten.ogg", ogg.substr(0, ogg.find("\x05vorbis") + 100)));
  const RunResult result = RunJob(ListJob(files, module), module);
  ASSERT_EQ(result.items.size(), files.size());
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    EXPECT_EQ(result.items[i].code, cases[i].code) << cases[i].name;
    if (cases[i].code == 0) {
      EXPECT_EQ(ProbeMedia(result.items[i].destination).frames, cases[i].frames) << cases[i].name;
    }
  }
  EXPECT_EQ(result.items[11].code, -300);
  EXPECT_EQ(result.items[12].code, -104);
  EXPECT_EQ(result.items[13].code, -103);
  EXPECT_EQ(result.items[14].code, -300) << "its last header is cut";
  for (const std::size_t lossless : {7U, 8U})
    EXPECT_TRUE(All(result.items[lossless].destination) == All(DataPath("audio/wav_pcm16_mono_8000.wav")));
}

// Streams that follow each other in one file come in the shape of the first one.
TEST(DecompressorTest, ChainedOggStreams) {
  const TemporaryDirectory place;
  EncodeSettings settings = Method(EncodeMethod::OggVorbis);
  settings.ogg = OggSettings{.mode = OggSettings::Quality, .quality = 8};
  std::string chain;
  std::string brief;
  for (const auto& [name, format, frames] : {std::tuple{"d", PcmFormat(22050, 16, 1), 700},
                                             {"a", PcmFormat(44100, 16, 2), 30000},
                                             {"b", PcmFormat(22050, 16, 1), 11025},
                                             {"c", PcmFormat(44100, 16, 2), 10001}}) {
    const std::string wave = WriteMusic(place, name, format, static_cast<std::size_t>(frames));
    ASSERT_THAT(Encode(wave, place.File("out.ogg"), settings), IsOk());
    (brief.empty() ? brief : chain) += Content(place.File("out.ogg"));
  }
  EXPECT_EQ(All(place.Write("brief.ogg", brief + chain)).size(), 700U + 15000 + 11025 + 5001)
      << "a first stream of one page";
  const std::string path = place.Write("chain.ogg", chain);
  auto source = OpenPcm(path);
  ASSERT_THAT(source, IsOk());
  EXPECT_EQ((*source)->Frames(), 30000U + 22050U + 10001U);
  const std::vector<double> all = All(path);
  EXPECT_EQ(all.size(), 2U * (30000 + 22050 + 10001));
  // The middle one has the same on both channels, and its music.
  double energy = 0;
  for (std::size_t i = 2 * 32000; i < 2 * 50000; i += 2) {
    ASSERT_NEAR(all[i], all[i + 1], 1e-9);
    energy += all[i] * all[i];
  }
  EXPECT_GT(energy / 18000, 0.02);
  for (const std::uint64_t frame : {std::uint64_t{52100}, std::uint64_t{40000}, std::uint64_t{5}}) {
    ASSERT_THAT((*source)->Seek(frame), IsOk());
    std::vector<double> block(256);
    ASSERT_GT((*source)->Read(block).value_or(0), 0U);
    EXPECT_NEAR(block[0], all[frame * 2], frame == 40000 ? 0.2 : 1e-3) << frame;
  }
}

}  // namespace
}  // namespace ts5::encode
