#include "platform/disc/cd_drive.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <thread>
#include <utility>

#include "platform/disc/scsi_generic.h"
#include "platform/disc/scsi_trace.h"
#include "platform/disc/virtual_cd.h"
#include "platform/disc/virtual_recorder.h"

namespace ts5 {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr auto kSettling = 12s;  // that a drive may take to know a disc
constexpr auto kSettlingPoll = 100ms;
constexpr auto kClosing = 10min;  // that a drive may take to write lead-in and lead-out
constexpr auto kBufferFull = 10s;
constexpr auto kBufferPoll = 5ms;
constexpr int kReadAttempts = 3;
constexpr int kBusyPolls = 20;
constexpr std::size_t kRoom = 256;  // for short replies
constexpr std::size_t kTextRoom = 4 + 8 * 256 * kCdTextPackBytes;
constexpr std::array<std::uint8_t, kC2Bytes> kNoErrors{};
constexpr DrivePace kNoMechanics{1ms, 0ms, 0ms};

void Sleep(std::chrono::milliseconds time) {
  std::this_thread::sleep_for(time);
}

}  // namespace

Result<CdDrive> CdDrive::Open(const std::string& path) {
  if (path == VirtualCdDirectory())
    return CdDrive(WithSupport(OpenVirtualCd(), VirtualCdName().Whole(), true), kNoMechanics);
  if (path == VirtualRecorderDirectory()) {
    const RecorderTime time = RecorderTimeOfEnvironment();
    return CdDrive(WithSupport(OpenVirtualRecorder(time), VirtualRecorderName().Whole(), true),
                   time == RecorderTime::Real ? DrivePace{} : kNoMechanics);
  }
  auto transport = OpenScsiDevice(path);
  if (!transport) return Failure(transport.error());
  return CdDrive(WithSupport(*std::move(transport), path, false));
}

ScsiReply CdDrive::Execute(const Cdb& cdb, std::span<std::uint8_t> in, ByteView out) {
  const ScsiReply reply = transport_->Send({cdb, in, out, cdb.Patience()});
  lastSense_ = reply.sense;
  changed_ = changed_ || (!reply.good && IsAnotherDisc(reply.sense));
  return reply;
}

Bytes CdDrive::Ask(const Cdb& cdb, std::size_t room) {
  Bytes data(room);
  const ScsiReply reply = Execute(cdb, data);
  data.resize(reply.good ? std::min(reply.transferred, room) : 0);
  return data;
}

Outcome CdDrive::Do(const Cdb& cdb, ByteView out) {
  return Execute(cdb, {}, out).good ? Outcome::Success : Outcome::CdDriveFailed;
}

Result<DriveName> CdDrive::Name() {
  const auto name = ParseInquiry(Ask(InquiryCdb(), kInquiryBytes));
  if (!name) return Failure(Outcome::CdDriveFailed);
  return *name;
}

MediaState CdDrive::State() {
  const ScsiReply reply = Execute(TestUnitReadyCdb());
  if (reply.good) return MediaState::Ready;
  if (reply.sense.code == sense::kNoMedium) return MediaState::NoMedium;
  return reply.sense.key == sense::kUnitAttention ? MediaState::UnitAttention : MediaState::NotReady;
}

Outcome CdDrive::WaitUntilReady(std::chrono::milliseconds patience, const CancelCheck& cancelled) {
  const auto end = std::chrono::steady_clock::now() + patience;
  for (MediaState state = State(); state != MediaState::Ready; state = State()) {
    if (cancelled && cancelled()) return Outcome::Cancelled;
    if (state == MediaState::NoMedium || std::chrono::steady_clock::now() > end)
      return Outcome::CdDriveFailed;
    Sleep(std::min<std::chrono::milliseconds>(kSettlingPoll, pace_.poll));
  }
  return Outcome::Success;
}

Result<DiscToc> CdDrive::ReadToc(const CancelCheck& cancelled) {
  if (const Outcome ready = WaitUntilReady(kSettling, cancelled); Failed(ready)) return Failure(ready);
  changed_ = false;
  auto toc = DiscToc::Parse(Ask(ReadTocCdb(), kTocBytes));
  if (!toc) return Failure(Outcome::CdDriveFailed);
  return toc;
}

Result<DiscInformation> CdDrive::ReadDiscInfo() {
  const auto info = ParseDiscInformation(Ask(ReadDiscInformationCdb(kRoom), kRoom));
  if (!info) return Failure(Outcome::CdDriveFailed);
  return *info;
}

Result<TrackInformation> CdDrive::ReadTrackInformation(std::uint8_t track) {
  const auto info = ParseTrackInformation(Ask(ReadTrackInformationCdb(track, kRoom), kRoom));
  if (!info) return Failure(Outcome::CdDriveFailed);
  return *info;
}

Result<TrackInformation> CdDrive::ReadNextWritable() {
  auto info = ReadTrackInformation(kInvisibleTrack);
  if (!info) return info;
  const bool there = info->blank && info->nextWritable && *info->nextWritable >= Lba{-kPregapSectors} &&
                     *info->nextWritable < Lba{kEndOfTimes};
  if (!there) return Failure(Outcome::CdDriveFailed);
  return info;
}

std::string CdDrive::ReadCatalogue() {
  return ParseCatalogue(Ask(ReadSubChannelCdb(SubChannelFormat::Catalogue, 0, kRoom), kRoom));
}

std::string CdDrive::ReadIsrc(int track) {
  const auto number = static_cast<std::uint8_t>(track);
  return ParseIsrc(Ask(ReadSubChannelCdb(SubChannelFormat::Isrc, number, kRoom), kRoom));
}

CdText CdDrive::ReadCdText() {
  const Bytes reply = Ask(ReadTocCdb(TocFormat::CdText, 0, kTextRoom), kTextRoom);
  constexpr std::size_t kHeader = 4;
  return reply.size() < kHeader ? CdText{} : ParseCdText(ByteView(reply).subspan(kHeader));
}

Outcome CdDrive::ReadPortion(Lba address, std::span<std::uint8_t> out, const CancelCheck& cancelled) {
  const auto count = static_cast<std::uint32_t>(out.size() / kAudioSectorBytes);
  for (int attempt = 0; attempt < kReadAttempts; ++attempt) {
    if (changed_) break;
    if (attempt > 0 && cancelled && cancelled()) return Outcome::Cancelled;
    const ScsiReply reply = Execute(ReadCdAudioCdb(address, count), out);
    if (reply.good && reply.transferred == out.size()) return Outcome::Success;
  }
  return Outcome::ReadFailed;
}

Outcome CdDrive::ReadCdAudio(Lba address, std::span<std::uint8_t> out, const CancelCheck& cancelled) {
  while (!out.empty()) {
    const auto count = std::min<std::size_t>(out.size() / kAudioSectorBytes, kSectorsPerCommand);
    if (count == 0) return Outcome::InvalidParameter;
    const auto part = out.first(count * kAudioSectorBytes);
    if (const Outcome read = ReadPortion(address, part, cancelled); Failed(read)) return read;
    address = address + static_cast<std::int32_t>(count);
    out = out.subspan(part.size());
  }
  return Outcome::Success;
}

Outcome CdDrive::ReadCdAudioChecked(Lba address, std::span<std::uint8_t> out, std::vector<bool>& sound) {
  constexpr std::size_t kStride = kAudioSectorBytes + kC2Bytes;
  if (changed_) return Outcome::ReadFailed;
  const std::size_t count = out.size() / kAudioSectorBytes;
  Bytes both(count * kStride);
  const ScsiReply reply = Execute(ReadCdAudioCdb(address, static_cast<std::uint32_t>(count), true), both);
  if (!reply.good || reply.transferred != both.size()) return Outcome::ReadFailed;
  sound.assign(count, true);
  for (std::size_t i = 0; i < count; ++i) {
    const auto sector = ByteView(both).subspan(i * kStride, kStride);
    std::ranges::copy(sector.first(kAudioSectorBytes),
                      out.begin() + static_cast<std::ptrdiff_t>(i * kAudioSectorBytes));
    sound[i] = std::ranges::equal(sector.last(kC2Bytes), kNoErrors);
  }
  return Outcome::Success;
}

Result<SubChannelPosition> CdDrive::PlayAndPosition(Lba address) {
  if (changed_ || Failed(Do(PlayAudioCdb(address, 1)))) return Failure(Outcome::CdDriveFailed);
  for (int poll = 0; poll < kBusyPolls; ++poll) {
    const auto state = ParseMechanismStatus(Ask(MechanismStatusCdb(), 8));
    if (!state || !state->busy) break;
    Sleep(std::min<std::chrono::milliseconds>(pace_.poll, 50ms));
  }
  const auto position = ParsePosition(Ask(ReadSubChannelCdb(SubChannelFormat::Position, 0, kRoom), kRoom));
  if (!position) return Failure(Outcome::CdDriveFailed);
  return *position;
}

void CdDrive::SetAudioMute(bool mute) {
  Bytes reply = Ask(ModeSense10Cdb(kAudioControlPage, kRoom), kRoom);
  const ByteView page = FindModePage10(reply, kAudioControlPage);
  constexpr std::size_t kFirstVolume = 9;  // of four ports, each a selection and a volume
  constexpr std::size_t kPageBytes = 16;
  if (page.size() < kPageBytes) return;
  Bytes data = ModeSelectData(page);
  for (std::size_t port = 0; port < 2; ++port) data[8 + kFirstVolume + 2 * port] = mute ? 0 : 0xFF;
  (void)Do(ModeSelect10Cdb(static_cast<std::uint16_t>(data.size())), data);
}

Result<DriveCapabilities> CdDrive::ReadCapabilities() {
  constexpr std::uint8_t kShortRoom = 0xFF;
  const Bytes reply = Ask(ModeSense6Cdb(kCapabilitiesPage, kShortRoom), kShortRoom);
  auto capabilities = ParseCapabilities(FindModePage6(reply, kCapabilitiesPage));
  if (!capabilities) {
    // Newer drives know the long form only.
    const Bytes longer = Ask(ModeSense10Cdb(kCapabilitiesPage, kRoom), kRoom);
    capabilities = ParseCapabilities(FindModePage10(longer, kCapabilitiesPage));
  }
  if (!capabilities) return Failure(Outcome::CdDriveFailed);
  return *capabilities;
}

Outcome CdDrive::SetSpeed(std::uint32_t factor) {
  return Do(SetCdSpeedCdb(factor));
}

Outcome CdDrive::Eject() {
  PreventRemoval(false);
  return Do(EjectCdb());
}

Outcome CdDrive::Load() {
  return Do(LoadCdb());
}

void CdDrive::PreventRemoval(bool prevent) {
  (void)Do(PreventRemovalCdb(prevent));
}

Outcome CdDrive::SendOpc() {
  return Do(SendOpcCdb());
}

Outcome CdDrive::SetWriteParameters(const WriteParameters& parameters) {
  const Bytes reply = Ask(ModeSense10Cdb(kWriteParametersPage, kRoom), kRoom);
  const ByteView page = FindModePage10(reply, kWriteParametersPage);
  if (!ParseWriteParameters(page)) return Outcome::InvalidParameter;
  Bytes ours(page.begin(), page.end());
  PutWriteParameters(parameters, ours);
  const Bytes data = ModeSelectData(ours);
  return Do(ModeSelect10Cdb(static_cast<std::uint16_t>(data.size())), data);
}

Outcome CdDrive::SendCueSheet(ByteView entries) {
  return Do(SendCueSheetCdb(static_cast<std::uint32_t>(entries.size())), entries);
}

Outcome CdDrive::WriteSectors(Lba address, ByteView data, std::size_t sectorBytes) {
  const auto count = static_cast<std::uint16_t>(data.size() / sectorBytes);
  const auto end = std::chrono::steady_clock::now() + kBufferFull;
  for (;;) {
    if (Execute(WriteCdb(address, count), {}, data).good) return Outcome::Success;
    if (lastSense_ != sense::kLongWriteInProgress || std::chrono::steady_clock::now() > end)
      return Outcome::CdDriveFailed;
    Sleep(kBufferPoll);
  }
}

Outcome CdDrive::SynchronizeCache() {
  const auto end = std::chrono::steady_clock::now() + kClosing;
  while (Failed(Do(SynchronizeCacheCdb()))) {
    if (ActionFor(lastSense_) != SenseAction::Wait || std::chrono::steady_clock::now() > end)
      return Outcome::CdDriveFailed;
    Sleep(pace_.poll);
  }
  return Outcome::Success;
}

Outcome CdDrive::Close(CloseWhat what, int track) {
  if (Failed(Do(CloseTrackSessionCdb(what, static_cast<std::uint8_t>(track))))) return Outcome::CdDriveFailed;
  const auto end = std::chrono::steady_clock::now() + kClosing;
  while (State() != MediaState::Ready) {
    if (ActionFor(lastSense_) == SenseAction::GiveUp || std::chrono::steady_clock::now() > end)
      return Outcome::CdDriveFailed;
    Sleep(pace_.poll);
  }
  return Outcome::Success;
}

Outcome CdDrive::Blank(BlankType type) {
  return Do(BlankCdb(type));
}

std::vector<CdDriveEntry> ScanDrives() {
  std::vector<CdDriveEntry> drives;
  for (std::string& path : CdDeviceFiles()) {
    auto drive = CdDrive::Open(path);
    const auto name = drive ? drive->Name() : Failure(Outcome::SourceFailed);
    if (name) drives.push_back({std::move(path), *name});
  }
  drives.push_back({VirtualCdDirectory(), VirtualCdName()});
  drives.push_back({VirtualRecorderDirectory(), VirtualRecorderName()});
  return drives;
}

std::vector<CdDriveEntry> CdWriters() {
  std::vector<CdDriveEntry> writers = ScanDrives();
  std::erase_if(writers, [](const CdDriveEntry& entry) {
    auto drive = CdDrive::Open(entry.path);
    const auto capabilities = drive ? drive->ReadCapabilities() : Failure(Outcome::SourceFailed);
    return !capabilities || !(capabilities->writesCdR || capabilities->writesCdRw);
  });
  return writers;
}

bool IsVirtualDrive(const std::string& path) {
  return path == VirtualCdDirectory() || path == VirtualRecorderDirectory();
}

}  // namespace ts5
