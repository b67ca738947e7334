// The tags of one file behind a common face; each kind of tag is a file of its own.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "audio/tags/attribute.h"

namespace ts5::tags {

class TagStream;

class TagStore {
 public:
  virtual ~TagStore() = default;
  [[nodiscard]] virtual Attributes Read() const = 0;
  // Only this attribute changes. False: the format has no place for it.
  [[nodiscard]] virtual bool Set(const Attribute& attribute) = 0;
  virtual void Remove(const std::string& name) = 0;
  // Writes what was changed into the stream, and nothing else of the file.
  [[nodiscard]] virtual bool Save() = 0;
};

// Each takes a file of its own kind and gives nothing when it is damaged. The stream outlives the store.
[[nodiscard]] std::unique_ptr<TagStore> OpenAsfTags(TagStream& stream);
[[nodiscard]] std::unique_ptr<TagStore> OpenApeTags(TagStream& stream);
[[nodiscard]] std::unique_ptr<TagStore> OpenWavPackTags(TagStream& stream);
[[nodiscard]] std::unique_ptr<TagStore> OpenInfoTags(TagStream& stream);
[[nodiscard]] std::unique_ptr<TagStore> OpenFlacTags(TagStream& stream);
[[nodiscard]] std::unique_ptr<TagStore> OpenVorbisTags(TagStream& stream);
[[nodiscard]] std::unique_ptr<TagStore> OpenOpusTags(TagStream& stream);
[[nodiscard]] std::unique_ptr<TagStore> OpenMp4Tags(TagStream& stream);
// newVersion: 3 or 4, of an ID3v2 tag that the file does not have yet.
[[nodiscard]] std::unique_ptr<TagStore> OpenAiffTags(TagStream& stream, unsigned newVersion);
[[nodiscard]] std::unique_ptr<TagStore> OpenId3Tags(TagStream& stream, unsigned newVersion);

}  // namespace ts5::tags
