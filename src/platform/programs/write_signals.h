// Writes that cannot be done: by default a file beyond the allowed size (SIGXFSZ) or a reader that went away
// (SIGPIPE) ends the whole program; as errors of the one write they are met like a full disk.
#pragma once

namespace ts5 {

// From now on such writes fail with their error code. Called once, at the beginning of main; programs that
// are started later find both signals as this program found them.
void TurnWriteSignalsIntoErrors();

}  // namespace ts5
