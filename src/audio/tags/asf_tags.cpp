// Attributes of Windows Media files, under their own names and with their own types.
#include <taglib/asfattribute.h>
#include <taglib/asffile.h>
#include <taglib/asftag.h>

#include <charconv>

#include "audio/tags/tag_keys.h"
#include "audio/tags/tag_store.h"
#include "audio/tags/tag_stream.h"
#include "platform/base/text.h"

namespace ts5::tags {
namespace {

using TagLib::ASF::Tag;

// The five that have places of their own in the file.
struct FixedPlace {
  std::string_view name;
  TagLib::String (Tag::*get)() const;
  void (Tag::*set)(const TagLib::String&);
};
constexpr FixedPlace kFixedPlaces[] = {
    {"Title", &Tag::title, &Tag::setTitle},
    {"Author", &Tag::artist, &Tag::setArtist},
    {"Copyright", &Tag::copyright, &Tag::setCopyright},
    {"Description", &Tag::comment, &Tag::setComment},
    {"Rating", &Tag::rating, &Tag::setRating},
};

const FixedPlace* FixedPlaceOf(std::string_view name) {
  for (const FixedPlace& place : kFixedPlaces) {
    if (EqualsIgnoringCase(place.name, name)) return &place;
  }
  return nullptr;
}

std::string BytesOf(const TagLib::ByteVector& bytes) {
  return {bytes.data(), bytes.size()};
}

Attribute FromAsf(const std::string& name, const TagLib::ASF::Attribute& stored) {
  Attribute attribute;
  attribute.name = name;
  switch (stored.type()) {
    case TagLib::ASF::Attribute::UnicodeType:
      attribute.value = FromTag(stored.toString());
      break;
    case TagLib::ASF::Attribute::BytesType:
      attribute.type = AttributeType::Binary;
      attribute.value = BytesOf(stored.toByteVector());
      break;
    case TagLib::ASF::Attribute::BoolType:
      attribute.type = AttributeType::Bool;
      attribute.value = stored.toBool() ? "1" : "0";
      break;
    case TagLib::ASF::Attribute::DWordType:
      attribute.type = AttributeType::DWord;
      attribute.value = std::to_string(stored.toUInt());
      break;
    case TagLib::ASF::Attribute::QWordType:
      attribute.type = AttributeType::QWord;
      attribute.value = std::to_string(stored.toULongLong());
      break;
    case TagLib::ASF::Attribute::WordType:
      attribute.type = AttributeType::Word;
      attribute.value = std::to_string(stored.toUShort());
      break;
    case TagLib::ASF::Attribute::GuidType:
      attribute.type = AttributeType::Guid;
      attribute.value = BytesOf(stored.toByteVector());
      break;
  }
  const AttributeName* const known = FindAttributeName(name);
  attribute.readOnly = IsBinary(attribute.type) || (known != nullptr && known->readOnly);
  attribute.selected = attribute.HasValue() && !attribute.readOnly;
  return attribute;
}

TagLib::ASF::Attribute ToAsf(const Attribute& attribute) {
  unsigned long long number = 0;
  (void)std::from_chars(attribute.value.data(), attribute.value.data() + attribute.value.size(), number);
  switch (attribute.type) {
    case AttributeType::Bool:
      return {attribute.value == "1"};
    case AttributeType::DWord:
      return {static_cast<unsigned>(number)};
    case AttributeType::QWord:
      return {number};
    case AttributeType::Word:
      return {static_cast<unsigned short>(number)};
    default:
      return {ToTag(attribute.value)};
  }
}

class AsfTags : public TagStore {
 public:
  explicit AsfTags(TagStream& stream) : file_(&stream, false), stream_(stream) {}

  [[nodiscard]] bool IsValid() const { return file_.isValid(); }

  [[nodiscard]] Attributes Read() const override {
    Attributes attributes;
    for (const FixedPlace& place : kFixedPlaces) {
      const std::string value = FromTag((file_.tag()->*place.get)());
      if (!value.empty())
        attributes.push_back({AttributeType::String, std::string(place.name), value, false, true});
    }
    for (const auto& [key, values] : file_.tag()->attributeListMap()) {
      const std::string name = FromTag(key);
      if (!values.isEmpty() && FindAttribute(attributes, name) == nullptr)
        attributes.push_back(FromAsf(name, values.front()));
    }
    return attributes;
  }

  [[nodiscard]] bool Set(const Attribute& attribute) override {
    if (IsBinary(attribute.type)) return false;
    RemoveItems(attribute.name);
    if (const FixedPlace* const place = FixedPlaceOf(attribute.name)) {
      (file_.tag()->*place->set)(ToTag(attribute.value));
    } else {
      file_.tag()->setAttribute(ToTag(attribute.name), ToAsf(attribute));
    }
    return true;
  }

  void Remove(const std::string& name) override {
    if (const FixedPlace* const place = FixedPlaceOf(name)) (file_.tag()->*place->set)({});
    RemoveItems(name);
  }

  [[nodiscard]] bool Save() override { return file_.save() && !stream_.HasFailed(); }

 private:
  // In every spelling: some programs repeat what has a place of its own, in small letters.
  void RemoveItems(std::string_view name) {
    std::vector<TagLib::String> keys;
    for (const auto& [key, values] : file_.tag()->attributeListMap()) {
      if (EqualsIgnoringCase(FromTag(key), name)) keys.push_back(key);
    }
    for (const TagLib::String& key : keys) file_.tag()->removeItem(key);
  }

  TagLib::ASF::File file_;
  TagStream& stream_;
};

}  // namespace

std::unique_ptr<TagStore> OpenAsfTags(TagStream& stream) {
  auto tags = std::make_unique<AsfTags>(stream);
  if (!tags->IsValid()) return nullptr;
  return tags;
}

}  // namespace ts5::tags
