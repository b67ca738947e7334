// The metadata list "ilst" of MP4 files (AAC, Apple Lossless): atoms of its own, and free ones for other
// names.
#include <taglib/mp4file.h>
#include <taglib/mp4tag.h>

#include <algorithm>

#include "audio/tags/tag_keys.h"
#include "audio/tags/tag_store.h"
#include "audio/tags/tag_stream.h"
#include "platform/base/text.h"

namespace ts5::tags {
namespace {

// What stands before the name of a free atom: the mark, and whose names these are by general custom.
constexpr std::string_view kFree = "----:com.apple.iTunes:";
constexpr std::string_view kTrack = "trkn";

// "3/12" as its numbers; nothing for other texts.
std::optional<std::pair<int, int>> TrackOf(std::string_view text) {
  const std::size_t slash = text.find('/');
  const auto track = ParseInteger(Trim(text.substr(0, slash)));
  const auto count = slash == std::string_view::npos ? std::optional<std::int64_t>(0)
                                                     : ParseInteger(Trim(text.substr(slash + 1)));
  const auto fits = [](std::optional<std::int64_t> n) { return n && *n >= 0 && *n <= 0xFFFF; };
  if (!fits(track) || !fits(count)) return std::nullopt;
  return std::pair(static_cast<int>(*track), static_cast<int>(*count));
}

std::string TrackText(const TagLib::MP4::Item::IntPair& pair) {
  if (pair.first <= 0) return {};
  return std::to_string(pair.first) + (pair.second > 0 ? "/" + std::to_string(pair.second) : "");
}

class Mp4Tags final : public TagStore {
 public:
  explicit Mp4Tags(TagStream& stream) : file_(&stream, false), stream_(stream) {}

  [[nodiscard]] bool IsValid() const { return file_.isValid() && file_.tag() != nullptr; }

  [[nodiscard]] Attributes Read() const override {
    Attributes attributes;
    for (const auto& [atom, item] : file_.tag()->itemMap()) {
      std::string key = FromTag(atom);
      const std::string value = key == kTrack ? TrackText(item.toIntPair()) : Joined(item.toStringList());
      if (key.starts_with(kFree)) key.erase(0, kFree.size());
      if (!value.empty() && !key.starts_with("----")) AddKeyed(attributes, &AttributeName::mp4, key, value);
    }
    return attributes;
  }

  [[nodiscard]] bool Set(const Attribute& attribute) override {
    if (IsBinary(attribute.type)) return false;
    const std::string value = CommentValue(attribute);
    const std::string atom = AtomOf(attribute.name);
    if (atom != kTrack) {
      file_.tag()->setItem(ToTag(atom), TagLib::StringList(ToTag(value)));
      return true;
    }
    const auto track = TrackOf(value);
    if (track) file_.tag()->setItem(ToTag(atom), {track->first, track->second});
    return track.has_value();
  }

  void Remove(const std::string& name) override { file_.tag()->removeItem(ToTag(AtomOf(name))); }

  [[nodiscard]] bool Save() override { return file_.save() && !stream_.HasFailed(); }

 private:
  static std::string AtomOf(std::string_view name) {
    const AttributeName* const known = FindAttributeName(name);
    if (known != nullptr && !known->mp4.empty()) return std::string(known->mp4);
    return std::string(kFree) + std::string(name);
  }

  TagLib::MP4::File file_;
  TagStream& stream_;
};

}  // namespace

std::unique_ptr<TagStore> OpenMp4Tags(TagStream& stream) {
  auto tags = std::make_unique<Mp4Tags>(stream);
  if (!tags->IsValid()) return nullptr;
  return tags;
}

}  // namespace ts5::tags
