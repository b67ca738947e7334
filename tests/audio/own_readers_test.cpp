// Wave and AIFF files that our own readers take or refuse: of either byte order, damaged, cut, with broken
// headers.
#include <gmock/gmock.h>

#include "audio/media_file.h"
#include "audio/media_probe.h"
#include "audio/wave_converter.h"
#include "audio/wave_stream.h"
#include "support/matchers.h"
#include "support/test_data.h"
#include "wave_bytes.h"

namespace ts5 {
namespace {

using namespace test;

Bytes BigChunk(std::string_view id, ByteView data, bool pad = true) {
  ByteWriter out;
  out.Append(id);
  out.U32Be(static_cast<std::uint32_t>(data.size()));
  out.Append(data);
  if (pad && data.size() % 2 != 0) out.U8(0);
  return out.Release();
}

Bytes Big(std::string_view id, std::string_view type, std::initializer_list<Bytes> chunks) {
  ByteWriter body;
  body.Append(type);
  for (const Bytes& chunk : chunks) body.Append(chunk);
  return BigChunk(id, body.View());
}

Bytes Common(std::uint16_t channels, std::uint32_t frames, std::uint16_t bits, std::string_view coding = "") {
  ByteWriter out;
  out.U16Be(channels);
  out.U32Be(frames);
  out.U16Be(bits);
  out.U16Be(0x400E);  // 44100 as an extended number
  out.U64Be(0xAC44000000000000);
  out.Append(coding);
  if (!coding.empty()) out.U16Be(0);
  return BigChunk("COMM", out.View());
}

Bytes Sound(ByteView samples) {
  ByteWriter out;
  out.U64Be(0);
  out.Append(samples);
  return BigChunk("SSND", out.View());
}

Bytes Record(std::uint16_t tag, std::uint16_t channels, std::uint16_t align, std::uint16_t bits,
             std::size_t size = 16) {
  ByteWriter out;
  out.U16Le(tag);
  out.U16Le(channels);
  out.U32Le(44100);
  out.U32Le(44100U * align);
  out.U16Le(align);
  out.U16Le(bits);
  Bytes record = out.Release();
  record.resize(size);
  return record;
}

// A record with all its numbers turned.
Bytes BigRecord(std::uint16_t channels, std::uint16_t bits) {
  const auto align = static_cast<std::uint16_t>(channels * bits / 8);
  ByteWriter out;
  out.U16Be(bits == 32 ? kTagFloat : kTagPcm);
  out.U16Be(channels);
  out.U32Be(44100);
  out.U32Be(44100U * align);
  out.U16Be(align);
  out.U16Be(bits);
  return out.Release();
}

std::vector<double> Samples(const std::string& path) {
  auto source = OpenPcm(path);
  EXPECT_THAT(source, IsOk());
  if (!source) return {};
  std::vector<double> all(64);
  const auto got = (*source)->Read(all);
  EXPECT_THAT(got, IsOk());
  all.resize(got.value_or(0) * (*source)->Shape().channels);
  return all;
}

TEST(OwnReadersTest, SamplesOfEveryOrderAndDepth) {
  using testing::ElementsAre;
  const Bytes high16{0x40, 0x00, 0xC0, 0x00, 0x7F, 0xFF, 0x00, 0x02};
  const Bytes low16{0x00, 0x40, 0x00, 0xC0, 0xFF, 0x7F, 0x02, 0x00};
  const Bytes high24{0x40, 0x00, 0x00, 0xC0, 0x00, 0x00};
  const Bytes float32{0x3F, 0x00, 0x00, 0x00, 0xBF, 0x00, 0x00, 0x00};
  const Bytes signed8{0x40, 0xC0};
  const Bytes unsigned8{0xC0, 0x40};
  const struct {
    const char* what;
    Bytes file;
    MediaKind kind;
    std::uint16_t bits;
    std::size_t samples = 2;
  } cases[] = {
      {"RIFX 16", Big("RIFX", "WAVE", {BigChunk("fmt ", BigRecord(1, 16)), BigChunk("data", high16)}),
       MediaKind::Wave, 16, 4},
      {"RIFX 24", Big("RIFX", "WAVE", {BigChunk("fmt ", BigRecord(1, 24)), BigChunk("data", high24)}),
       MediaKind::Wave, 24},
      {"RIFX floats", Big("RIFX", "WAVE", {BigChunk("fmt ", BigRecord(2, 32)), BigChunk("data", float32)}),
       MediaKind::Wave, 32},
      {"RIFX 8", Big("RIFX", "WAVE", {BigChunk("fmt ", BigRecord(1, 8)), BigChunk("data", unsigned8)}),
       MediaKind::Wave, 8},
      {"AIFF 16", Big("FORM", "AIFF", {Common(1, 4, 16), Sound(high16)}), MediaKind::Aiff, 16, 4},
      {"AIFF 12 in 16", Big("FORM", "AIFF", {Common(1, 2, 12), Sound(high16)}), MediaKind::Aiff, 16},
      {"AIFF 8", Big("FORM", "AIFF", {Common(2, 1, 8), Sound(signed8)}), MediaKind::Aiff, 8},
      {"AIFF 24, sound first", Big("FORM", "AIFF", {Sound(high24), Common(1, 2, 24)}), MediaKind::Wave, 24},
      {"sowt", Big("FORM", "AIFC", {Common(1, 2, 16, "sowt"), Sound(low16)}), MediaKind::Aiff, 16},
      {"raw", Big("FORM", "AIFC", {Common(1, 2, 8, "raw "), Sound(unsigned8)}), MediaKind::Aiff, 8},
      {"fl32", Big("FORM", "AIFC", {Common(1, 2, 32, "fl32"), Sound(float32)}), MediaKind::Aiff, 32},
      {"frames fewer than samples", Big("FORM", "AIFF", {Common(1, 2, 16), Sound(high16)}), MediaKind::Aiff,
       16},
      {"frames more than samples", Big("FORM", "AIFF", {Common(1, 9, 24), Sound(high24)}), MediaKind::Aiff,
       24},
      {"frames never counted", Big("FORM", "AIFF", {Common(1, 0, 24), Sound(high24)}), MediaKind::Aiff, 24},
      {"a name without padding",
       Big("FORM", "AIFF", {Common(1, 2, 24), BigChunk("NAME", AsBytes("abc"), false), Sound(high24)}),
       MediaKind::Aiff, 24},
  };
  const TemporaryDirectory place;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const std::string path = place.Write("a.wav", AsText(c.file));
    const MediaProbe probe = ProbeMedia(path);
    EXPECT_EQ(probe.kind, c.kind);
    EXPECT_EQ(probe.format.bitsPerSample, c.bits);
    const std::vector<double> samples = Samples(path);
    EXPECT_EQ(samples.size(), probe.frames.value_or(0) * probe.format.channels);
    ASSERT_GE(samples.size(), 2U);
    EXPECT_THAT(std::vector(samples.begin(), samples.begin() + 2), ElementsAre(0.5, -0.5));
    EXPECT_EQ(samples.size(), c.samples);
  }
}

TEST(OwnReadersTest, ARefusalIsARefusal) {
  const Bytes noise(4000, 0x5A);
  const struct {
    const char* what;
    Bytes file;
  } cases[] = {
      {"fmt of 14 bytes", Riff({Chunk("fmt ", Record(1, 1, 2, 16, 14)), Chunk("data", noise)})},
      {"ADPCM without a block size", Riff({Chunk("fmt ", Record(2, 2, 0, 4, 50)), Chunk("data", noise)})},
      {"ADPCM of another maker, blocks of two bytes",
       Riff({Chunk("fmt ", Record(0x11, 2, 2, 4, 20)), Chunk("data", noise)})},
      {"PCM that claims to be Windows Media",
       Riff({Chunk("fmt ", Record(0x161, 2, 4, 16)), Chunk("data", noise)})},
      {"RIFX with compressed data",
       Big("RIFX", "WAVE",
           {BigChunk("fmt ", Bytes{0, 2, 0, 1, 0, 0, 0xAC, 0x44, 0, 0, 1, 0, 1, 0, 0, 4}),
            BigChunk("data", noise)})},
      {"cut behind the header",
       Riff({FormatChunk(PcmFormat(44100, 16, 2)), Bytes{'d', 'a', 't', 'a', 0xB0, 0x52, 0, 0}})},
      {"AIFF without sound", Big("FORM", "AIFF", {Common(2, 5292, 16)})},
      {"AIFF with an empty sound", Big("FORM", "AIFF", {Common(2, 5292, 16), Sound({})})},
      {"AIFF without COMM", Big("FORM", "AIFF", {Sound(noise)})},
      {"AIFF of 60 bits", Big("FORM", "AIFF", {Common(2, 100, 60), Sound(noise)})},
      {"AIFC of an unknown coding", Big("FORM", "AIFC", {Common(1, 100, 16, "huh?"), Sound(noise)})},
  };
  const TemporaryDirectory place;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const std::string path = place.Write("a.wav", AsText(c.file));
    EXPECT_EQ(ProbeMedia(path).kind, MediaKind::None);
    EXPECT_FALSE(OpenPcm(path));
    EXPECT_THAT(ConvertWaveFile(path, place.File("b.wav"), PcmFormat(44100, 16, 2)),
                FailsWith(Outcome::SourceFailed));
  }
  // Honestly empty ones stay what they are.
  for (const Bytes& file : {Wave16({}), Big("FORM", "AIFF", {Common(2, 0, 16)}),
                            Big("FORM", "AIFF", {Common(2, 0, 16), Sound({})})}) {
    const std::string path = place.Write("a.wav", AsText(file));
    EXPECT_EQ(ProbeMedia(path).frames, 0U);
    EXPECT_THAT(ConvertWaveFile(path, place.File("b.wav"), PcmFormat(44100, 16, 2)), IsOk());
  }
}

// Samples of either order come out the same, wherever a reading begins and ends.
TEST(OwnReadersTest, ReadingInPiecesAndSeekingTurnsWholeSamples) {
  ByteWriter samples;
  for (unsigned i = 0; i < 3000; ++i) samples.U24Be(i * 4321);
  const TemporaryDirectory place;
  const std::string path =
      place.Write("a.aif", AsText(Big("FORM", "AIFF", {Common(1, 3000, 24), Sound(samples.View())})));
  auto wave = WaveFile::ReadAiff(*InputFile::Open(path));
  ASSERT_THAT(wave, IsOk());
  Bytes whole(9000);
  ASSERT_EQ(wave->Read(whole).value_or(0), whole.size());
  wave->Reset();
  Bytes pieces;
  for (const std::size_t size : {10U, 1U, 3U, 100U, 8999U}) {
    Bytes piece(size);
    const std::size_t got = wave->Read(piece).value_or(0);
    EXPECT_EQ(got, std::min<std::size_t>(size / 3 * 3, whole.size() - pieces.size()));
    pieces.insert(pieces.end(), piece.begin(), piece.begin() + static_cast<std::ptrdiff_t>(got));
  }
  EXPECT_EQ(pieces, whole);
  EXPECT_THAT(WaveFile::Edit(path), FailsWith(Outcome::WrongFormat));
}

}  // namespace
}  // namespace ts5
