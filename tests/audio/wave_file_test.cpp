// Wave files: what is written to the byte, and every layout that real and damaged files have.
#include "audio/wave_file.h"

#include <gmock/gmock.h>

#include <functional>

#include "audio/wave_layout.h"
#include "support/matchers.h"
#include "support/test_data.h"
#include "wave_bytes.h"

namespace ts5 {
namespace {

using namespace test;
using testing::ElementsAre;

constexpr std::uint8_t kThree[] = {1, 2, 3};
constexpr std::uint8_t kFour[] = {1, 2, 3, 4};

Bytes FromHex(std::string_view text) {
  Bytes bytes;
  std::uint8_t value = 0;
  int digits = 0;
  for (const char c : text) {
    if (c == ' ') continue;
    value = static_cast<std::uint8_t>(value << 4 | (c <= '9' ? c - '0' : c - 'A' + 10));
    if (++digits % 2 == 0) bytes.push_back(value);
  }
  return bytes;
}

struct WaveFileTest : testing::Test {
  const TemporaryDirectory place;
};

TEST_F(WaveFileTest, WritesTheHeaderToTheByte) {
  const std::string name = place.File("a.wav");
  auto wave = WaveFile::Create(name, PcmFormat(11025, 8, 1));
  ASSERT_THAT(wave, IsOk());
  EXPECT_FALSE(FileExists(name)) << "visible before it is whole";
  ASSERT_THAT(wave->Write(kThree), IsOk());
  EXPECT_EQ(wave->DataSize(), 3U);
  ASSERT_THAT(wave->Close(), IsOk());
  EXPECT_EQ(Content(name), AsText(FromHex("52494646 34000000 57415645 666D7420 10000000 0100 0100 112B0000 "
                                          "112B0000 0100 0800 66616374 04000000 00000000 64617461 03000000 "
                                          "01020300")));
}

TEST_F(WaveFileTest, WritesTheExtraBytesOfOtherFormats) {
  WaveFormat format = PcmFormat(8000, 4, 1, 0x11);
  format.extra = {0xF9, 0x01};
  auto wave = WaveFile::Create(place.File("a.wav"), format);
  ASSERT_THAT(wave, IsOk());
  ASSERT_THAT(wave->Close(), IsOk());
  const std::string content = Content(place.File("a.wav"));
  EXPECT_EQ(content.substr(16, 4), std::string("\x14\0\0\0", 4));
  EXPECT_EQ(content.substr(36, 4), std::string("\x02\0\xF9\x01", 4));
  auto again = WaveFile::Open(place.File("a.wav"));
  ASSERT_THAT(again, IsOk());
  EXPECT_EQ(again->Format(), format);
}

TEST_F(WaveFileTest, AbandonedFilesLeaveNothing) {
  const std::string name = place.Write("a.wav", "alt");
  {
    auto wave = WaveFile::Create(name, AudioCdFormat());
    ASSERT_THAT(wave, IsOk());
    ASSERT_THAT(wave->Write(kFour), IsOk());
  }
  EXPECT_EQ(Listing(place.Path()), "a.wav");
  EXPECT_EQ(Content(name), "alt");
  EXPECT_THAT(WaveFile::Create(place.File("none/a.wav"), AudioCdFormat()), FailsWith(Outcome::TargetFailed));
}

struct LayoutCase {
  const char* name;
  Bytes file;
  std::uint64_t offset;
  std::uint64_t size;
};

Bytes WithSize(Bytes file, std::size_t at, std::uint32_t size) {
  for (std::size_t i = 0; i < 4; ++i) file.at(at + i) = static_cast<std::uint8_t>(size >> (8 * i));
  return file;
}

TEST(WaveLayoutTest, FindsTheDataWhereverItLies) {
  const WaveFormat format = PcmFormat(44100, 16, 1);
  const Bytes fmt = FormatChunk(format);
  const Bytes plain = Riff({fmt, Chunk("data", kFour)});
  const Bytes last = Riff({fmt, Chunk("data", kFour), Chunk("LIST", kFour)});
  const Bytes longSizes = FromHex("00000000 00000000 04000000 00000000 02000000 00000000 00000000");
  const std::vector<LayoutCase> cases{
      {"plain", plain, 44, 4},
      {"LIST between", Riff({fmt, Chunk("LIST", kFour), Chunk("data", kFour)}), 56, 4},
      {"data before fmt", Riff({Chunk("data", kFour), fmt}), 20, 4},
      {"padded odd chunk before", Riff({Chunk("junk", kThree), fmt, Chunk("data", kFour)}), 56, 4},
      {"odd chunk without padding", Riff({Chunk("junk", kThree, false), fmt, Chunk("data", kFour)}), 55, 4},
      {"size never written", WithSize(plain, 40, 0), 44, 4},
      {"size open", WithSize(plain, 40, 0xFFFFFFFF), 44, 4},
      {"size too large", WithSize(plain, 40, 5000), 44, 4},
      {"form size wrong", WithSize(plain, 4, 3), 44, 4},
      {"empty data, more chunks", Riff({fmt, Chunk("data", {}), Chunk("LIST", kFour)}), 44, 0},
      {"empty data", Riff({fmt, Chunk("data", {})}), 44, 0},
      {"chunk behind", last, 44, 4},
      {"first of two", Riff({fmt, Chunk("data", kFour), Chunk("data", kThree)}), 44, 4},
      {"RF64",
       WithSize(Riff({Chunk("ds64", longSizes), fmt, Chunk("data", kFour), Chunk("LIST", kFour)}, "RF64"), 76,
                0xFFFFFFFF),
       80, 4},
  };
  for (const LayoutCase& row : cases) {
    SCOPED_TRACE(row.name);
    const auto layout = ReadWaveLayout(InputFile::FromBytes(row.file));
    ASSERT_THAT(layout, IsOk());
    EXPECT_EQ(layout->format, format);
    EXPECT_EQ(layout->dataOffset, row.offset);
    EXPECT_EQ(layout->dataSize, row.size);
  }
}

TEST(WaveLayoutTest, RefusesWhatIsNoWaveFile) {
  const Bytes fmt = FormatChunk(PcmFormat(44100, 16, 1));
  Bytes manyChunks;
  for (int i = 0; i < 20000; ++i) {
    const Bytes chunk = Chunk("junk", {});
    manyChunks.insert(manyChunks.end(), chunk.begin(), chunk.end());
  }
  const std::vector<Bytes> files{
      {},
      Bytes(AsBytes("RIFF").begin(), AsBytes("RIFF").end()),
      Riff({fmt, Chunk("data", kFour)}, "RIFX"),
      Riff({fmt, Chunk("data", kFour)}, "RIFF", "AVI "),
      Riff({Chunk("data", kFour)}),
      Riff({fmt}),
      Riff({Chunk("fmt ", ByteView(WaveFormatBytes(PcmFormat(8000, 8, 1))).first(14)), Chunk("data", kFour)}),
      Riff({manyChunks, fmt, Chunk("data", kFour)}),
  };
  for (const Bytes& file : files)
    EXPECT_THAT(ReadWaveLayout(InputFile::FromBytes(file)), FailsWith(Outcome::WrongFormat)) << file.size();
}

// Every truncation of a good file and every changed byte of its header: no crash, and never more data than
// there is.
TEST(WaveLayoutTest, SurvivesEveryDamage) {
  const Bytes good =
      Riff({Chunk("LIST", kThree), FormatChunk(PcmFormat(44100, 16, 2)), Chunk("data", kFour)});
  const auto check = [](const Bytes& file) {
    const auto layout = ReadWaveLayout(InputFile::FromBytes(file));
    const std::uint64_t end = layout ? layout->dataOffset + layout->dataSize : 0;
    EXPECT_LE(end, file.size());
  };
  for (std::size_t size = 0; size <= good.size(); ++size)
    check(Bytes(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(size)));
  for (std::size_t at = 0; at < good.size(); ++at) {
    for (const std::uint8_t value : Bytes{0x00, 0x01, 0x7F, 0x80, 0xFF}) {
      Bytes bad = good;
      bad[at] = value;
      check(bad);
    }
  }
}

TEST_F(WaveFileTest, ReadsInPortionsAndAgain) {
  auto wave = WaveFile::Read(InputFile::FromBytes(Wave16({1, 2, 3})));
  ASSERT_THAT(wave, IsOk());
  Bytes buffer(4);
  EXPECT_EQ(*wave->Read(buffer), 4U);
  EXPECT_EQ(wave->DataSize(), 2U);
  EXPECT_EQ(*wave->Read(buffer), 2U);
  EXPECT_THAT(ByteView(buffer).first(2), ElementsAre(3, 0));
  EXPECT_EQ(*wave->Read(buffer), 0U);
  wave->Reset();
  EXPECT_EQ(wave->DataSize(), 6U);
  EXPECT_EQ(*wave->Read(buffer), 4U);
  EXPECT_THAT(wave->Write(kFour), FailsWith(Outcome::WriteFailed));
}

TEST_F(WaveFileTest, EditsSamplesInPlaceAndShowsThemWhenClosed) {
  const std::string name = place.Write("a.wav", AsText(Wave16({1, 2, 3})));
  {
    auto wave = WaveFile::Edit(name);
    ASSERT_THAT(wave, IsOk());
    Bytes two(2);
    EXPECT_EQ(wave->Read(two).value_or(0), 2U);
    ASSERT_THAT(wave->Write(Samples16({-7})), IsOk());
    EXPECT_EQ(wave->Read(two).value_or(0), 2U);
    EXPECT_THAT(two, ElementsAre(3, 0));
    EXPECT_THAT(wave->Write(Samples16({9})), FailsWith(Outcome::WriteFailed)) << "behind the end";
    wave->SeekTo(2);
    EXPECT_EQ(wave->Read(two).value_or(0), 2U);
    EXPECT_EQ(two, Samples16({-7})) << "what was written is read";
    EXPECT_EQ(Content(name), AsText(Wave16({1, 2, 3})));
    ASSERT_THAT(wave->Close(), IsOk());
  }
  EXPECT_EQ(Content(name), AsText(Wave16({1, -7, 3})));
  auto dropped = WaveFile::Edit(name);
  ASSERT_THAT(dropped->Write(Samples16({5})), IsOk());
  dropped = WaveFile::Edit(place.Write("b.wav", "kein Wave"));
  EXPECT_THAT(dropped, FailsWith(Outcome::WrongFormat));
  EXPECT_THAT(WaveFile::Edit(place.File("none.wav")), FailsWith(Outcome::SourceFailed));
  EXPECT_EQ(Content(name), AsText(Wave16({1, -7, 3}))) << "not closed, not changed";
  EXPECT_EQ(Listing(place.Path()), "a.wav b.wav");
}

TEST_F(WaveFileTest, NoticesAFileThatShrinks) {
  const std::string name = place.Write("a.wav", AsText(Wave16({1, 2, 3, 4})));
  auto wave = WaveFile::Open(name);
  ASSERT_THAT(wave, IsOk());
  place.Write("a.wav", AsText(Wave16({1})));
  Bytes buffer(100);
  EXPECT_THAT(wave->Read(buffer), FailsWith(Outcome::ReadFailed));
  EXPECT_THAT(WaveFile::Open(place.File("none.wav")), FailsWith(Outcome::SourceFailed));
  EXPECT_THAT(WaveFile::Open(place.Path()), FailsWith(Outcome::SourceFailed));
}

// The sizes beyond 4 GiB without writing so much: the header alone.
TEST(WaveLayoutTest, LongFilesAreRf64) {
  const WaveFormat format = AudioCdFormat();
  EXPECT_FALSE(NeedsRf64(format, 0xFFFFFFFFU - 49));
  EXPECT_TRUE(NeedsRf64(format, 0xFFFFFFFFU - 48));
  const std::uint64_t size = std::uint64_t{5} << 30;
  Bytes header = WaveHeader(format, size, 0, true);
  EXPECT_EQ(AsText(header).substr(0, 4), "RF64");
  ByteReader in(header);
  in.Seek(12);
  EXPECT_EQ(in.Tag(), "ds64");
  EXPECT_EQ(in.U32Le(), 28U);
  EXPECT_EQ(in.U64Le(), size + header.size() - 8);
  EXPECT_EQ(in.U64Le(), size);
  EXPECT_EQ(in.U64Le(), size / 4);
  const auto layout = ReadWaveLayout(InputFile::FromBytes(header));
  ASSERT_THAT(layout, IsOk());
  EXPECT_EQ(layout->dataOffset, header.size());
  EXPECT_EQ(layout->format, format);

  const TemporaryDirectory place;
  auto wave = WaveFile::Create(place.File("a.wav"), format, size);
  ASSERT_THAT(wave, IsOk());
  ASSERT_THAT(wave->Write(kFour), IsOk());
  ASSERT_THAT(wave->Close(), IsOk());
  auto again = WaveFile::Open(place.File("a.wav"));
  ASSERT_THAT(again, IsOk());
  EXPECT_EQ(again->DataSize(), 4U);
}

}  // namespace
}  // namespace ts5
