#include "score/score_info.h"

#include <algorithm>
#include <numeric>
#include <optional>
#include <string_view>

#include "platform/base/strings.h"
#include "platform/base/text.h"
#include "platform/files/files.h"
#include "score/score_drawings.h"
#include "score/score_groups.h"
#include "score/score_source.h"
#include "score/texts.h"

namespace ts5 {
namespace {

constexpr std::uint16_t kVersionMark = 0x762D;  // "-v"
constexpr std::uint8_t kLandscapeBit = 0x10;
constexpr std::size_t kFormBytes = 11;

// A text ends at its first zero byte.
std::string TextOf(ByteView bytes) {
  const std::string_view text = AsText(bytes);
  return Utf8FromWindows1252(text.substr(0, text.find('\0')));
}

// The first candidate names the staff, the second replaces it, the third stands in for both.
std::string StaffName(const std::array<std::string, 3>& candidates) {
  const std::string& name = candidates[1].empty() ? candidates[0] : candidates[1];
  if (!name.empty()) return name;
  return candidates[2].empty() ? std::string(Text(texts::ScoreStaffUnnamed)) : candidates[2];
}

void ReadStaffFrame(ScoreSource& in, StaffLayout& staff) {
  in.Skip(1);
  const std::uint8_t form = in.U8();
  if (form != 1 && form != 2) in.Skip(kFormBytes);
  in.Skip(1);
  staff.spacing = in.CompactSigned();
  for (int i = 0; i < 2; ++i) (void)in.CompactSigned();
  in.Skip(3);
}

void ReadStaffSound(ScoreSource& in, StaffLayout& staff) {
  std::iota(staff.noteMap.begin(), staff.noteMap.end(), std::uint8_t{0});
  const std::uint8_t flags = in.U8();
  staff.usesNoteMap = (flags & 1) != 0;
  if ((flags & 2) != 0) {
    in.Skip(1);
    in.Skip(in.U8());
  }
  if ((flags & 4) != 0) {
    const std::size_t start = in.U8();
    const ByteView entries = in.Take(in.U8());
    in.Require(start + entries.size() <= staff.noteMap.size());
    if (staff.usesNoteMap && in.Ok()) {
      std::fill(staff.noteMap.begin() + static_cast<std::ptrdiff_t>(start), staff.noteMap.end(),
                std::uint8_t{0});
      std::ranges::copy(entries, staff.noteMap.begin() + static_cast<std::ptrdiff_t>(start));
    }
  }
  staff.sound = in.CompactSigned();
  staff.volume = in.CompactSigned();
  staff.transpose = in.CompactSigned();
}

StaffLayout ReadStaff(ScoreSource& in) {
  StaffLayout staff;
  ReadStaffFrame(in, staff);
  ReadStaffSound(in, staff);
  std::array<std::string, 3> candidates;
  for (std::string& candidate : candidates) candidate = TextOf(in.Blob());
  staff.name = StaffName(candidates);
  (void)in.Blob();
  (void)in.Blob();
  return staff;
}

void ReadLayoutBlock(ScoreSource& in, ScoreFileInfo& info) {
  info.systemSpacing = in.CompactSigned();
  for (int i = 0; i < 3; ++i) (void)in.CompactSigned();
  in.Skip(4);
  (void)in.CompactSigned();
  in.Frame();
  const std::uint32_t count = in.CompactUnsigned();
  in.Require(count <= kMaxStaves);
  for (std::uint32_t i = 0; i < count && in.Ok(); ++i) info.staves.push_back(ReadStaff(in));
}

void ReadPairs(ScoreSource& in) {
  const std::uint32_t count = in.CompactUnsigned();
  for (std::uint32_t i = 0; i < count && in.Ok(); ++i) {
    (void)in.CompactSigned();
    (void)in.CompactSigned();
    in.Skip(1);
  }
}

void ReadParameterBlock(ScoreSource& in, ScorePageLayout& page) {
  const std::uint32_t size = in.CompactUnsigned();
  const std::size_t start = in.Position();
  while (in.Ok() && in.Position() - start < size) {
    switch (in.U8()) {
      case 2:
        in.Skip(3);
        break;
      case 3:
        in.Skip(14);
        break;
      case kPageItem:
        TakePageItem(in.Take(in.U8()), page);
        break;
      default:  // type 1 counts its bytes as all others do
        in.Skip(in.U8());
    }
  }
}

void ReadGallery(ScoreSource& in, ScoreFileInfo& info) {
  DrawnMarks unused;
  ReadDrawings(in, unused);
  info.galleryObjects = in.CompactUnsigned();
  info.galleryOffset = in.Position();
  for (std::uint32_t i = 0; i < info.galleryObjects && in.Ok(); ++i) (void)in.Blob();
}

void ReadCurrent(ScoreSource& in, ScoreFileInfo& info) {
  info.author = TextOf(in.Blob());
  info.keywords = TextOf(in.Blob());
  info.comment = TextOf(in.Blob());
  (void)in.CompactUnsigned();
  (void)in.CompactUnsigned();
  info.landscape = (in.U8() & kLandscapeBit) != 0;
  ReadLayoutBlock(in, info);
  ReadPairs(in);
  in.Skip(4);
  ReadParameterBlock(in, info.page);
  ReadGallery(in, info);
  (void)ReadChord(in);  // the template
  in.Skip(4);
  in.Frame();
  (void)in.CompactUnsigned();
  for (int i = 0; i < 4; ++i) (void)in.CompactUnsigned();
  info.systems = in.CompactUnsigned();
  info.bodyOffset = in.Position();
}

// What differs between the older formats.
struct OldLayout {
  std::size_t head;
  std::size_t behindStaffCount;
};
constexpr std::array<OldLayout, 3> kOldLayouts = {{{60, 18}, {62, 32}, {121, 32}}};

StaffLayout ReadOldStaff(ScoreSource& in) {
  constexpr std::uint8_t kNoteMapType = 3;
  StaffLayout staff;
  std::iota(staff.noteMap.begin(), staff.noteMap.end(), std::uint8_t{0});
  in.Skip(4);
  staff.usesNoteMap = (in.U8() & 7) == kNoteMapType;
  in.Skip(8);
  staff.transpose = in.U16();
  in.Skip(3);
  std::array<std::string, 3> candidates;
  for (std::string& candidate : candidates) candidate = TextOf(in.OldText());
  staff.name = StaffName(candidates);
  return staff;
}

void ReadOld(ScoreSource& in, const OldLayout& layout, ScoreFileInfo& info) {
  constexpr std::uint16_t kLandscape = 2;
  in.Skip(4);  // to offset 8
  info.landscape = in.U16() == kLandscape;
  in.Skip(30);
  in.Skip(layout.head);
  for (int i = 0; i < 2; ++i) {
    const std::int16_t size = in.I16();
    if (size > 0) in.Skip(static_cast<std::size_t>(size) + 1 + 60);
  }
  in.Skip(4 + 60 + 2);
  const std::int16_t count = in.I16();
  in.Skip(layout.behindStaffCount);
  for (std::int16_t i = 0; i < count && in.Ok(); ++i) info.staves.push_back(ReadOldStaff(in));
  info.systems = in.U16();
}

}  // namespace

Result<ScoreFileInfo> ReadScoreInfo(ByteView file, const CancelCheck& cancelled) {
  ScoreSource in(file, 0, &cancelled);
  ScoreFileInfo info;
  info.magic = in.U32();
  if (!in.Ok()) return Failure(Outcome::WrongFormat);
  if (info.IsCurrent()) {
    if (in.U16() != kVersionMark) return Failure(Outcome::WrongFormat);
    in.Skip(2);
    ReadCurrent(in, info);
  } else {
    const std::uint32_t version = info.magic - kOldScoreMagic;
    if (version >= kOldLayouts.size()) return Failure(Outcome::WrongFormat);
    ReadOld(in, kOldLayouts[version], info);
  }
  if (!in.Ok()) return Failure(in.Stopped() ? Outcome::Cancelled : Outcome::ReadFailed);
  return info;
}

Result<ScoreFileInfo> ReadScoreFileInfo(const std::string& path) {
  const auto file = ReadFile(path, kMaxScoreFile);
  if (!file) return Failure(file.error());
  return ReadScoreInfo(*file);
}

}  // namespace ts5
