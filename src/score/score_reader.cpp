#include "score/score_reader.h"

#include <algorithm>

#include "platform/base/text.h"
#include "score/score_records.h"

namespace ts5 {
namespace {

Bytes Copy(ByteView bytes) {
  return {bytes.begin(), bytes.end()};
}

std::vector<DrawingItem> ReadDrawingItems(ScoreSource& in) {
  std::vector<DrawingItem> items;
  const std::uint32_t count = in.CompactUnsigned();
  for (std::uint32_t i = 0; i < count && in.Ok(); ++i) {
    DrawingItem item;
    item.kind = in.U8();
    DrawingFields fields;
    const std::string_view layout =
        item.kind < kDrawingFields.size() ? kDrawingFields[item.kind] : std::string_view();
    for (const char field : layout) {
      if (field == 'n') {
        item.nested = ReadDrawingItems(in);  // as deep as ReadDrawings has found it to be
      } else {
        ReadDrawingField(in, field, fields);
      }
    }
    item.span = fields.span;
    item.value = fields.value;
    item.text = Copy(fields.text);
    items.push_back(std::move(item));
  }
  return items;
}

std::vector<LyricItem> LyricsOf(const std::vector<LyricVerse>& verses) {
  constexpr std::uint8_t kKept = kLyricHyphen | kLyricExtender;
  std::vector<LyricItem> lyrics;
  for (const LyricVerse& verse : verses) {
    const std::string_view text = AsText(verse.syllable);
    lyrics.push_back({Utf8FromWindows1252(text.substr(0, text.find('\0'))),
                      static_cast<std::uint8_t>(verse.flags & kKept)});
  }
  return lyrics;
}

// The bytes of a record, if it says more than what is made of its members.
Bytes Kept(ByteView record, const Bytes& made) {
  return std::ranges::equal(record, made) ? Bytes() : Copy(record);
}

class DocumentReader {
 public:
  DocumentReader(ByteView file, std::size_t position, std::size_t layouts, const CancelCheck& cancelled)
      : file_(file), in_(file, position, &cancelled), layouts_(layouts) {}

  Outcome Read(std::uint32_t systems, ScoreDocument& document) {
    for (std::uint32_t i = 0; i < systems && in_.Ok(); ++i) document.systems.push_back(ReadSystem());
    if (!in_.Ok()) return in_.Stopped() ? Outcome::Cancelled : Outcome::DamagedScore;
    document.tail = Copy(file_.subspan(in_.Position()));
    return Outcome::Success;
  }

 private:
  [[nodiscard]] ByteView Since(std::size_t start) const {
    return file_.subspan(start, in_.Position() - start);
  }

  SystemItems ReadSystem() {
    SystemItems system;
    const std::size_t start = in_.Position();
    const SystemHeader header = ReadSystemHeader(in_);
    const ByteView record = Since(start);
    system.tempo = header.tempo;
    for (std::uint32_t i = 0; i < header.staves && in_.Ok(); ++i) system.staves.push_back(ReadStaff());
    if (in_.Ok()) system.record = Kept(record, SystemRecord(system));
    return system;
  }

  StaffItems ReadStaff() {
    StaffItems staff;
    const std::size_t start = in_.Position();
    const StaffHeader header = ReadStaffHeader(in_);
    const ByteView record = Since(start);
    in_.Require(header.layout < layouts_);
    staff.layout = header.layout;
    staff.time = header.time;
    for (std::uint32_t i = 0; i < header.voices && in_.Ok(); ++i) ReadVoice(staff);
    if (in_.Ok()) staff.record = Kept(record, StaffRecord(staff));
    return staff;
  }

  void ReadVoice(StaffItems& staff) {
    const std::size_t start = in_.Position();
    const VoiceHeader header = ReadVoiceHeader(in_);
    if (Bytes kept = Kept(Since(start), VoiceRecord(header.objects)); !kept.empty()) {
      staff.voiceRecords.resize(staff.voices.size());
      staff.voiceRecords.push_back(std::move(kept));
    }
    VoiceItems& items = staff.voices.emplace_back();
    for (std::uint32_t i = 0; i < header.objects && in_.Ok(); ++i) {
      const std::size_t at = in_.Position();
      ScoreItem item = ReadItem(in_, file_);
      if (!in_.Ok()) return;
      item.record = Kept(Since(at), ItemRecord(item));
      items.push_back(std::move(item));
    }
  }

  ByteView file_;
  ScoreSource in_;
  std::size_t layouts_;
};

}  // namespace

ScoreItem ReadItem(ScoreSource& in, ByteView file) {
  ScoreObject object = ReadObject(in);
  ScoreItem item;
  item.kind = object.kind;
  item.parameters = Copy(object.parameters);
  item.clef = object.clef;
  item.key = object.key;
  item.time = object.time;
  item.barLine = object.barLine;
  item.group = std::move(object.group);
  if (in.Ok() && item.group.drawingsAt != 0) {
    ScoreSource drawings(file, item.group.drawingsAt);
    item.drawings = ReadDrawingItems(drawings);
  }
  if (item.IsGroup()) item.beams = TakeBeams(item.parameters, item.group.durationCode);
  item.lyrics = LyricsOf(item.group.lyrics);
  // The members above say this.
  item.group.lyrics = {};
  item.group.marks = {};
  item.group.articulation = item.group.ownArticulation;
  item.group.drawingsAt = 0;
  return item;
}

ScoreDocument DocumentOf(const ScoreFileInfo& info, ByteView file) {
  ScoreDocument document;
  document.author = info.author;
  document.keywords = info.keywords;
  document.comment = info.comment;
  document.credits.title = document.comment.substr(0, document.comment.find_first_of("\r\n"));
  document.landscape = info.landscape;
  document.staves = info.staves;
  document.systemSpacing = info.systemSpacing;
  document.page = info.page;
  ScoreSource in(file, info.galleryOffset);
  for (std::uint32_t i = 0; i < info.galleryObjects && in.Ok(); ++i)
    document.gallery.push_back(Copy(in.Blob()));
  return document;
}

Bytes RecordToWrite(const ScoreItem& item) {
  Bytes made = ItemRecord(item);
  if (item.record.empty()) return made;
  ScoreSource in(item.record);
  const ScoreItem kept = ReadItem(in, item.record);
  const bool holds = in.Ok() && in.Position() == item.record.size() && ItemRecord(kept) == made;
  return holds ? item.record : made;
}

Bytes RecordToWrite(const SystemItems& system) {
  if (system.record.empty()) return SystemRecord(system);
  ScoreSource in(system.record);
  const SystemHeader kept = ReadSystemHeader(in);
  const bool holds = in.Ok() && in.Position() == system.record.size() && kept.tempo == system.tempo &&
                     kept.staves == system.staves.size();
  return holds ? system.record : SystemRecord(system);
}

Bytes RecordToWrite(const StaffItems& staff) {
  if (staff.record.empty()) return StaffRecord(staff);
  ScoreSource in(staff.record);
  const StaffHeader kept = ReadStaffHeader(in);
  const bool holds = in.Ok() && in.Position() == staff.record.size() && kept.time == staff.time &&
                     kept.layout == staff.layout && kept.voices == staff.voices.size();
  return holds ? staff.record : StaffRecord(staff);
}

Bytes RecordToWrite(ByteView kept, std::uint32_t objects) {
  ScoreSource in(kept);
  const bool holds =
      !kept.empty() && ReadVoiceHeader(in).objects == objects && in.Ok() && in.Position() == kept.size();
  return holds ? Copy(kept) : VoiceRecord(objects);
}

Bytes RecordToWrite(const ScoreDocument& score) {
  Bytes made = InformationRecord(score);
  if (score.record.empty()) return made;
  const auto info = ReadScoreInfo(score.record);
  if (!info || !info->IsCurrent() || info->bodyOffset != score.record.size()) return made;
  ScoreDocument kept = DocumentOf(*info, score.record);
  kept.systems.resize(info->systems == score.systems.size() ? info->systems : 0);
  return InformationRecord(kept) == made ? score.record : made;
}

Result<ScoreDocument> ReadScore(ByteView file, const CancelCheck& cancelled) {
  const auto info = ReadScoreInfo(file, cancelled);
  if (!info) return Failure(info.error());
  if (!info->IsCurrent()) return Failure(Outcome::OldScore);
  ScoreDocument document = DocumentOf(*info, file);
  DocumentReader reader(file, info->bodyOffset, info->staves.size(), cancelled);
  if (const Outcome read = reader.Read(info->systems, document); Failed(read)) return Failure(read);
  document.record = Kept(file.first(info->bodyOffset), InformationRecord(document));
  return document;
}

}  // namespace ts5
