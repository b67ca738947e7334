#include "platform/virtual_cd.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

#include "platform/bytes.h"
#include "platform/directories.h"
#include "platform/drive_claim.h"
#include "platform/files.h"
#include "platform/paths.h"

namespace ts5 {
namespace {

constexpr std::string_view kDiscFile = "disc";  // holds the path of the CUE sheet
constexpr SenseData kNoMedium{kSenseNotReady, kSenseNoMedium, 0};
constexpr SenseData kUnreadable{0x03, 0x11, 0};
constexpr SenseData kUnknownCommand{0x05, 0x20, 0};
constexpr SenseData kOutOfRange{0x05, 0x21, 0};
constexpr SenseData kInvalidField{0x05, 0x24, 0};
constexpr SenseData kNotThatKind{0x05, 0x64, 0};

std::string DiscFile() {
  return JoinPath(VirtualCdDirectory(), kDiscFile);
}

Result<DriveClaim> ClaimToChange() {
  if (const Outcome made = MakeDirectories(VirtualCdDirectory()); Failed(made)) return Failure(made);
  auto claim = DriveClaim::Take(VirtualCdDirectory());
  if (!claim && claim.error() != Outcome::InUse) return Failure(Outcome::TargetFailed);
  return claim;
}

ScsiReply Refused(SenseData sense) {
  return {false, sense, 0};
}

class VirtualCdTransport final : public ScsiTransport {
 public:
  explicit VirtualCdTransport(std::optional<DiscImage> disc) : disc_(std::move(disc)) {}

  ScsiReply Send(const ScsiCommand& command) override {
    if (command.cdb.size() < 6) return Refused(kInvalidField);
    const auto code = static_cast<MmcCommand>(command.cdb[0]);
    const bool whole = command.cdb.size() >= (code == MmcCommand::ReadCd    ? 12U
                                              : code == MmcCommand::ReadToc ? 10U
                                                                            : 6U);
    if (!whole) return Refused(kInvalidField);
    switch (code) {
      case MmcCommand::Inquiry:
        return Give(Inquiry(), command);
      case MmcCommand::TestUnitReady:
        return disc_ ? ScsiReply{true, {}, 0} : Refused(kNoMedium);
      case MmcCommand::ReadToc:
        return disc_ ? ReadToc(command) : Refused(kNoMedium);
      case MmcCommand::ReadCd:
        return disc_ ? ReadCd(command) : Refused(kNoMedium);
    }
    return Refused(kUnknownCommand);
  }

 private:
  static ScsiReply Give(const Bytes& bytes, const ScsiCommand& command) {
    const std::size_t count = std::min(bytes.size(), command.data.size());
    std::copy_n(bytes.begin(), count, command.data.begin());
    return {true, {}, count};
  }

  static Bytes Inquiry() {
    const DriveName name = VirtualCdName();
    const auto field = [](std::string text, std::size_t width) {
      text.resize(width, ' ');
      return text;
    };
    ByteWriter out;
    out.U8(0x05);  // a disc drive
    out.U8(0x80);  // whose medium can be taken out
    out.U8(0x05);  // SPC-3
    out.U8(0x02);
    out.U8(kInquiryBytes - 5);
    out.Fill(3, 0);
    out.Append(field(name.vendor, 8));
    out.Append(field(name.product, 16));
    out.Append(field("5.0", 4));
    return out.Release();
  }

  ScsiReply ReadToc(const ScsiCommand& command) const {
    const bool asTimes = (command.cdb[1] & 0x02) != 0;
    if ((command.cdb[2] & 0x0F) != 0) return Refused(kInvalidField);  // format 0 only
    const auto& tracks = disc_->Tracks();
    const int from = command.cdb[6];
    if (from != kLeadOutTrack && from > tracks.back().number) return Refused(kInvalidField);
    ByteWriter entries;
    const auto add = [&](std::uint8_t control, std::uint8_t number, std::uint32_t sector) {
      entries.U8(0);
      entries.U8(static_cast<std::uint8_t>(0x10 | control));
      entries.U8(number);
      entries.U8(0);
      if (asTimes) {
        const std::uint32_t time = sector + 2 * kSectorsPerSecond;
        entries.U8(0);
        entries.U8(static_cast<std::uint8_t>(time / (60 * kSectorsPerSecond)));
        entries.U8(static_cast<std::uint8_t>(time / kSectorsPerSecond % 60));
        entries.U8(static_cast<std::uint8_t>(time % kSectorsPerSecond));
      } else {
        entries.U32Be(sector);
      }
    };
    for (const DiscImage::Track& track : tracks) {
      const unsigned control =
          (track.audio ? 0U : 4U) | (track.copyPermitted ? 2U : 0U) | (track.preEmphasis ? 1U : 0U);
      if (from != kLeadOutTrack && track.number >= from)
        add(static_cast<std::uint8_t>(control), static_cast<std::uint8_t>(track.number), track.start);
    }
    add(tracks.back().audio ? 0 : 4, kLeadOutTrack, disc_->LeadOut());

    ByteWriter out;
    out.U16Be(static_cast<std::uint16_t>(entries.Size() + 2));
    out.U8(static_cast<std::uint8_t>(tracks.front().number));
    out.U8(static_cast<std::uint8_t>(tracks.back().number));
    out.Append(entries.View());
    Bytes bytes = out.Release();
    bytes.resize(std::min<std::size_t>(bytes.size(), command.cdb[7] * 256U + command.cdb[8]));
    return Give(bytes, command);
  }

  ScsiReply ReadCd(const ScsiCommand& command) {
    ByteReader cdb(command.cdb);
    cdb.Skip(1);
    const unsigned kind = cdb.U8() >> 2 & 0x07;
    const std::uint32_t first = cdb.U32Be();
    const std::uint32_t count = cdb.U24Be();
    const unsigned mainChannel = cdb.U8() & 0xF8;
    const unsigned subChannel = cdb.U8() & 0x07;
    if (kind > 1 || mainChannel == 0 || subChannel != 0) return Refused(kInvalidField);
    if (first > disc_->LeadOut() || count > disc_->LeadOut() - first) return Refused(kOutOfRange);
    const std::size_t size = count * kAudioSectorBytes;
    if (size > command.data.size()) return Refused(kInvalidField);
    const Outcome read = disc_->ReadAudio(first, command.data.first(size));
    if (read == Outcome::InvalidParameter) return Refused(kNotThatKind);
    if (Failed(read)) return Refused(kUnreadable);
    return {true, {}, size};
  }

  std::optional<DiscImage> disc_;
};

}  // namespace

std::string VirtualCdDirectory() {
  return JoinPath(ProgramDirectory(), "virtual-cd");
}

DriveName VirtualCdName() {
  return {"STAVORA", "VIRTUELLE CD"};
}

std::optional<std::string> VirtualDisc() {
  const auto text = ReadFileStart(DiscFile(), 4096);
  if (!text || text->empty()) return std::nullopt;
  return std::string(AsText(*text));
}

Outcome InsertVirtualDisc(const std::string& cuePath) {
  if (const auto disc = DiscImage::Open(cuePath); !disc) return disc.error();
  std::error_code error;
  const std::string path = std::filesystem::absolute(cuePath, error).string();
  if (error) return Outcome::SourceFailed;
  const auto claim = ClaimToChange();
  if (!claim) return claim.error();
  return WriteFile(DiscFile(), AsBytes(path));
}

Outcome EjectVirtualDisc() {
  const auto claim = ClaimToChange();
  if (!claim) return claim.error();
  return FileExists(DiscFile()) ? RemoveFile(DiscFile()) : Outcome::Success;
}

std::unique_ptr<ScsiTransport> OpenVirtualCd() {
  std::optional<DiscImage> disc;
  if (const auto path = VirtualDisc()) {
    if (auto opened = DiscImage::Open(*path)) disc = *std::move(opened);
  }
  return VirtualCd(std::move(disc));
}

std::unique_ptr<ScsiTransport> VirtualCd(std::optional<DiscImage> disc) {
  return std::make_unique<VirtualCdTransport>(std::move(disc));
}

}  // namespace ts5
