// The packets of one stream of an Ogg file, page by page.
#pragma once

#include <ogg/ogg.h>

#include <cstdint>

#include "platform/base/outcome.h"
#include "platform/files/input_file.h"

namespace ts5 {

class OggPages {
 public:
  // The file lives longer.
  OggPages(const InputFile& file, int serial);
  ~OggPages();
  OggPages(const OggPages&) = delete;
  OggPages& operator=(const OggPages&) = delete;

  // The next page of the stream; false at the end of the file. ReadFailed, OutOfMemory.
  [[nodiscard]] Result<bool> Next();
  // The next packet that is whole; its bytes stay until the next call.
  [[nodiscard]] bool Packet(ogg_packet& packet);
  // Frames up to the end of the page; negative where no packet ends on it.
  [[nodiscard]] std::int64_t Position() const { return position_; }
  // Whether the page calls itself the last one; in a damaged file others may follow.
  [[nodiscard]] bool IsLast() const { return last_; }

 private:
  [[nodiscard]] Result<bool> ReadMore();

  const InputFile& file_;
  std::uint64_t at_ = 0;
  ogg_sync_state sync_{};
  ogg_stream_state stream_{};
  std::int64_t position_ = -1;
  bool last_ = false;
};

}  // namespace ts5
