// MIDI files written by hand: hexadecimal text into bytes, chunks and headers around them.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

#include "midi/midi_events.h"
#include "platform/base/bytes.h"

namespace ts5::test {

// "00 FF 2F 00" -> bytes; blanks are free.
inline Bytes Hex(std::string_view text) {
  Bytes bytes;
  unsigned value = 0;
  bool half = false;
  for (const char c : text) {
    if (c == ' ' || c == '\n') continue;
    const unsigned digit =
        c <= '9' ? static_cast<unsigned>(c - '0') : static_cast<unsigned>((c | 32) - 'a' + 10);
    value = value << 4 | digit;
    if (half) bytes.push_back(static_cast<std::uint8_t>(value));
    half = !half;
    if (!half) value = 0;
  }
  return bytes;
}

// "00 FF 2F 00" from bytes, so that a difference can be read.
inline std::string Dump(ByteView bytes) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string text;
  for (const std::uint8_t byte : bytes) {
    if (!text.empty()) text += ' ';
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

inline Bytes Header(unsigned format, unsigned tracks, unsigned division, std::string_view magic = "MThd") {
  ByteWriter out;
  out.Append(magic);
  out.U32Be(6);
  out.U16Be(static_cast<std::uint16_t>(format));
  out.U16Be(static_cast<std::uint16_t>(tracks));
  out.U16Be(static_cast<std::uint16_t>(division));
  return out.Release();
}

inline Bytes Join(std::initializer_list<Bytes> parts) {
  Bytes all;
  for (const Bytes& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

inline Bytes Track(ByteView events) {
  ByteWriter out;
  out.Append("MTrk");
  out.U32Be(static_cast<std::uint32_t>(events.size()));
  out.Append(events);
  return out.Release();
}
inline Bytes Track(std::string_view hex) {
  return Track(Hex(hex));
}

// A RIFF form RMID with nothing but its data chunk.
inline Bytes Riff(ByteView midi) {
  ByteWriter out;
  const auto size = static_cast<std::uint32_t>(midi.size());
  out.Append("RIFF");
  out.U32Le(12 + size + size % 2);
  out.Append("RMIDdata");
  out.U32Le(size);
  out.Append(midi);
  out.Fill(size % 2, 0);
  return out.Release();
}

// "5:90 3C 40; 5:FF 51 07A120" of a whole track, with the absolute ticks; "!" at the end of a damaged one.
inline std::string Events(ByteView track) {
  std::string text;
  MidiEventCursor cursor(track);
  for (MidiEvent event; cursor.Next(event);) {
    text += (text.empty() ? "" : "; ") + std::to_string(event.tick) + ':';
    if (event.IsChannelMessage()) {
      const Bytes message = {event.status, event.data1, event.data2};
      text += Dump(ByteView(message).first(1 + ChannelDataSize(event.status)));
    } else {
      text += Dump(event.encoded);
    }
  }
  return cursor.Damaged() ? text + "!" : text;
}
inline std::string Events(std::string_view hex) {
  return Events(Hex(hex));
}

}  // namespace ts5::test
