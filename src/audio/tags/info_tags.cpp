// The list INFO of RIFF WAVE files; texts are Windows-1252 there. An ID3v2 tag in the file is kept in step.
#include <taglib/infotag.h>
#include <taglib/wavfile.h>

#include "audio/tags/id3_frames.h"
#include "audio/tags/tag_keys.h"
#include "audio/tags/tag_store.h"
#include "audio/tags/tag_stream.h"
#include "platform/base/text.h"

namespace ts5::tags {
namespace {

class InfoTexts final : public TagLib::RIFF::Info::StringHandler {
 public:
  TagLib::String parse(const TagLib::ByteVector& data) const override {
    std::string text(data.data(), data.size());
    text.resize(std::min(text.size(), text.find('\0')));
    return ToTag(IsUtf8(text) ? text : Utf8FromWindows1252(text));
  }
  TagLib::ByteVector render(const TagLib::String& text) const override {
    const std::string bytes = Windows1252FromUtf8(FromTag(text));
    return {bytes.data(), static_cast<unsigned>(bytes.size())};
  }
};

class InfoTags : public TagStore {
 public:
  explicit InfoTags(TagStream& stream) : file_(&stream, false), stream_(stream) {}

  [[nodiscard]] bool IsValid() const { return file_.isValid(); }

  [[nodiscard]] Attributes Read() const override {
    Attributes attributes;
    for (const auto& [id, value] : file_.InfoTag()->fieldListMap())
      AddKeyed(attributes, &AttributeName::info, std::string(id.data(), id.size()), FromTag(value));
    // INFO cuts what it has no characters for: what ID3 says is what was meant.
    if (!file_.hasID3v2Tag()) return attributes;
    for (Attribute& attribute : ReadId3(*file_.ID3v2Tag())) {
      if (Attribute* const there = FindAttribute(attributes, attribute.name)) {
        *there = std::move(attribute);
      } else {
        attributes.push_back(std::move(attribute));
      }
    }
    return attributes;
  }

  [[nodiscard]] bool Set(const Attribute& attribute) override {
    const auto id = ChunkOf(attribute.name);
    const bool inId3 = file_.hasID3v2Tag() && SetId3(*file_.ID3v2Tag(), attribute, 3);
    if (IsBinary(attribute.type) || id.isEmpty()) return inId3;
    file_.InfoTag()->setFieldText(id, ToTag(CommentValue(attribute)));
    return true;
  }

  void Remove(const std::string& name) override {
    const auto id = ChunkOf(name);
    if (!id.isEmpty()) file_.InfoTag()->removeField(id);
    if (file_.hasID3v2Tag()) RemoveId3(*file_.ID3v2Tag(), name);
  }

  [[nodiscard]] bool Save() override {
    using File = TagLib::RIFF::WAV::File;
    const auto tags = file_.hasID3v2Tag() ? File::AllTags : File::Info;
    return file_.save(tags, TagLib::File::StripNone, TagLib::ID3v2::v3) && !stream_.HasFailed();
  }

 private:
  // The chunk of the name, or the name itself where it is one of four letters.
  static TagLib::ByteVector ChunkOf(std::string_view name) {
    const AttributeName* const known = FindAttributeName(name);
    const std::string_view id = known != nullptr ? known->info : name;
    if (id.size() != 4) return {};
    return {id.data(), 4};
  }

  TagLib::RIFF::WAV::File file_;
  TagStream& stream_;
};

}  // namespace

std::unique_ptr<TagStore> OpenInfoTags(TagStream& stream) {
  static const InfoTexts handler;
  static const bool set = (TagLib::RIFF::Info::Tag::setStringHandler(&handler), true);
  (void)set;
  auto tags = std::make_unique<InfoTags>(stream);
  if (!tags->IsValid()) return nullptr;
  return tags;
}

}  // namespace ts5::tags
