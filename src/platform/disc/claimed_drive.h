// A drive that is open and that nobody else may use as long as this lives.
#pragma once

#include <string>

#include "platform/base/outcome.h"
#include "platform/disc/cd_drive.h"
#include "platform/disc/drive_claim.h"

namespace ts5 {

struct ClaimedDrive {
  DriveClaim claim;
  CdDrive drive;

  // Codes of DriveClaim::Take and CdDrive::Open.
  [[nodiscard]] static Result<ClaimedDrive> Open(const std::string& path);
  // The same, and waits a moment for one who only looks whether there is a disc.
  [[nodiscard]] static Result<ClaimedDrive> OpenSoon(const std::string& path);
};

}  // namespace ts5
