#include "platform/store/registry_query.h"

namespace ts5 {

Outcome SqlOutcome(int code) {
  switch (code & 0xFF) {
    case SQLITE_OK:
    case SQLITE_ROW:
    case SQLITE_DONE:
      return Outcome::Success;
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      return Outcome::InUse;
    case SQLITE_NOMEM:
      return Outcome::OutOfMemory;
    case SQLITE_NOTADB:
    case SQLITE_CORRUPT:
    case SQLITE_ERROR:  // a table that is not ours
      return Outcome::WrongFormat;
    case SQLITE_READONLY:
    case SQLITE_CANTOPEN:
    case SQLITE_PERM:
    case SQLITE_AUTH:
      return Outcome::TargetFailed;
    case SQLITE_IOERR:
      return code == SQLITE_IOERR_READ || code == SQLITE_IOERR_SHORT_READ ? Outcome::ReadFailed
                                                                          : Outcome::WriteFailed;
    default:
      return Outcome::WriteFailed;
  }
}

}  // namespace ts5
