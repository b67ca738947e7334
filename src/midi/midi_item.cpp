#include "midi/midi_item.h"

#include <array>
#include <utility>

#include "platform/files/input_file.h"

namespace ts5 {

Result<std::unique_ptr<PreparedItem>> OpenMidiItem(const std::string& source, std::uint64_t limit) {
  const auto file = InputFile::Open(source);
  if (!file) return Failure(file.error());
  std::array<std::uint8_t, kMidiDetectionSize> beginning{};
  const auto read = file->ReadAt(0, beginning);
  if (!read) return Failure(Outcome::SourceFailed);
  auto item = std::make_unique<MidiItem>();
  item->kind = DetectMidiKind(ByteView(beginning).first(*read)).kind;
  if (item->kind == MidiFileKind::None) return Failure(Outcome::WrongFormat);
  auto bytes = file->ReadAll(limit);
  if (!bytes) return Failure(bytes.error());
  item->file = *std::move(bytes);
  return item;
}

}  // namespace ts5
