#include "platform/media/ogg_pages.h"

namespace ts5 {
namespace {

constexpr long kReadSize = 1 << 16;

}  // namespace

OggPages::OggPages(const InputFile& file, int serial) : file_(file) {
  ogg_sync_init(&sync_);
  ogg_stream_init(&stream_, serial);
}

OggPages::~OggPages() {
  ogg_stream_clear(&stream_);
  ogg_sync_clear(&sync_);
}

Result<bool> OggPages::Next() {
  while (true) {
    ogg_page page;
    const int found = ogg_sync_pageout(&sync_, &page);
    if (found < 0) continue;  // bytes that belong to no page are passed over
    if (found == 0) {
      const auto more = ReadMore();
      if (!more) return Failure(more.error());
      if (!*more) return false;
      continue;
    }
    if (ogg_stream_pagein(&stream_, &page) != 0) continue;  // of another stream
    position_ = ogg_page_granulepos(&page);
    last_ = ogg_page_eos(&page) != 0;
    return true;
  }
}

bool OggPages::Packet(ogg_packet& packet) {
  int got = 0;
  do {
    got = ogg_stream_packetout(&stream_, &packet);
  } while (got < 0);  // a damaged place is left out
  return got > 0;
}

Result<bool> OggPages::ReadMore() {
  char* const buffer = ogg_sync_buffer(&sync_, kReadSize);
  if (buffer == nullptr) return Failure(Outcome::OutOfMemory);
  const auto got =
      file_.ReadAt(at_, {reinterpret_cast<std::uint8_t*>(buffer), static_cast<std::size_t>(kReadSize)});
  if (!got) return Failure(got.error());
  if (*got == 0 && at_ < file_.Size()) return Failure(Outcome::ReadFailed);  // it has become shorter
  ogg_sync_wrote(&sync_, static_cast<long>(*got));
  at_ += *got;
  return *got != 0;
}

}  // namespace ts5
