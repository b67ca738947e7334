// For support and tests: a trace of every command to every drive (STAVORA_SCSI_TRACE=FILE, a JSON object a
// line), and virtual drives that fail on demand (STAVORA_SCSI_FAULTS=FILE). Both formats are in
// docs/formats.md.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/bytes.h"
#include "platform/base/outcome.h"
#include "platform/disc/scsi_transport.h"

namespace ts5 {

struct ScsiFault {
  std::string drive = {};  // its whole name; "" for all
  std::uint8_t operation = 0;
  std::optional<std::int32_t> address = {};  // only commands that hold this sector
  std::uint32_t skip = 0;                    // so many fitting commands pass first
  std::uint32_t times = 1;                   // so many fail then
  std::optional<SenseData> sense = {};       // nothing: they are only late...
  std::optional<Bytes> reply = {};           // ...or succeed, and bring this instead of what the drive says
  std::chrono::milliseconds delay{0};
};
// WrongFormat: the text is no list of faults.
[[nodiscard]] Result<std::vector<ScsiFault>> ParseScsiFaults(std::string_view text);

// The drive, with what the two variables ask for around it.
[[nodiscard]] std::unique_ptr<ScsiTransport> WithSupport(std::unique_ptr<ScsiTransport> drive,
                                                         const std::string& name, bool isVirtual);
[[nodiscard]] std::unique_ptr<ScsiTransport> WithFaults(std::unique_ptr<ScsiTransport> drive,
                                                        std::vector<ScsiFault> faults);
[[nodiscard]] std::unique_ptr<ScsiTransport> WithTrace(std::unique_ptr<ScsiTransport> drive, std::string name,
                                                       const std::string& file);

}  // namespace ts5
