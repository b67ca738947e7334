#include "platform/disc/virtual_cd.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

#include "platform/base/bytes.h"
#include "platform/disc/drive_claim.h"
#include "platform/disc/virtual_drive.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"

namespace ts5 {
namespace {

constexpr std::string_view kDiscFile = "disc";  // holds the path of the CUE sheet

std::string DiscFile() {
  return JoinPath(VirtualCdDirectory(), kDiscFile);
}

Result<DriveClaim> ClaimToChange() {
  if (const Outcome made = MakeDirectories(VirtualCdDirectory()); Failed(made)) return Failure(made);
  auto claim = DriveClaim::TakeSoon(VirtualCdDirectory());
  if (!claim && claim.error() != Outcome::InUse) return Failure(Outcome::TargetFailed);
  return claim;
}

class VirtualCdDrive final : public VirtualDrive {
 public:
  explicit VirtualCdDrive(std::optional<DiscImage> disc)
      : VirtualDrive(VirtualCdName()), disc_(std::move(disc)) {}

 private:
  const DiscLayout* Layout() override { return disc_ ? &disc_->Layout() : nullptr; }
  Outcome ReadAudio(Lba address, std::span<std::uint8_t> out) override {
    return disc_->ReadAudio(address, out);
  }
  std::optional<SenseData> NotReady() override {
    return disc_ ? std::nullopt : std::optional(sense::kMediumNotPresent);
  }
  // What goes out is taken away; closing the tray brings nothing back.
  ScsiReply Other(const MmcCommandRow& row, const ScsiCommand& command) override {
    if (row.code != MmcCommand::StartStopUnit) return VirtualDrive::Other(row, command);
    constexpr std::uint8_t kTray = 0x02;
    constexpr std::uint8_t kIn = 0x01;
    if ((command.cdb[4] & (kTray | kIn)) != kTray) return {true, {}, 0};
    if (FileExists(DiscFile()) && Failed(RemoveFile(DiscFile())))
      return Refused({sense::kHardwareError, 0x53, 0x00});
    disc_.reset();
    return {true, {}, 0};
  }

  std::optional<DiscImage> disc_;
};

}  // namespace

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
  return std::make_unique<VirtualCdDrive>(std::move(disc));
}

}  // namespace ts5
