#include "audio/tags/tag_file.h"

#include <algorithm>
#include <array>

#include "audio/tags/tag_store.h"
#include "audio/tags/tag_stream.h"
#include "platform/base/text.h"
#include "platform/files/files.h"
#include "platform/files/input_file.h"
#include "platform/files/paths.h"

namespace ts5::tags {
namespace {

constexpr std::size_t kHeadSize = 64;
constexpr std::size_t kId3HeaderSize = 10;

using Opener = std::unique_ptr<TagStore> (*)(TagStream& stream, unsigned id3Version);

struct Magic {
  std::size_t offset;
  std::string_view bytes;
  std::size_t andOffset;  // a second mark, "" for none
  std::string_view andBytes;
  Opener open;
};

template <std::unique_ptr<TagStore> (*open)(TagStream&)>
std::unique_ptr<TagStore> Plain(TagStream& stream, unsigned /*id3Version*/) {
  return open(stream);
}

// An Ogg page has its first packet behind 28 bytes.
constexpr Magic kMagics[] = {
    {0, "\x30\x26\xB2\x75\x8E\x66\xCF\x11", 0, "", Plain<OpenAsfTags>},
    {0, "OggS", 28, "\x01vorbis", Plain<OpenVorbisTags>},
    {0, "OggS", 28, "OpusHead", Plain<OpenOpusTags>},
    {0, "fLaC", 0, "", Plain<OpenFlacTags>},
    {0, "MAC ", 0, "", Plain<OpenApeTags>},
    {0, "wvpk", 0, "", Plain<OpenWavPackTags>},
    {0, "RIFF", 8, "WAVE", Plain<OpenInfoTags>},
    {0, "FORM", 8, "AIF", OpenAiffTags},
    {4, "ftyp", 0, "", Plain<OpenMp4Tags>},
};

bool HasAt(std::string_view head, std::size_t offset, std::string_view bytes) {
  return head.size() >= offset && head.substr(offset).starts_with(bytes);
}

std::string ReadHead(TagStream& stream, unsigned long at) {
  stream.seek(static_cast<long>(at), TagLib::IOStream::Beginning);
  const TagLib::ByteVector block = stream.readBlock(kHeadSize);
  return {block.data(), block.size()};
}

// How long the ID3v2 tag at the start is; 0 for none.
unsigned long Id3Size(std::string_view head) {
  if (head.size() < kId3HeaderSize || !head.starts_with("ID3")) return 0;
  unsigned long size = 0;
  for (std::size_t i = 6; i < kId3HeaderSize; ++i)
    size = size << 7 | (static_cast<unsigned char>(head[i]) & 0x7FU);
  return kId3HeaderSize + size;
}

bool BeginsMpegFrame(std::string_view head) {
  return head.size() >= 2 && static_cast<unsigned char>(head[0]) == 0xFF &&
         (static_cast<unsigned char>(head[1]) & 0xE0U) == 0xE0U;
}

bool IsNamedAsMpeg(std::string_view path) {
  constexpr std::array<std::string_view, 5> extensions{"mp1", "mp2", "mp3", "mpg", "mpga"};
  const std::string_view extension = ExtensionOf(path);
  return std::ranges::any_of(extensions,
                             [&](std::string_view one) { return EqualsIgnoringCase(one, extension); });
}

// path: by whose name an MPEG file with something before its first frame is known.
std::unique_ptr<TagStore> OpenTags(TagStream& stream, std::string_view path, unsigned id3Version) {
  const std::string start = ReadHead(stream, 0);
  const unsigned long tag = Id3Size(start);
  const std::string head = tag > 0 ? ReadHead(stream, tag) : start;
  stream.seek(0, TagLib::IOStream::Beginning);
  for (const Magic& magic : kMagics) {
    if (HasAt(head, magic.offset, magic.bytes) && HasAt(head, magic.andOffset, magic.andBytes))
      return magic.open(stream, id3Version);
  }
  if (BeginsMpegFrame(head) || IsNamedAsMpeg(path)) return OpenId3Tags(stream, id3Version);
  return nullptr;
}

// An attribute that the file has keeps its type there, if the value fits it.
Attribute Adapted(Attribute wanted, const Attributes& there) {
  const Attribute* const old = FindAttribute(there, wanted.name);
  if (old == nullptr || old->type == wanted.type || IsBinary(old->type)) return wanted;
  if (auto value = ValueFromText(old->type, wanted.value)) {
    wanted.value = *std::move(value);
    wanted.type = old->type;
  }
  return wanted;
}

// What of the changes is not there yet.
AttributeChanges Missing(const AttributeChanges& changes, const Attributes& there) {
  AttributeChanges missing;
  for (const Attribute& wanted : changes.set) {
    if (!wanted.ToBeWritten()) continue;
    const Attribute adapted = Adapted(wanted, there);
    const Attribute* const old = FindAttribute(there, wanted.name);
    if (old == nullptr || old->type != adapted.type || old->value != adapted.value)
      missing.set.push_back(adapted);
  }
  for (const std::string& name : changes.remove) {
    if (FindAttribute(there, name) != nullptr) missing.remove.push_back(name);
  }
  return missing;
}

std::size_t Unlike(const AttributeChanges& changes, const Attributes& there) {
  const AttributeChanges left = Missing(changes, there);
  return left.set.size() + left.remove.size();
}

Outcome CopyInto(StagedFile& target, const InputFile& source) {
  Bytes block(std::size_t{1} << 18);
  for (std::uint64_t at = 0; at < source.Size();) {
    const auto got = source.ReadAt(at, block);
    if (!got) return got.error();
    if (*got == 0) return Outcome::ReadFailed;  // it has become shorter
    if (const Outcome written = target.Write(ByteView(block).first(*got)); Failed(written)) return written;
    at += *got;
  }
  return Outcome::Success;
}

Result<Attributes> ReadNamed(const std::string& file, const std::string& path) {
  TagStream stream(file, false);
  if (!stream.IsOpen()) return Failure(Outcome::SourceFailed);
  const auto tags = OpenTags(stream, path, 3);
  if (stream.HasFailed()) return Failure(Outcome::ReadFailed);
  if (!tags) return Failure(Outcome::WrongFormat);
  return tags->Read();
}

Result<std::size_t> Edit(const std::string& file, const std::string& path, const AttributeChanges& changes,
                         unsigned id3Version) {
  std::size_t refused = 0;
  {
    TagStream stream(file, true);
    if (!stream.IsOpen()) return Failure(Outcome::TargetFailed);
    const auto tags = OpenTags(stream, path, id3Version);
    if (!tags) return Failure(Outcome::WrongFormat);
    for (const std::string& name : changes.remove) tags->Remove(name);
    for (const Attribute& attribute : changes.set) refused += tags->Set(attribute) ? 0 : 1;
    if (!tags->Save()) return Failure(Outcome::WriteFailed);
  }
  const auto back = ReadNamed(file, path);
  if (!back) return Failure(Outcome::WriteFailed);
  return std::max(refused, Unlike(changes, *back));
}

}  // namespace

Result<Attributes> ReadAttributes(const std::string& path) {
  return ReadNamed(path, path);
}

Result<std::size_t> ChangeAttributes(const std::string& path, const AttributeChanges& changes,
                                     unsigned id3Version) {
  const auto there = ReadAttributes(path);
  if (!there) return Failure(there.error());
  const AttributeChanges missing = Missing(changes, *there);
  if (missing.Empty()) return std::size_t{0};
  const auto source = InputFile::Open(path);
  if (!source) return Failure(source.error());
  auto staged = StagedFile::Create(path);
  if (!staged) return Failure(staged.error());
  if (const Outcome copied = CopyInto(*staged, *source); Failed(copied)) return Failure(copied);
  const auto failed = Edit(staged->TemporaryPath(), path, missing, id3Version);
  if (!failed) return failed;
  if (const Outcome committed = staged->Commit(); Failed(committed)) return Failure(committed);
  return failed;
}

Result<std::size_t> ChangeAttributesInPlace(const std::string& path, const AttributeChanges& changes,
                                            unsigned id3Version) {
  const auto there = ReadAttributes(path);
  if (!there) return Failure(there.error());
  const AttributeChanges missing = Missing(changes, *there);
  if (missing.Empty()) return std::size_t{0};
  return Edit(path, path, missing, id3Version);
}

}  // namespace ts5::tags
