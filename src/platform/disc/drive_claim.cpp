#include "platform/disc/drive_claim.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <utility>

namespace ts5 {

Result<DriveClaim> DriveClaim::Take(const std::string& drive) {
  FileDescriptor lock(::open(drive.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  if (!lock) return Failure(Outcome::SourceFailed);
  if (::flock(lock.Get(), LOCK_EX | LOCK_NB) != 0)
    return Failure(errno == EWOULDBLOCK ? Outcome::InUse : Outcome::SourceFailed);
  return DriveClaim(std::move(lock));
}

}  // namespace ts5
