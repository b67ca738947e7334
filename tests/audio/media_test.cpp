// Real files of every kind: what they are, how long, and what is decoded of them, to the sample.
#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <thread>

#include "audio/audio_properties.h"
#include "audio/media_probe.h"
#include "audio/wave_converter.h"
#include "audio/wave_stream.h"
#include "platform/media/media_engine.h"
#include "platform/media/media_writer.h"
#include "platform/media/vorbis_sink.h"
#include "support/matchers.h"
#include "support/test_data.h"
#include "support/test_loop.h"
#include "wave_bytes.h"

namespace ts5 {
namespace {

using namespace test;

struct Decoded {
  std::uint64_t frames = 0;
  double peak = 0;
  std::vector<double> samples;
};

Decoded DecodeAll(PcmSource& source, std::size_t frames = 1000) {
  Decoded decoded;
  std::vector<double> block(frames * source.Shape().channels);
  while (true) {
    const auto got = source.Read(block);
    EXPECT_THAT(got, IsOk());
    if (!got || *got == 0) return decoded;
    decoded.frames += *got;
    for (std::size_t i = 0; i < *got * source.Shape().channels; ++i) {
      decoded.samples.push_back(block[i]);
      decoded.peak = std::max(decoded.peak, std::abs(block[i]));
    }
  }
}

struct FileCase {
  const char* name;
  MediaKind kind;
  std::uint16_t tag;
  std::uint32_t rate;
  std::uint32_t channels;
  std::uint64_t frames;
  double peak;
};
constexpr FileCase kFiles[] = {
    {"aifc_fl32_mono.aifc", MediaKind::Wave, 3, 44100, 1, 22050, 0.5},  // FVER before COMM
    {"aifc_sowt_16_stereo.aifc", MediaKind::Wave, 1, 44100, 2, 22050, 0.5},
    {"aiff_pcm24_stereo_48000.aiff", MediaKind::Aiff, 1, 48000, 2, 14400, 0.5},
    {"aiff_pcm8_mono_22050.aif", MediaKind::Aiff, 1, 22050, 1, 11025, 0.4922},
    {"mpeg1_layer1_stereo_44100.mp1", MediaKind::MpegLayer1, 0x50, 44100, 2, 23040, 0.2964},
    {"mpeg1_layer2_stereo_44100.mp2", MediaKind::MpegLayer2, 0x50, 44100, 2, 44928, 0.5006},
    {"mpeg1_layer3_cbr128.mp3", MediaKind::MpegLayer3, 0x55, 44100, 2, 46080, 0.4759},
    {"mpeg1_layer3_vbr_xing_id3v2.mp3", MediaKind::MpegLayer3, 0x55, 44100, 2, 44100, 0.5055},
    {"mpeg2_layer3_mono_22050_id3v1.mp3", MediaKind::MpegLayer3, 0x55, 22050, 1, 23616, 0.4754},
    {"ogg_vorbis_mono_11025.ogg", MediaKind::OggVorbis, 0, 11025, 1, 11025, 0.5038},
    {"ogg_vorbis_q3_tags.ogg", MediaKind::OggVorbis, 0, 44100, 2, 44100, 0.5117},
    {"pygame_secosmic_lo.wav", MediaKind::Wave, 2, 11025, 1, 36000, 0.7962},
    {"wav_adpcm_ima_mono_44100.wav", MediaKind::Wave, 0x11, 44100, 1, 22451, 0.5013},
    {"wav_alaw_mono_8000.wav", MediaKind::Wave, 6, 8000, 1, 4000, 0.4922},
    {"wav_bext.wav", MediaKind::Wave, 1, 48000, 1, 14400, 0.5},
    {"wav_extensible_24in32_stereo.wav", MediaKind::Wave, 0xFFFE, 44100, 2, 22050, 0.5},
    {"wav_float64_mono_44100.wav", MediaKind::Wave, 3, 44100, 1, 22050, 0.5},
    {"wav_gsm610_mono_8000.wav", MediaKind::Wave, 0x31, 8000, 1, 4160, 0.5068},
    {"wav_list_info_before_data.wav", MediaKind::Wave, 1, 22050, 2, 11025, 0.5},
    {"wav_mp3_inside.wav", MediaKind::Wave, 0x55, 44100, 2, 46080, 0.4775},
    {"wav_mulaw_mono_8000.wav", MediaKind::Wave, 7, 8000, 1, 4000, 0.5116},
    {"wav_pcm32_mono_44100.wav", MediaKind::Wave, 1, 44100, 1, 22050, 0.5},
    {"wav_pcm8_mono_11025_odd.wav", MediaKind::Wave, 1, 11025, 1, 5513, 0.4922},
    {"wma_v1_mono_22050.wma", MediaKind::WindowsMedia, 0x160, 22050, 1, 21504, 0.5032},
    {"wma_v2_stereo_tags.wma", MediaKind::WindowsMedia, 0x161, 44100, 2, 43008, 0.5045},
};

struct MediaTest : testing::Test {
  const TemporaryDirectory place;
};

TEST_F(MediaTest, RealFilesAreKnownAndDecodedToTheSample) {
  for (const FileCase& row : kFiles) {
    SCOPED_TRACE(row.name);
    const std::string path = DataPath(std::string("audio/") + row.name);
    const MediaProbe probe = ProbeMedia(path);
    EXPECT_EQ(probe.kind, row.kind);
    EXPECT_EQ(row.tag == 0 ? 0 : probe.format.tag, row.tag);
    EXPECT_EQ(probe.format.sampleRate, row.rate);
    EXPECT_EQ(probe.format.channels, row.channels);
    EXPECT_EQ(probe.dataLength,
              static_cast<std::uint64_t>(std::llround(probe.seconds * probe.format.bytesPerSecond)));
    // Some compressed files only say roughly how long they are.
    EXPECT_NEAR(probe.seconds, static_cast<double>(row.frames) / row.rate, probe.frames ? 1e-9 : 0.1);
    auto source = OpenPcm(path);
    ASSERT_THAT(source, IsOk());
    const Decoded decoded = DecodeAll(**source);
    EXPECT_EQ(decoded.frames, row.frames);
    EXPECT_NEAR(decoded.peak, row.peak, 0.0001);
  }
}

TEST_F(MediaTest, PropertiesNameTheCodecAndItsBitRate) {
  const std::pair<const char*, const char*> files[] = {{"ogg_vorbis_q3_tags.ogg", "Vorbis"},
                                                       {"wma_v2_stereo_tags.wma", "Windows Media Audio"},
                                                       {"alac_mono_16.m4a", "Apple Lossless"},
                                                       {"aac_stereo_44100.m4a", "AAC"},
                                                       {"mpeg1_layer2_stereo_44100.mp2", "MPEG Layer 2"},
                                                       {"mpeg1_layer3_cbr128.mp3", "MPEG Layer 3"},
                                                       {"wav_gsm610_mono_8000.wav", "non-PCM"},
                                                       {"wav_pcm16_mono_8000.wav", "PCM"}};
  for (const auto& [name, codec] : files) {
    SCOPED_TRACE(name);
    const auto properties = ReadAudioProperties(DataPath(std::string("audio/") + name));
    ASSERT_THAT(properties, IsOk());
    EXPECT_EQ(properties->rows.at(2).value, codec);
    for (const PropertyRow& row : properties->rows) EXPECT_NE(row.value, "0 kBit/s");
  }
}

TEST_F(MediaTest, SeekingComesOutAtTheFrame) {
  for (const char* name :
       {"mpeg1_layer3_vbr_xing_id3v2.mp3", "mpeg1_layer2_stereo_44100.mp2", "wav_adpcm_ms_stereo_22050.wav",
        "aiff_pcm24_stereo_48000.aiff", "ogg_vorbis_q3_tags.ogg", "mpeg1_layer3_cbr128.mp3",
        "opus_stereo.opus", "aac_stereo_44100.m4a", "mpeg1_layer1_stereo_44100.mp1"}) {
    SCOPED_TRACE(name);
    auto source = OpenPcm(DataPath(std::string("audio/") + name));
    ASSERT_THAT(source, IsOk());
    const std::size_t channels = (*source)->Shape().channels;
    const Decoded whole = DecodeAll(**source);
    for (const std::uint64_t frame :
         {std::uint64_t{10000}, std::uint64_t{1}, std::uint64_t{0}, std::uint64_t{9871}}) {
      ASSERT_THAT((*source)->Seek(frame), IsOk());
      std::vector<double> block(64 * channels);
      ASSERT_EQ((*source)->Read(block).value_or(0), 64U);
      for (std::size_t i = 0; i < block.size(); ++i)
        ASSERT_NEAR(block[i], whole.samples[frame * channels + i], 1e-3) << frame << " " << i;
    }
  }
}

// Two decoders share a Vorbis file: one reads on from its start, the other from what was sought.
TEST_F(MediaTest, VorbisIsTheSameFromItsStartAndFromWhereItWasSought) {
  const std::string path = place.File("a.ogg");
  for (const std::uint32_t channels : {1U, 2U, 6U}) {
    for (const std::size_t frames : {1U, 127U, 128U, 1000U, 50001U}) {
      SCOPED_TRACE(frames);
      SCOPED_TRACE(channels);
      std::vector<double> tones(frames * channels);
      for (std::size_t i = 0; i < tones.size(); ++i) {
        const auto tone = static_cast<double>(i % channels + 2);
        tones[i] = tone / 12 * std::sin(static_cast<double>(i / channels) * tone / 40);
      }
      auto target = StagedFile::Create(path);
      ASSERT_THAT(target, IsOk());
      auto sink = OpenVorbisSink(*target, {44100, channels}, {.variable = true});
      ASSERT_THAT(sink, IsOk());
      ASSERT_THAT((*sink)->Write(tones), IsOk());
      ASSERT_THAT((*sink)->Finish(), IsOk());
      ASSERT_THAT(target->Commit(), IsOk());

      auto source = OpenPcm(path);
      ASSERT_THAT(source, IsOk());
      EXPECT_EQ((*source)->Frames(), frames);
      const Decoded whole = DecodeAll(**source, 777);
      ASSERT_EQ(whole.frames, frames);
      ASSERT_THAT((*source)->Seek(1), IsOk());
      const Decoded sought = DecodeAll(**source, 777);
      ASSERT_EQ(sought.frames, frames - 1);
      for (std::size_t i = 0; i < sought.samples.size(); ++i)
        ASSERT_NEAR(sought.samples[i], whole.samples[i + channels], 1e-5) << i;
      ASSERT_THAT((*source)->Seek(0), IsOk());
      EXPECT_EQ(DecodeAll(**source).samples, whole.samples);
    }
  }
}

TEST_F(MediaTest, JunkAroundAnMp3DoesNotLengthenIt) {
  const std::string good = Content(DataPath("audio/mpeg1_layer3_cbr128.mp3"));
  const std::string junk(3000, 'x');
  const std::string path = place.Write("a.mp3", junk + good + junk);
  EXPECT_EQ(ProbeMedia(path).kind, MediaKind::MpegLayer3);
  auto source = OpenPcm(path);
  ASSERT_THAT(source, IsOk());
  EXPECT_NEAR(static_cast<double>(DecodeAll(**source).frames), 46080, 1152);
}

// Lengths and times come from what there is, not from what a header claims.
TEST_F(MediaTest, HeadersThatLieDoNotLengthenAFile) {
  for (const std::uint32_t claimed : {0U, 4097U, 0xFFFFFFFFU}) {
    WaveFormat format = PcmFormat(8000, 16, 2);
    format.bytesPerSecond = claimed;
    format.blockAlign = 1;
    const MediaProbe probe = ProbeMedia(place.Write("a.wav", AsText(Wave(format, Bytes(16000)))));
    EXPECT_EQ(probe.format, PcmFormat(8000, 16, 2));
    EXPECT_EQ(probe.dataLength, 16000U);
    EXPECT_EQ(probe.Milliseconds(), 500U);
    // Of a coding without a byte rate nothing is known.
    format.tag = 0x4321;
    format.bytesPerSecond = 0;
    EXPECT_EQ(ProbeMedia(place.Write("b.wav", AsText(Wave(format, Bytes(16000))))).seconds, 0);
  }
  std::string song = Content(DataPath("audio/mpeg1_layer3_vbr_xing_id3v2.mp3"));
  const std::size_t tag = song.find("Xing");
  ASSERT_NE(tag, std::string::npos);
  song.replace(tag + 8, 4, "\xFF\xFF\xFF\xFF");
  const MediaProbe probe = ProbeMedia(place.Write("a.mp3", song));
  EXPECT_EQ(probe.kind, MediaKind::MpegLayer3);
  EXPECT_LT(probe.seconds, 10);
  EXPECT_FALSE(probe.frames);
}

TEST_F(MediaTest, LevelsNextToZeroHaveNoSign) {
  const auto rows = LoudnessRows({.integrated = -0.04, .truePeak = -0.06});
  EXPECT_EQ(rows.at(0).value, "0,0 LUFS");
  EXPECT_EQ(rows.at(1).value, "-0,1 dBTP");
}

// Every kind cut off and damaged: an outcome, or fewer samples, but never a crash, and never more than the
// bytes can hold.
TEST_F(MediaTest, DamagedFilesEndSomewhere) {
  for (const FileCase& row : kFiles) {
    SCOPED_TRACE(row.name);
    const std::string good = Content(DataPath(std::string("audio/") + row.name));
    for (int variant = 0; variant < 6; ++variant) {
      std::string bad = good.substr(0, good.size() * static_cast<std::size_t>(variant + 1) / 7);
      std::uint32_t random = static_cast<std::uint32_t>(variant) + 7;
      for (int flips = 0; flips < variant * 5; ++flips) {
        random = random * 1664525 + 1013904223;
        bad[random % bad.size()] = static_cast<char>(random >> 24);
      }
      const std::string path = place.Write(std::string("bad") + row.name, bad);
      (void)ProbeMedia(path);
      auto source = OpenPcm(path);
      if (!source) continue;
      std::vector<double> block(4096 * (*source)->Shape().channels);
      std::uint64_t frames = 0;
      for (auto got = (*source)->Read(block); got && *got > 0; got = (*source)->Read(block)) frames += *got;
      EXPECT_LT(frames, bad.size() * 1000);
    }
  }
}

TEST_F(MediaTest, WhatIsNoAudioIsOfNoKind) {
  // A list of other files must not make the decoder open them.
  const std::string list =
      place.Write("list.wav", "ffconcat version 1.0\nfile " + DataPath("audio/wav_bext.wav") + "\n");
  const std::string stream = place.Write("stream.mp3", "#EXTM3U\n#EXTINF:1,\nfile:///etc/passwd\n");
  for (const std::string& path :
       {list, stream, place.Write("empty.wav", ""), place.Path(), place.File("none"),
        std::string("/dev/zero"), std::string("http://example.org/a.mp3")}) {
    EXPECT_EQ(ProbeMedia(path).kind, MediaKind::None) << path;
    EXPECT_FALSE(OpenPcm(path)) << path;
  }
}

// What each encoder writes is known and decoded again, with the tone that went in.
TEST(MediaWriterTest, EncodersWriteWhatReadersKnow) {
  struct Row {
    MediaEncoder encoder;
    MediaKind kind;
    const char* name;
  };
  const TemporaryDirectory place;
  for (const Row& row : {Row{MediaEncoder::MpegLayer2, MediaKind::MpegLayer2, "a.mp2"},
                         Row{MediaEncoder::WindowsMedia, MediaKind::WindowsMedia, "b.wma"}}) {
    SCOPED_TRACE(row.name);
    ASSERT_TRUE(HasEncoder(row.encoder));
    const std::string path = place.File(row.name);
    auto file = StagedFile::Create(path);
    ASSERT_THAT(file, IsOk());
    auto sink = OpenMediaWriter(*file, row.encoder, {44100, 2, 3, 16}, 128000);
    ASSERT_THAT(sink, IsOk());
    std::vector<double> tone(2 * 44100);
    for (std::size_t i = 0; i < tone.size(); ++i) tone[i] = 0.5 * std::sin(static_cast<double>(i / 2) * 0.1);
    for (std::size_t at = 0; at < tone.size(); at += 1400) {
      ASSERT_THAT((*sink)->Write(std::span(tone).subspan(at, std::min<std::size_t>(1400, tone.size() - at))),
                  IsOk());
    }
    ASSERT_THAT((*sink)->Finish(), IsOk());
    ASSERT_THAT(file->Commit(), IsOk());
    EXPECT_EQ(ProbeMedia(path).kind, row.kind);
    auto source = OpenPcm(path);
    ASSERT_THAT(source, IsOk());
    const Decoded decoded = DecodeAll(**source);
    EXPECT_NEAR(static_cast<double>(decoded.frames), 44100, 5000);
    EXPECT_NEAR(decoded.peak, 0.5, 0.1);  // the abrupt start overshoots
  }
  auto file = StagedFile::Create(place.File("no.mp3"));
  ASSERT_THAT(file, IsOk());
  EXPECT_THAT(OpenMediaWriter(*file, MediaEncoder::MpegLayer2, {12345, 2, 3, 16}, 128000),
              FailsWith(Outcome::FormatRefused));
  EXPECT_THAT(OpenMediaWriter(*file, MediaEncoder::MpegLayer2, {44100, 6, 0, 16}, 128000),
              FailsWith(Outcome::FormatRefused));
}

TEST_F(MediaTest, AWaveFileOfAnUnknownCodingIsOneAllTheSame) {
  const WaveFormat format = PcmFormat(8000, 16, 1, 0x4321);
  const std::string path = place.Write("a.wav", AsText(Wave(format, Bytes(16000))));
  const MediaProbe probe = ProbeMedia(path);
  EXPECT_EQ(probe.kind, MediaKind::Wave);
  EXPECT_EQ(probe.format, format);
  EXPECT_EQ(probe.dataLength, 16000U);
  EXPECT_EQ(probe.Milliseconds(), 1000U);
  EXPECT_THAT(ConvertWaveFile(path, place.File("b.wav"), AudioCdFormat()), FailsWith(Outcome::SourceFailed));
}

class NullSink final : public PcmSink {
 public:
  explicit NullSink(std::chrono::milliseconds pause = {}) : pause_(pause) {}
  Outcome Write(std::span<const double> interleaved) override {
    std::this_thread::sleep_for(pause_);
    samples += interleaved.size();
    return fail ? Outcome::WriteFailed : Outcome::Success;
  }
  Outcome Finish() override {
    finished = true;
    return Outcome::Success;
  }
  std::chrono::milliseconds pause_;
  std::uint64_t samples = 0;
  bool finished = false;
  bool fail = false;
};

struct EngineRun {
  explicit EngineRun(std::chrono::milliseconds pause = {}, std::size_t frames = 200000) {
    auto wave = WaveFile::Read(
        InputFile::FromBytes(Wave(PcmFormat(10000, 16, 1), Samples16(std::vector<std::int16_t>(frames)))));
    auto made = std::make_unique<NullSink>(pause);
    sink = made.get();
    engine.Build(std::move(*WaveSource(std::move(*wave))), std::move(made));
  }
  [[nodiscard]] MediaEvents Events() {
    return {[this](std::uint64_t ms) { positions.push_back(ms); },
            [this](Outcome outcome) { outcomes.push_back(outcome); }};
  }

  test::TestLoop loop;
  MediaEngine engine{loop};
  NullSink* sink = nullptr;
  std::vector<std::uint64_t> positions;
  std::vector<Outcome> outcomes;
};

TEST(MediaEngineTest, TellsPositionsAndTheEndOnce) {
  EngineRun run(std::chrono::milliseconds(20));
  EXPECT_EQ(run.engine.GetState(), MediaEngine::State::Built);
  ASSERT_THAT(run.engine.Start(run.Events()), IsOk());
  EXPECT_EQ(run.engine.GetState(), MediaEngine::State::Running);
  EXPECT_THAT(run.engine.Start({}), FailsWith(Outcome::InvalidParameter));
  EXPECT_TRUE(run.loop.RunUntil([&] { return !run.outcomes.empty(); }));
  EXPECT_THAT(run.outcomes, testing::ElementsAre(Outcome::Success));
  EXPECT_EQ(run.engine.GetState(), MediaEngine::State::Built);
  EXPECT_EQ(run.sink->samples, 200000U);
  EXPECT_TRUE(run.sink->finished);
  EXPECT_FALSE(run.positions.empty());
  EXPECT_TRUE(std::ranges::is_sorted(run.positions));
  EXPECT_LE(run.positions.back(), 20000U);
  run.engine.Release();
  EXPECT_EQ(run.engine.GetState(), MediaEngine::State::None);
}

TEST(MediaEngineTest, AStopLeavesTheRestAndSilencesTheEvents) {
  EngineRun run(std::chrono::milliseconds(5), 2'000'000);
  ASSERT_THAT(run.engine.Start(run.Events()), IsOk());
  EXPECT_TRUE(run.loop.RunUntil([&] { return !run.positions.empty(); }));
  run.engine.Stop();
  EXPECT_LT(run.sink->samples, 2'000'000U);
  EXPECT_EQ(run.engine.GetState(), MediaEngine::State::Built);
  run.loop.RunPending();
  EXPECT_TRUE(run.outcomes.empty());
  EXPECT_FALSE(run.sink->finished);
}

TEST(MediaEngineTest, ReportsAFailureOfTheSink) {
  EngineRun run;
  run.sink->fail = true;
  ASSERT_THAT(run.engine.Start(run.Events()), IsOk());
  EXPECT_TRUE(run.loop.RunUntil([&] { return !run.outcomes.empty(); }));
  EXPECT_THAT(run.outcomes, testing::ElementsAre(Outcome::WriteFailed));
}

}  // namespace
}  // namespace ts5
