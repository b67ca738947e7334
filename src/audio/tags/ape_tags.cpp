// APEv2 tags of Monkey's Audio and WavPack files, and the ID3v1 tag behind them where there is one.
#include <taglib/apefile.h>
#include <taglib/apetag.h>
#include <taglib/id3v1tag.h>
#include <taglib/wavpackfile.h>

#include "audio/tags/tag_keys.h"
#include "audio/tags/tag_store.h"
#include "audio/tags/tag_stream.h"

namespace ts5::tags {
namespace {

template <typename File>
class ApeTags : public TagStore {
 public:
  explicit ApeTags(TagStream& stream) : file_(&stream, false), stream_(stream) {}

  [[nodiscard]] bool IsValid() const { return file_.isValid(); }

  [[nodiscard]] Attributes Read() const override {
    Attributes attributes;
    const TagLib::APE::Tag* const tag = const_cast<File&>(file_).APETag(true);
    for (const auto& [key, item] : tag->itemListMap()) {
      if (item.type() == TagLib::APE::Item::Text)
        AddKeyed(attributes, &AttributeName::ape, FromTag(item.key()), Joined(item.values()));
    }
    if (attributes.empty() && file_.hasID3v1Tag()) ReadVersion1(attributes);
    return attributes;
  }

  [[nodiscard]] bool Set(const Attribute& attribute) override {
    if (IsBinary(attribute.type)) return false;
    for (const std::string& key : KeysOf(&AttributeName::ape, attribute.name)) {
      if (!TagLib::APE::Tag::checkKey(ToTag(key))) return false;
      file_.APETag(true)->addValue(ToTag(key), ToTag(CommentValue(attribute)), true);
    }
    return true;
  }

  void Remove(const std::string& name) override {
    for (const std::string& key : KeysOf(&AttributeName::ape, name))
      file_.APETag(true)->removeItem(ToTag(key));
  }

  [[nodiscard]] bool Save() override {
    if (file_.hasID3v1Tag()) TagLib::Tag::duplicate(file_.APETag(true), file_.ID3v1Tag(), true);
    return file_.save() && !stream_.HasFailed();
  }

 private:
  void ReadVersion1(Attributes& attributes) const {
    const TagLib::ID3v1::Tag* const tag = const_cast<File&>(file_).ID3v1Tag();
    const std::pair<std::string_view, TagLib::String> fields[] = {
        {"Title", tag->title()},     {"Artist", tag->artist()}, {"Album", tag->album()},
        {"Comment", tag->comment()}, {"Genre", tag->genre()},
    };
    for (const auto& [key, value] : fields) {
      if (!value.isEmpty()) AddKeyed(attributes, &AttributeName::ape, key, FromTag(value));
    }
    if (tag->year() > 0) AddKeyed(attributes, &AttributeName::ape, "Year", std::to_string(tag->year()));
    if (tag->track() > 0) AddKeyed(attributes, &AttributeName::ape, "Track", std::to_string(tag->track()));
  }

  File file_;
  TagStream& stream_;
};

template <typename File>
std::unique_ptr<TagStore> Open(TagStream& stream) {
  auto tags = std::make_unique<ApeTags<File>>(stream);
  if (!tags->IsValid()) return nullptr;
  return tags;
}

}  // namespace

std::unique_ptr<TagStore> OpenApeTags(TagStream& stream) {
  return Open<TagLib::APE::File>(stream);
}
std::unique_ptr<TagStore> OpenWavPackTags(TagStream& stream) {
  return Open<TagLib::WavPack::File>(stream);
}

}  // namespace ts5::tags
