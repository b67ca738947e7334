// "ts5-batch attributes" with all that the decoders know of a file.
#include "audio/audio_file_info.h"
#include "batch/show_attributes.h"

namespace ts5::batch {

int AttributesCommand(CommandLine line, Console& console) {
  return ShowAttributes(line, console, FileInfoWith);
}

}  // namespace ts5::batch
