#include "frame/undo_notes.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "frame/record_bytes.h"
#include "platform/files/paths.h"

namespace ts5 {
namespace {

constexpr std::string_view kMagic = "TS5 undo 1";
constexpr std::string_view kKeptMagic = "TS5 kept 1";
static_assert(kMagic.size() == kKeptMagic.size());
constexpr std::uint8_t kCopied = 1;
constexpr std::uint8_t kNotKept = 2;
constexpr std::uint8_t kRemoved = 4;
constexpr unsigned kDirectories = 3;  // bits below the number of directories

}  // namespace

Bytes NotesOf(std::span<const UndoItem> items, const std::optional<UndoOwner>& owner) {
  ByteWriter out;
  out.Append(owner ? kKeptMagic : kMagic);
  if (owner) {
    Put(out, owner->registry);
    out.U32Le(owner->number);
    Put(out, owner->title);
  }
  out.U32Le(ClampTo<std::uint32_t>(std::ranges::count(items, false, &UndoItem::done)));
  for (const UndoItem& item : items) {
    if (item.done) continue;
    out.U8(static_cast<std::uint8_t>((item.copied ? kCopied : 0) | (item.notKept ? kNotKept : 0) |
                                     (item.removed ? kRemoved : 0) | item.newDirectories << kDirectories));
    Put(out, item.path);
    Put(out, FileNameOf(item.kept));
    Put(out, item.made);
  }
  return out.Release();
}

std::optional<UndoNotes> ReadNotes(ByteView notes, const std::string& folder) {
  ByteReader in(notes);
  const std::string_view magic = AsText(in.Take(kMagic.size()));
  if (magic != kMagic && magic != kKeptMagic) return std::nullopt;
  UndoNotes all;
  if (magic == kKeptMagic) {
    UndoOwner& owner = all.owner.emplace();
    owner.registry = TakeText(in);
    owner.number = in.U32Le();
    owner.title = TakeText(in);
  }
  for (std::uint32_t count = in.U32Le(); count > 0 && in.Ok(); --count) {
    const std::uint8_t flags = in.U8();
    UndoItem item{.path = TakeText(in), .made = {}, .kept = TakeText(in)};
    item.made = TakeMark(in);
    item.copied = (flags & kCopied) != 0;
    item.notKept = (flags & kNotKept) != 0;
    item.removed = (flags & kRemoved) != 0;
    item.newDirectories = flags >> kDirectories;
    const bool elsewhere =
        !IsAbsolutePath(item.path) || item.kept != FileNameOf(item.kept) || item.kept.starts_with('.');
    if (elsewhere) return std::nullopt;
    if (!item.kept.empty()) item.kept = JoinPath(folder, item.kept);
    all.items.push_back(std::move(item));
  }
  if (!in.Ok() || !in.AtEnd()) return std::nullopt;
  return all;
}

}  // namespace ts5
