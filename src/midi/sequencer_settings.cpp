// The settings block of the sequencer as it stands after a fresh installation. Nothing here reads it; what
// its fields mean is the sequencer's business.
#include <algorithm>
#include <cstdint>

#include "midi/midi_containers.h"

namespace ts5 {

namespace {

// Little-endian 32-bit values; everything else is zero but the ranges below.
struct SettingsValue {
  std::uint16_t offset;
  std::uint32_t value;
};
constexpr SettingsValue kValues[] = {
    {0x000, 1},       {0x008, 1},       {0x00C, 1},          {0x010, 1},       {0x01C, 9},
    {0x020, 42},      {0x024, 63},      {0x144, 1},          {0x148, 1},       {0x15C, 9999},
    {0x160, 1},       {0x1F4, 1},       {0x1FC, 9},          {0x290, 1},       {0x294, 1},
    {0x2A8, 2},       {0x2AC, 1},       {0x340, 1},          {0x344, 1},       {0x358, 9999},
    {0x35C, 1},       {0x36C, 4},       {0x378, 1},          {0x384, 100},     {0x388, 100},
    {0x38C, 50},      {0x410, 1},       {0x414, 1},          {0x420, 1},       {0x424, 1},
    {0x438, 9999},    {0x43C, 1},       {0x450, 1},          {0x454, 1},       {0x464, 1},
    {0x4EC, 1},       {0x4F0, 1},       {0x504, 9999},       {0x508, 1},       {0x5E8, 44},
    {0x5F0, 1},       {0x608, 420},     {0x60C, 653},        {0x610, 506},     {0x798, 1},
    {0x79C, 1},       {0x82C, 200},     {0x830, 1},          {0x840, 44},      {0x848, 1},
    {0x864, 600},     {0x868, 400},     {0xC80, 0xFFFFFFFF}, {0x1988, 0xFFFF}, {0x198C, 0xFFFF},
    {0x1990, 0x7FFF}, {0x19A4, 0xFFFF},
};

struct SettingsRange {
  std::uint16_t offset;
  std::uint16_t size;
  std::uint8_t value;
};
constexpr SettingsRange kRanges[] = {
    {0x1094, 520, 100},
    {0x129C, 520, 64},
    {0x1994, 16, 0xFF},
};

}  // namespace

Bytes DefaultSequencerSettings() {
  ByteWriter out;
  out.Fill(kSequencerSettingsSize, 0);
  for (const auto& [offset, value] : kValues) out.PatchU32Le(offset, value);
  Bytes block = out.Release();
  for (const auto& range : kRanges) std::fill_n(block.begin() + range.offset, range.size, range.value);
  return block;
}

}  // namespace ts5
