// ID3v2 tags of MPEG files, with the ID3v1 tag behind them where there is one, and of AIFF files.
#include <taglib/aifffile.h>
#include <taglib/id3v1tag.h>
#include <taglib/id3v2header.h>
#include <taglib/mpegfile.h>

#include "audio/tags/id3_frames.h"
#include "audio/tags/tag_store.h"
#include "audio/tags/tag_stream.h"

namespace ts5::tags {
namespace {

namespace id3 = TagLib::ID3v2;

unsigned VersionOf(const id3::Tag& tag) {
  return tag.header()->majorVersion() >= 4 ? 4 : 3;
}
id3::Version Written(unsigned version) {
  return version >= 4 ? id3::v4 : id3::v3;
}

class MpegTags final : public TagStore {
 public:
  MpegTags(TagStream& stream, unsigned newVersion)
      : file_(&stream, KeepingFrames(), false), stream_(stream), version_(newVersion) {
    if (IsValid() && file_.hasID3v2Tag()) version_ = VersionOf(Tag());
  }

  [[nodiscard]] bool IsValid() const { return file_.isValid(); }

  [[nodiscard]] Attributes Read() const override {
    if (file_.hasID3v2Tag() || !file_.hasID3v1Tag()) return ReadId3(Tag());
    id3::Tag copy;
    TagLib::Tag::duplicate(const_cast<TagLib::MPEG::File&>(file_).ID3v1Tag(), &copy, true);
    return ReadId3(copy);
  }

  [[nodiscard]] bool Set(const Attribute& attribute) override {
    BeginTag();
    return SetId3(Tag(), attribute, version_);
  }

  void Remove(const std::string& name) override {
    BeginTag();
    RemoveId3(Tag(), name);
  }

  [[nodiscard]] bool Save() override {
    int tags = TagLib::MPEG::File::ID3v2;
    if (file_.hasID3v1Tag()) {
      TagLib::Tag::duplicate(&Tag(), file_.ID3v1Tag(), true);
      tags |= TagLib::MPEG::File::ID3v1;
    }
    return file_.save(tags, TagLib::File::StripNone, Written(version_), TagLib::File::DoNotDuplicate) &&
           !stream_.HasFailed();
  }

 private:
  [[nodiscard]] id3::Tag& Tag() const { return *const_cast<TagLib::MPEG::File&>(file_).ID3v2Tag(true); }

  // A file that has only the short tag keeps what stands there.
  void BeginTag() {
    if (!file_.hasID3v2Tag() && file_.hasID3v1Tag() && Tag().isEmpty())
      TagLib::Tag::duplicate(file_.ID3v1Tag(), &Tag(), true);
  }

  TagLib::MPEG::File file_;
  TagStream& stream_;
  unsigned version_;
};

class AiffTags final : public TagStore {
 public:
  AiffTags(TagStream& stream, unsigned newVersion) : file_(&stream, false), stream_(stream) {
    version_ = IsValid() && file_.hasID3v2Tag() ? VersionOf(Tag()) : newVersion;
  }

  [[nodiscard]] bool IsValid() const { return file_.isValid() && file_.tag() != nullptr; }

  [[nodiscard]] Attributes Read() const override { return ReadId3(Tag()); }
  [[nodiscard]] bool Set(const Attribute& attribute) override { return SetId3(Tag(), attribute, version_); }
  void Remove(const std::string& name) override { RemoveId3(Tag(), name); }
  [[nodiscard]] bool Save() override { return file_.save(Written(version_)) && !stream_.HasFailed(); }

 private:
  [[nodiscard]] id3::Tag& Tag() const { return *file_.tag(); }

  TagLib::RIFF::AIFF::File file_;
  TagStream& stream_;
  unsigned version_ = 3;
};

template <typename Tags>
std::unique_ptr<TagStore> Open(TagStream& stream, unsigned newVersion) {
  auto tags = std::make_unique<Tags>(stream, newVersion);
  if (!tags->IsValid()) return nullptr;
  return tags;
}

}  // namespace

std::unique_ptr<TagStore> OpenId3Tags(TagStream& stream, unsigned newVersion) {
  return Open<MpegTags>(stream, newVersion);
}
std::unique_ptr<TagStore> OpenAiffTags(TagStream& stream, unsigned newVersion) {
  return Open<AiffTags>(stream, newVersion);
}

}  // namespace ts5::tags
