#include "platform/disc/cd_text.h"

#include <algorithm>
#include <array>
#include <utility>

#include "platform/base/text.h"
#include "platform/disc/disc_layout.h"
#include "platform/disc/mmc_commands.h"

namespace ts5 {
namespace {

constexpr std::uint8_t kTitle = 0x80;
constexpr std::uint8_t kPerformer = 0x81;
constexpr std::uint8_t kSizeInfo = 0x8F;
constexpr std::size_t kTextBytes = 12;
constexpr std::size_t kMostPacks = 256 - 3;  // beside those that describe them
constexpr std::size_t kMostCharacters = 159;
constexpr std::uint8_t kLatin1 = 0;
constexpr std::uint8_t kAscii = 1;
constexpr std::uint8_t kGerman = 0x08;
constexpr std::uint8_t kBlockBits = 0x70;
constexpr std::uint8_t kWide = 0x80;  // two bytes a character
constexpr std::size_t kSymbolsPerPack = 24;

// Typographic signs of Windows-1252 that Latin-1 has in a plainer form.
std::string ToLatin1(std::string_view text) {
  std::string latin = Windows1252FromUtf8(text);
  for (char& c : latin) {
    switch (static_cast<unsigned char>(c)) {
      case 0x82:
      case 0x91:
      case 0x92:
      case 0xB4:
        c = '\'';
        break;
      case 0x84:
      case 0x93:
      case 0x94:
        c = '"';
        break;
      case 0x96:
      case 0x97:
        c = '-';
        break;
      default:
        if (static_cast<unsigned char>(c) < 0x20) c = ' ';
        if (static_cast<unsigned char>(c) >= 0x7F && static_cast<unsigned char>(c) < 0xA0) c = '?';
    }
  }
  return latin.substr(0, kMostCharacters);
}

std::string FromLatin1(std::string_view text) {
  std::string utf8;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80) {
      utf8 += c;
    } else {
      utf8 += static_cast<char>(0xC0 | byte >> 6);
      utf8 += static_cast<char>(0x80 | (byte & 0x3F));
    }
  }
  return utf8;
}

class PackWriter {
 public:
  // Texts of track 0 (the disc), then of the tracks.
  void Texts(std::uint8_t type, int firstTrack, const std::vector<std::string>& texts) {
    if (std::ranges::all_of(texts, [](const std::string& text) { return text.empty(); })) return;
    for (std::size_t i = 0; i < texts.size(); ++i) {
      const auto number = static_cast<std::uint8_t>(i == 0 ? 0 : firstTrack + static_cast<int>(i) - 1);
      const std::string whole = texts[i] + '\0';
      for (std::size_t at = 0; at < whole.size();) {
        if (text_.empty()) Begin(type, number, at);
        const std::size_t count = std::min(kTextBytes - text_.size(), whole.size() - at);
        text_.append(whole, at, count);
        at += count;
        if (text_.size() == kTextBytes) End();
      }
    }
    if (!text_.empty()) End();
  }
  void Pack(std::uint8_t type, std::uint8_t track, ByteView text) {
    Begin(type, track, 0);
    text_ = AsText(text);
    End();
  }
  [[nodiscard]] std::size_t Count(std::uint8_t type) const { return counts_[type - kTitle]; }
  [[nodiscard]] std::size_t Packs() const { return bytes_.size() / kCdTextPackBytes; }
  [[nodiscard]] Bytes Release() { return std::move(bytes_); }

 private:
  void Begin(std::uint8_t type, std::uint8_t track, std::size_t position) {
    header_ = {type, track, static_cast<std::uint8_t>(Packs()),
               static_cast<std::uint8_t>(std::min<std::size_t>(position, 15))};
  }
  void End() {
    text_.resize(kTextBytes, '\0');
    Bytes pack(header_.begin(), header_.end());
    pack.insert(pack.end(), text_.begin(), text_.end());
    const std::uint16_t crc = DiscCrc(pack);
    pack.push_back(static_cast<std::uint8_t>(crc >> 8));
    pack.push_back(static_cast<std::uint8_t>(crc));
    bytes_.insert(bytes_.end(), pack.begin(), pack.end());
    ++counts_[header_[0] - kTitle];
    text_.clear();
  }

  std::array<std::uint8_t, 4> header_{};
  std::string text_;
  std::array<std::size_t, 16> counts_{};
  Bytes bytes_;
};

using TextColumn = std::vector<std::string>;  // of the disc, then of the tracks

TextColumn ColumnOf(const CdText& text, std::string CdText::Entry::*member) {
  TextColumn column{ToLatin1(text.disc.*member)};
  for (const CdText::Entry& track : text.tracks) column.push_back(ToLatin1(track.*member));
  return column;
}

// Packs that a column needs when its texts are cut there.
std::size_t PackCount(const TextColumn& column, std::size_t most) {
  std::size_t bytes = 0;
  for (const std::string& text : column) bytes += std::min(text.size(), most) + 1;
  return (bytes + kTextBytes - 1) / kTextBytes;
}

bool RightPack(ByteView pack) {
  const std::uint16_t crc = DiscCrc(pack.first(kCdTextPackBytes - 2));
  return pack[16] == crc >> 8 && pack[17] == (crc & 0xFF);
}

// Follows the texts of one type through its packs.
class ColumnReader {
 public:
  void Take(ByteView pack) {
    const int number = pack[1] & 0x7F;
    // After a pack that was lost, the texts begin anew with the first that begins in this one.
    const bool follows = number == track_ && pack[2] == next_;
    std::size_t at = 0;
    if (!follows) {
      track_ = number;
      current_.clear();
      lost_ = (pack[3] & 0x0F) != 0;
    }
    next_ = static_cast<std::uint8_t>(pack[2] + 1);
    for (; at < kTextBytes; ++at) {
      const auto c = static_cast<char>(pack[4 + at]);
      if (c != '\0') {
        current_ += c;
        continue;
      }
      if (!lost_ && track_ <= kMaxTracks) Store();
      lost_ = false;
      current_.clear();
      ++track_;
    }
  }
  [[nodiscard]] const std::array<std::string, kMaxTracks + 1>& Texts() const { return texts_; }

 private:
  void Store() {
    std::string& text = texts_[static_cast<std::size_t>(track_)];
    // A tab alone repeats the text of the track before.
    if (current_ == "\t" && track_ > 0) current_ = texts_[static_cast<std::size_t>(track_) - 1];
    if (text.empty()) text = current_;
  }

  int track_ = -1;
  std::uint8_t next_ = 0;
  bool lost_ = false;
  std::string current_;
  std::array<std::string, kMaxTracks + 1> texts_;
};

}  // namespace

bool CdText::Empty() const {
  const auto blank = [](const Entry& entry) { return entry.title.empty() && entry.performer.empty(); };
  return blank(disc) && std::ranges::all_of(tracks, blank);
}

CdText::Entry CdText::Track(int number) const {
  const int index = number - firstTrack;
  if (index < 0 || std::cmp_greater_equal(index, tracks.size())) return {};
  return tracks[static_cast<std::size_t>(index)];
}

Bytes CdTextPacks(const CdText& text) {
  if (text.Empty()) return {};
  TextColumn titles = ColumnOf(text, &CdText::Entry::title);
  TextColumn performers = ColumnOf(text, &CdText::Entry::performer);
  std::size_t most = kMostCharacters;
  while (PackCount(titles, most) + PackCount(performers, most) > kMostPacks) --most;
  for (TextColumn* column : {&titles, &performers})
    for (std::string& one : *column) one.resize(std::min(one.size(), most));
  PackWriter out;
  out.Texts(kTitle, text.firstTrack, titles);
  out.Texts(kPerformer, text.firstTrack, performers);
  const auto count = [&](std::uint8_t type) { return static_cast<std::uint8_t>(out.Count(type)); };
  const auto last = static_cast<std::uint8_t>(out.Packs() + 2);
  const auto lastTrack =
      static_cast<std::uint8_t>(text.firstTrack + static_cast<int>(text.tracks.size()) - 1);
  const std::array<std::array<std::uint8_t, kTextBytes>, 3> info{{
      {kLatin1, static_cast<std::uint8_t>(text.firstTrack), lastTrack, 0, count(kTitle), count(kPerformer)},
      {0, 0, 0, 0, 0, 0, 0, 3, last},
      {0, 0, 0, 0, kGerman},
  }};
  for (std::uint8_t i = 0; i < info.size(); ++i) out.Pack(kSizeInfo, i, info.at(i));
  return out.Release();
}

CdText ParseCdText(ByteView packs) {
  ColumnReader titles;
  ColumnReader performers;
  CdText text;
  int lastTrack = 0;
  bool readable = true;
  for (; packs.size() >= kCdTextPackBytes; packs = packs.subspan(kCdTextPackBytes)) {
    const ByteView pack = packs.first(kCdTextPackBytes);
    if (!RightPack(pack) || (pack[3] & kBlockBits) != 0 || (pack[3] & kWide) != 0) continue;
    if (pack[0] == kTitle) titles.Take(pack);
    if (pack[0] == kPerformer) performers.Take(pack);
    if (pack[0] == kSizeInfo && pack[1] == 0) {
      readable = pack[4] == kLatin1 || pack[4] == kAscii;
      if (pack[5] >= 1 && pack[5] <= pack[6] && pack[6] <= kMaxTracks) {
        text.firstTrack = pack[5];
        lastTrack = pack[6];
      }
    }
  }
  if (!readable) return {};
  const auto entry = [&](std::size_t track) {
    return CdText::Entry{FromLatin1(titles.Texts()[track]), FromLatin1(performers.Texts()[track])};
  };
  text.disc = entry(0);
  for (int track = kMaxTracks; lastTrack == 0 && track > 0; --track)
    if (entry(static_cast<std::size_t>(track)) != CdText::Entry{}) lastTrack = track;
  for (int track = text.firstTrack; track <= lastTrack; ++track)
    text.tracks.push_back(entry(static_cast<std::size_t>(track)));
  return text.Empty() ? CdText{} : text;
}

Bytes LeadInSector(ByteView packs, std::size_t sector) {
  Bytes out;
  out.reserve(kRawSubBytes);
  const std::size_t count = packs.size() / kCdTextPackBytes;
  for (std::size_t i = 0; i < kPacksPerSector && count > 0; ++i) {
    const ByteView pack =
        packs.subspan((sector * kPacksPerSector + i) % count * kCdTextPackBytes, kCdTextPackBytes);
    for (std::size_t at = 0; at < kCdTextPackBytes; at += 3) {
      const unsigned three =
          static_cast<unsigned>(pack[at]) << 16 | static_cast<unsigned>(pack[at + 1]) << 8 | pack[at + 2];
      for (const unsigned shift : {18U, 12U, 6U, 0U})
        out.push_back(static_cast<std::uint8_t>(three >> shift & 0x3F));
    }
  }
  return out;
}

Bytes PacksOfLeadInSector(ByteView sector) {
  Bytes packs;
  for (; sector.size() >= kSymbolsPerPack; sector = sector.subspan(kSymbolsPerPack)) {
    Bytes pack;
    for (std::size_t at = 0; at < kSymbolsPerPack; at += 4) {
      unsigned three = 0;
      for (std::size_t i = 0; i < 4; ++i) three = three << 6 | (sector[at + i] & 0x3FU);
      for (const unsigned shift : {16U, 8U, 0U}) pack.push_back(static_cast<std::uint8_t>(three >> shift));
    }
    if (RightPack(pack)) packs.insert(packs.end(), pack.begin(), pack.end());
  }
  return packs;
}

}  // namespace ts5
