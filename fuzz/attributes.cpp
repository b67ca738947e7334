// Attributes of damaged audio files: reading them, changing a copy, and reading that again; and the stored
// form of a job's attributes.
#include <cstdint>
#include <cstdlib>

#include "audio/tags/attribute_store.h"
#include "audio/tags/tag_file.h"
#include "platform/files/files.h"

namespace {

using namespace ts5;
using namespace ts5::tags;

// What a job stores comes back as it is.
void StoreAgain(std::string_view text) {
  RegistryValues values;
  values.SetText("FileAttribute001", text);
  values.SetText("FileAttributeNum", "1");
  const Attributes attributes = LoadAttributes(values);
  RegistryValues again;
  SaveAttributes(attributes, again);
  if (LoadAttributes(again) != attributes) abort();
}

std::string Scratch() {
  static const auto temporary = TemporaryFile::Create("sTS5", "", ".mp3");
  if (!temporary) abort();
  return temporary->Path();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1) return 0;
  const ByteView bytes(data + 1, size - 1);
  if (data[0] % 8 == 0) {
    StoreAgain(AsText(bytes));
    return 0;
  }
  const std::string path = Scratch();
  if (Failed(WriteFile(path, bytes))) return 0;
  const auto there = ReadAttributes(path);
  if (!there) return 0;
  for (const Attribute& attribute : *there) (void)DisplayValue(attribute);
  AttributeChanges changes;
  changes.set.push_back({AttributeType::String, "Title", "Neu", false, true});
  if (!there->empty()) changes.remove.push_back(there->front().name);
  (void)ChangeAttributesInPlace(path, changes, 3 + data[0] % 2);
  return 0;
}
