// Runs an encoder of the command line for one file.
#pragma once

#include <string>

#include "audio/interfaces/encoder_interface.h"
#include "platform/base/outcome.h"
#include "platform/base/work_watch.h"
#include "platform/files/files.h"

namespace ts5::interfaces {

// A wave or AIFF file, and how long it plays.
struct EncoderInput {
  std::string path;
  double seconds = 0;
};

// Encodes it into a staged file of the caller's, which is not committed here. The program
// makes its file under another name in the target's directory, with the interface's extension; its output
// leads nowhere, and nothing that it started outlives it. Progress is the running time within the source's
// duration, again and again.
//
// InvalidParameter: no such set, or one without
// placeholders. EncoderNotStarted. TargetFailed: it made no file. EncoderFailed: it made one and failed all
// the same; the staged file holds it, to be kept. Cancelled. WriteFailed.
[[nodiscard]] Outcome RunEncoder(const EncoderInterface& interface, std::size_t set,
                                 const EncoderInput& source, StagedFile& target, const WorkWatch& watch = {});

}  // namespace ts5::interfaces
