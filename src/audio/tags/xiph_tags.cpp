// Comments of Ogg Vorbis, Opus and FLAC files (Xiph.Org, "Ogg Vorbis I format: comment field").
#include <taglib/flacfile.h>
#include <taglib/id3v2framefactory.h>
#include <taglib/opusfile.h>
#include <taglib/vorbisfile.h>
#include <taglib/xiphcomment.h>

#include <algorithm>

#include "audio/tags/tag_keys.h"
#include "audio/tags/tag_store.h"
#include "audio/tags/tag_stream.h"

namespace ts5::tags {
namespace {

// The names that a comment may have: printable ASCII without the equals sign.
bool IsKey(std::string_view key) {
  return !key.empty() && std::ranges::all_of(key, [](char c) { return c >= ' ' && c <= '}' && c != '='; });
}

template <typename File>
class XiphTags : public TagStore {
 public:
  XiphTags(TagStream& stream, auto... arguments) : file_(&stream, arguments...), stream_(stream) {}

  [[nodiscard]] TagLib::Ogg::XiphComment* Comment() const {
    if (!file_.isValid()) return nullptr;
    if constexpr (std::is_same_v<File, TagLib::FLAC::File>) {
      return const_cast<File&>(file_).xiphComment(true);
    } else {
      return file_.tag();
    }
  }

  [[nodiscard]] Attributes Read() const override {
    Attributes attributes;
    for (const auto& [key, values] : Comment()->fieldListMap())
      AddKeyed(attributes, &AttributeName::comment, FromTag(key), Joined(values));
    return attributes;
  }

  [[nodiscard]] bool Set(const Attribute& attribute) override {
    if (IsBinary(attribute.type)) return false;
    for (const std::string& key : KeysOf(&AttributeName::comment, attribute.name)) {
      if (!IsKey(key)) return false;
      Comment()->addField(ToTag(key), ToTag(CommentValue(attribute)), true);
    }
    return true;
  }

  void Remove(const std::string& name) override {
    for (const std::string& key : KeysOf(&AttributeName::comment, name)) Comment()->removeFields(ToTag(key));
  }

  [[nodiscard]] bool Save() override { return file_.save() && !stream_.HasFailed(); }

 private:
  File file_;
  TagStream& stream_;
};

template <typename File>
std::unique_ptr<TagStore> OpenXiph(TagStream& stream, auto... arguments) {
  auto tags = std::make_unique<XiphTags<File>>(stream, arguments...);
  if (tags->Comment() == nullptr) return nullptr;
  return tags;
}

}  // namespace

std::unique_ptr<TagStore> OpenVorbisTags(TagStream& stream) {
  return OpenXiph<TagLib::Ogg::Vorbis::File>(stream, false);
}
std::unique_ptr<TagStore> OpenOpusTags(TagStream& stream) {
  return OpenXiph<TagLib::Ogg::Opus::File>(stream, false);
}
std::unique_ptr<TagStore> OpenFlacTags(TagStream& stream) {
  return OpenXiph<TagLib::FLAC::File>(stream, TagLib::ID3v2::FrameFactory::instance(), false);
}

}  // namespace ts5::tags
