#include "platform/disc/claimed_drive.h"

#include <utility>

namespace ts5 {
namespace {

Result<ClaimedDrive> OpenWith(Result<DriveClaim> claim, const std::string& path) {
  if (!claim) return Failure(claim.error());
  auto drive = CdDrive::Open(path);
  if (!drive) return Failure(drive.error());
  return ClaimedDrive{*std::move(claim), *std::move(drive)};
}

}  // namespace

Result<ClaimedDrive> ClaimedDrive::Open(const std::string& path) {
  return OpenWith(DriveClaim::Take(path), path);
}

Result<ClaimedDrive> ClaimedDrive::OpenSoon(const std::string& path) {
  return OpenWith(DriveClaim::TakeSoon(path), path);
}

}  // namespace ts5
