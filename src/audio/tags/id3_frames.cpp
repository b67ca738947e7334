#include "audio/tags/id3_frames.h"

#include <taglib/commentsframe.h>
#include <taglib/textidentificationframe.h>
#include <taglib/unsynchronizedlyricsframe.h>
#include <taglib/urllinkframe.h>

#include <algorithm>
#include <vector>

#include "audio/tags/tag_keys.h"
#include "platform/base/text.h"

namespace ts5::tags {
namespace {

namespace id3 = TagLib::ID3v2;
using TagLib::ByteVector;

// The library keeps this name to classes derived from its own.
struct FrameNames : id3::Frame {
  using Header = id3::Frame::Header;
};

// Keeps frames of version 2.3 that 2.4 knows no longer, which would be thrown away otherwise.
class KeepingFactory : public id3::FrameFactory {
 protected:
  bool updateFrame(FrameNames::Header* header) const override {
    constexpr std::string_view kept[] = {"EQUA", "RVAD", "TRDA", "TSIZ"};
    const ByteVector id = header->frameID();
    const bool keep = std::ranges::find(kept, std::string_view(id.data(), id.size())) != std::end(kept);
    return keep || id3::FrameFactory::updateFrame(header);
  }
};

std::string IdOf(const id3::Frame& frame) {
  const ByteVector id = frame.frameID();
  return {id.data(), id.size()};
}
ByteVector IdOf(std::string_view id) {
  return {id.data(), static_cast<unsigned>(id.size())};
}

// The texts of a frame but for its description.
TagLib::StringList TextsOf(const id3::UserTextIdentificationFrame& frame) {
  TagLib::StringList texts = frame.fieldList();
  if (!texts.isEmpty()) texts.erase(texts.begin());
  return texts;
}

void AddFrame(Attributes& attributes, const id3::Frame& frame) {
  const auto add = [&](const std::string& key, const std::string& value) {
    if (!value.empty()) AddKeyed(attributes, &AttributeName::id3, key, value);
  };
  if (const auto* user = dynamic_cast<const id3::UserTextIdentificationFrame*>(&frame)) {
    add(FromTag(user->description()), Joined(TextsOf(*user)));
  } else if (const auto* text = dynamic_cast<const id3::TextIdentificationFrame*>(&frame)) {
    add(IdOf(frame), Joined(text->fieldList()));
  } else if (const auto* userUrl = dynamic_cast<const id3::UserUrlLinkFrame*>(&frame)) {
    if (userUrl->description().isEmpty()) add(IdOf(frame), FromTag(userUrl->url()));
  } else if (const auto* url = dynamic_cast<const id3::UrlLinkFrame*>(&frame)) {
    add(IdOf(frame), FromTag(url->url()));
  } else if (const auto* comment = dynamic_cast<const id3::CommentsFrame*>(&frame)) {
    if (comment->description().isEmpty()) add(IdOf(frame), FromTag(comment->text()));
  } else if (const auto* lyrics = dynamic_cast<const id3::UnsynchronizedLyricsFrame*>(&frame)) {
    if (lyrics->description().isEmpty()) add(IdOf(frame), FromTag(lyrics->text()));
  }
}

// Whether the frame holds the attribute with that field of ID3, or with none, of that name.
bool Holds(const id3::Frame& frame, std::string_view field, std::string_view name) {
  if (const auto* user = dynamic_cast<const id3::UserTextIdentificationFrame*>(&frame))
    return EqualsIgnoringCase(FromTag(user->description()), name);
  if (IdOf(frame) != (field.empty() ? name : field)) return false;
  if (const auto* url = dynamic_cast<const id3::UserUrlLinkFrame*>(&frame))
    return url->description().isEmpty();
  if (const auto* comment = dynamic_cast<const id3::CommentsFrame*>(&frame))
    return comment->description().isEmpty();
  if (const auto* lyrics = dynamic_cast<const id3::UnsynchronizedLyricsFrame*>(&frame))
    return lyrics->description().isEmpty();
  return true;
}

template <typename Frame>
id3::Frame* LanguageFrame(const TagLib::String& text, TagLib::String::Type encoding) {
  auto* const frame = new Frame(encoding);  // the tag becomes the owner
  frame->setLanguage("deu");
  frame->setText(text);
  return frame;
}

id3::Frame* NewFrame(std::string_view field, const std::string& name, const std::string& value,
                     TagLib::String::Type encoding) {
  const TagLib::String text = ToTag(value);
  if (field == "COMM") return LanguageFrame<id3::CommentsFrame>(text, encoding);
  if (field == "USLT") return LanguageFrame<id3::UnsynchronizedLyricsFrame>(text, encoding);
  if (field == "WXXX") {
    auto* const frame = new id3::UserUrlLinkFrame(encoding);
    frame->setUrl(text);
    return frame;
  }
  if (field.starts_with('W')) {
    auto* const frame = new id3::UrlLinkFrame(IdOf(field));
    frame->setUrl(text);
    return frame;
  }
  if (field.starts_with('T')) {
    auto* const frame = new id3::TextIdentificationFrame(IdOf(field), encoding);
    frame->setText(text);
    return frame;
  }
  return new id3::UserTextIdentificationFrame(ToTag(name), TagLib::StringList(text), encoding);
}

// The frame of an attribute; other names may be those of text frames themselves.
std::string_view FieldOf(std::string_view name) {
  if (const AttributeName* const known = FindAttributeName(name)) return known->id3;
  const bool isFrame =
      name.size() == 4 && name[0] == 'T' && name != "TXXX" &&
      std::ranges::all_of(name, [](char c) { return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'); });
  return isFrame ? name : std::string_view();
}

}  // namespace

id3::FrameFactory* KeepingFrames() {
  static KeepingFactory factory;
  return &factory;
}

Attributes ReadId3(const id3::Tag& tag) {
  Attributes attributes;
  for (const id3::Frame* frame : tag.frameList()) AddFrame(attributes, *frame);
  if (Attribute* genre = FindAttribute(attributes, "WM/Genre")) genre->value = FromTag(tag.genre());
  return attributes;
}

bool SetId3(id3::Tag& tag, const Attribute& attribute, unsigned version) {
  if (IsBinary(attribute.type)) return false;
  const std::string_view field = FieldOf(attribute.name);
  const std::string value = CommentValue(attribute);
  // Links are Latin-1 in the tag.
  if (field.starts_with('W') && field != "WXXX" && !ToTag(value).isLatin1()) return false;
  RemoveId3(tag, attribute.name);
  const auto encoding = version >= 4 ? TagLib::String::UTF8 : TagLib::String::UTF16;
  tag.addFrame(NewFrame(field, attribute.name, value, encoding));
  return true;
}

void RemoveId3(id3::Tag& tag, const std::string& name) {
  const std::string_view field = FieldOf(name);
  std::vector<id3::Frame*> held;
  for (id3::Frame* frame : tag.frameList()) {
    if (Holds(*frame, field, name)) held.push_back(frame);
  }
  for (id3::Frame* frame : held) tag.removeFrame(frame);
}

}  // namespace ts5::tags
