// What all drives that are made of files have in common: they take commands apart, refuse what a drive
// refuses, and answer everything that reads a disc.
#pragma once

#include <optional>

#include "platform/base/bytes.h"
#include "platform/base/outcome.h"
#include "platform/disc/disc_layout.h"
#include "platform/disc/mmc_commands.h"
#include "platform/disc/mmc_replies.h"
#include "platform/disc/scsi_transport.h"
#include "platform/disc/sense.h"

namespace ts5 {

class VirtualDrive : public ScsiTransport {
 public:
  explicit VirtualDrive(DriveName name) : name_(std::move(name)) {}
  [[nodiscard]] ScsiReply Send(const ScsiCommand& command) final;

 protected:
  // The disc that can be read; nullptr: there is none, or it is blank.
  [[nodiscard]] virtual const DiscLayout* Layout() = 0;
  // Whole audio sectors that the layout has. ReadFailed; InvalidParameter: sectors of data.
  [[nodiscard]] virtual Outcome ReadAudio(Lba address, std::span<std::uint8_t> out) = 0;
  // Before every command but INQUIRY: what the drive has to say first, e.g. that the disc was changed.
  [[nodiscard]] virtual std::optional<SenseData> Attention() { return std::nullopt; }
  // Whether there is a disc: TEST UNIT READY.
  [[nodiscard]] virtual std::optional<SenseData> NotReady() = 0;
  // Commands beyond reading.
  [[nodiscard]] virtual ScsiReply Other(const MmcCommandRow& row, const ScsiCommand& command);

  [[nodiscard]] static ScsiReply Refused(SenseData sense) { return {false, sense, 0}; }
  // The bytes as far as there is room, and no more than the command's allocation length.
  [[nodiscard]] static ScsiReply Give(ByteView bytes, const ScsiCommand& command, std::size_t allocation);
  [[nodiscard]] static std::uint32_t Field(const ScsiCommand& command, std::size_t at, unsigned count);

 private:
  [[nodiscard]] ScsiReply Answer(const MmcCommandRow& row, const ScsiCommand& command);
  [[nodiscard]] ScsiReply Inquiry(const ScsiCommand& command) const;
  [[nodiscard]] ScsiReply ReadToc(const ScsiCommand& command, const DiscLayout& layout) const;
  [[nodiscard]] ScsiReply ReadCd(const ScsiCommand& command, const DiscLayout& layout);
  [[nodiscard]] ScsiReply ReadSubChannel(const ScsiCommand& command, const DiscLayout& layout) const;
  [[nodiscard]] ScsiReply Play(const ScsiCommand& command, const DiscLayout& layout);
  [[nodiscard]] ScsiReply ReadCapacity(const ScsiCommand& command, const DiscLayout& layout) const;
  [[nodiscard]] ScsiReply MechanismStatus(const ScsiCommand& command) const;

  DriveName name_;
  Lba played_ = {};  // where the last PLAY AUDIO began: time stands still in a virtual drive
};

}  // namespace ts5
