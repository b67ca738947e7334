#include "platform/disc/drive_claim.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <chrono>
#include <thread>
#include <utility>

namespace ts5 {
namespace {

constexpr int kAttempts = 20;
constexpr auto kBetween = std::chrono::milliseconds(15);

}  // namespace

Result<DriveClaim> DriveClaim::Take(const std::string& drive) {
  FileDescriptor lock(::open(drive.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  if (!lock) return Failure(Outcome::SourceFailed);
  if (::flock(lock.Get(), LOCK_EX | LOCK_NB) != 0)
    return Failure(errno == EWOULDBLOCK ? Outcome::InUse : Outcome::SourceFailed);
  return DriveClaim(std::move(lock));
}

Result<DriveClaim> DriveClaim::TakeSoon(const std::string& drive) {
  auto claim = Take(drive);
  for (int attempt = 1; attempt < kAttempts && !claim && claim.error() == Outcome::InUse; ++attempt) {
    std::this_thread::sleep_for(kBetween);
    claim = Take(drive);
  }
  return claim;
}

}  // namespace ts5
