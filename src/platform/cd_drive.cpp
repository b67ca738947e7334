#include "platform/cd_drive.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>
#include <thread>
#include <utility>

#include "platform/scsi_generic.h"
#include "platform/virtual_cd.h"

namespace ts5 {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr auto kSettling = 12s;  // that a drive may take to know a disc
constexpr auto kSettlingPoll = 100ms;
constexpr int kReadAttempts = 3;

}  // namespace

Result<CdDrive> CdDrive::Open(const std::string& path) {
  if (path == VirtualCdDirectory()) return CdDrive(OpenVirtualCd());
  auto transport = OpenScsiDevice(path);
  if (!transport) return Failure(transport.error());
  return CdDrive(*std::move(transport));
}

Result<DriveName> CdDrive::Name() {
  const auto cdb = InquiryCdb();
  std::array<std::uint8_t, kInquiryBytes> data{};
  const ScsiReply reply = transport_->Send({cdb, ScsiDirection::FromDrive, data});
  const auto name = ParseInquiry(std::span(data).first(reply.good ? reply.transferred : 0));
  if (!name) return Failure(Outcome::CdDriveFailed);
  return *name;
}

MediaState CdDrive::State() {
  const auto cdb = TestUnitReadyCdb();
  const ScsiReply reply = transport_->Send({cdb});
  if (reply.good) return MediaState::Ready;
  if (reply.sense.code == kSenseNoMedium) return MediaState::NoMedium;
  return reply.sense.key == kSenseUnitAttention ? MediaState::UnitAttention : MediaState::NotReady;
}

Result<DiscToc> CdDrive::ReadToc(const CancelCheck& cancelled) {
  const auto patience = std::chrono::steady_clock::now() + kSettling;
  for (MediaState state = State(); state != MediaState::Ready; state = State()) {
    if (cancelled && cancelled()) return Failure(Outcome::Cancelled);
    if (state == MediaState::NoMedium || std::chrono::steady_clock::now() > patience)
      return Failure(Outcome::CdDriveFailed);
    if (state == MediaState::NotReady) std::this_thread::sleep_for(kSettlingPoll);
  }
  const auto cdb = ReadTocCdb();
  std::array<std::uint8_t, kTocBytes> data{};
  const ScsiReply reply = transport_->Send({cdb, ScsiDirection::FromDrive, data});
  if (!reply.good) return Failure(Outcome::CdDriveFailed);
  auto toc = DiscToc::Parse(std::span(data).first(reply.transferred));
  if (!toc) return Failure(Outcome::CdDriveFailed);
  return toc;
}

Outcome CdDrive::ReadAudio(std::uint32_t sector, std::span<std::uint8_t> out) {
  while (!out.empty()) {
    const auto count =
        static_cast<std::uint32_t>(std::min<std::size_t>(out.size() / kAudioSectorBytes, kSectorsPerRead));
    if (count == 0) return Outcome::InvalidParameter;
    const auto cdb = ReadCdAudioCdb(sector, count);
    const auto part = out.first(count * kAudioSectorBytes);
    bool read = false;
    for (int attempt = 0; attempt < kReadAttempts && !read; ++attempt) {
      const ScsiReply reply = transport_->Send({cdb, ScsiDirection::FromDrive, part});
      read = reply.good && reply.transferred == part.size();
      // A disc that is gone does not come back.
      if (!read && reply.sense.code == kSenseNoMedium) return Outcome::ReadFailed;
    }
    if (!read) return Outcome::ReadFailed;
    sector += count;
    out = out.subspan(part.size());
  }
  return Outcome::Success;
}

std::vector<std::string> CdDeviceFiles() {
  std::vector<std::string> files;
  std::error_code error;
  for (fs::directory_iterator entry("/sys/class/block", error), end; !error && entry != end;
       entry.increment(error)) {
    const std::string name = entry->path().filename().string();
    if (name.starts_with("sr")) files.push_back("/dev/" + name);
  }
  std::ranges::sort(files);
  return files;
}

std::vector<CdDriveEntry> CdDrives() {
  std::vector<CdDriveEntry> drives;
  for (std::string& path : CdDeviceFiles()) {
    auto drive = CdDrive::Open(path);
    const auto name = drive ? drive->Name() : Failure(Outcome::SourceFailed);
    if (name) drives.push_back({std::move(path), *name});
  }
  drives.push_back({VirtualCdDirectory(), VirtualCdName()});
  return drives;
}

}  // namespace ts5
