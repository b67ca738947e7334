#include "frame/sequencer_magic.h"

#include <string_view>

#include "platform/files/file_patch.h"

namespace ts5 {
namespace {

constexpr std::string_view kMidiMagic = "MThd";
constexpr std::string_view kSequencerMagic = "RDL3";
constexpr std::string_view kScoreVariantMagic = "STVR";

MagicSwap SwapFor(std::string_view magic) {
  if (magic == kSequencerMagic) return MagicSwap::Sequencer;
  return magic == kScoreVariantMagic ? MagicSwap::ScoreVariant : MagicSwap::None;
}

}  // namespace

Outcome SwapSequencerMagic(const std::string& path, MagicSwap& swap) {
  const auto file = FilePatch::Open(path);
  if (!file) return file.error();
  const auto magic = file->ReadAt(0, kMidiMagic.size());
  if (!magic) return magic.error();

  std::string_view written = kMidiMagic;
  MagicSwap next = MagicSwap::None;
  if (swap == MagicSwap::None) {
    next = SwapFor(AsText(*magic));
    if (next == MagicSwap::None) return Outcome::WrongFormat;
  } else {
    written = swap == MagicSwap::Sequencer ? kSequencerMagic : kScoreVariantMagic;
  }
  const Outcome outcome = file->WriteAt(0, AsBytes(written));
  if (Succeeded(outcome)) swap = next;
  return outcome;
}

}  // namespace ts5
