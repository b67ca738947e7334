#include "platform/disc/scsi_generic.h"

#include <fcntl.h>
#include <scsi/sg.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <limits>
#include <utility>

namespace ts5 {
namespace {

constexpr std::size_t kSenseBytes = 64;
constexpr unsigned char kCheckCondition = 0x02;

// Sense data stand at fixed places (response codes 70 and 71) or in descriptors (72 and 73).
SenseData ParseSense(std::span<const std::uint8_t> bytes) {
  if (bytes.size() < 4) return {};
  const unsigned response = bytes[0] & 0x7FU;
  if (response == 0x72 || response == 0x73)
    return {static_cast<std::uint8_t>(bytes[1] & 0x0F), bytes[2], bytes[3]};
  if (response != 0x70 && response != 0x71) return {};
  SenseData sense{static_cast<std::uint8_t>(bytes[2] & 0x0F), 0, 0};
  if (bytes.size() >= 14) {
    sense.code = bytes[12];
    sense.qualifier = bytes[13];
  }
  return sense;
}

class ScsiGenericTransport final : public ScsiTransport {
 public:
  ScsiGenericTransport(FileDescriptor descriptor, ScsiCall call)
      : descriptor_(std::move(descriptor)), call_(std::move(call)) {}

  ScsiReply Send(const ScsiCommand& command) override {
    const std::size_t size = command.in.size() + command.out.size();
    const bool oneWay = command.in.empty() || command.out.empty();
    if (command.cdb.size() > cdb_.size() || size > std::numeric_limits<int>::max() || !oneWay) return {};
    std::ranges::copy(command.cdb, cdb_.begin());
    std::array<std::uint8_t, kSenseBytes> sense{};
    sg_io_hdr request{};
    request.interface_id = 'S';
    request.dxfer_direction = SG_DXFER_NONE;
    if (!command.in.empty()) {
      request.dxfer_direction = SG_DXFER_FROM_DEV;
      request.dxferp = command.in.data();
    } else if (!command.out.empty()) {
      request.dxfer_direction = SG_DXFER_TO_DEV;
      // The kernel only reads these; its structure has one pointer for both ways.
      request.dxferp =
          const_cast<std::uint8_t*>(command.out.data());  // NOLINT(cppcoreguidelines-pro-type-const-cast)
    }
    request.cmd_len = static_cast<unsigned char>(command.cdb.size());
    request.cmdp = cdb_.data();
    request.dxfer_len = static_cast<unsigned>(size);
    request.mx_sb_len = static_cast<unsigned char>(sense.size());
    request.sbp = sense.data();
    request.timeout = static_cast<unsigned>(command.patience.count());

    int result = -1;
    do {
      result = call_(descriptor_.Get(), &request);
    } while (result < 0 && errno == EINTR);
    if (result < 0) return {};
    const std::size_t missing =
        request.resid > 0 ? std::min<std::size_t>(static_cast<std::size_t>(request.resid), size) : 0;
    ScsiReply reply{(request.info & SG_INFO_OK_MASK) == SG_INFO_OK, {}, size - missing};
    const bool refused = request.masked_status != 0 || (request.status & 0x3E) == kCheckCondition;
    if (!reply.good && (refused || request.sb_len_wr > 0))
      reply.sense =
          ParseSense(std::span(sense).first(std::min<std::size_t>(request.sb_len_wr, sense.size())));
    return reply;
  }

 private:
  FileDescriptor descriptor_;
  ScsiCall call_;
  std::array<std::uint8_t, 16> cdb_{};
};

}  // namespace

std::unique_ptr<ScsiTransport> ScsiGeneric(FileDescriptor descriptor, ScsiCall call) {
  return std::make_unique<ScsiGenericTransport>(std::move(descriptor), std::move(call));
}

Result<std::unique_ptr<ScsiTransport>> OpenScsiDevice(const std::string& device) {
  // Commands that write need a descriptor that may write; who may only read can still read discs.
  FileDescriptor descriptor(::open(device.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC));
  if (!descriptor) descriptor = FileDescriptor(::open(device.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  if (!descriptor) return Failure(Outcome::SourceFailed);
  return ScsiGeneric(std::move(descriptor),
                     [](int fd, void* request) { return ::ioctl(fd, SG_IO, request); });
}

}  // namespace ts5
