#include "frame/journal_records.h"

#include <limits>
#include <utility>

#include "frame/job_store.h"
#include "frame/record_bytes.h"
#include "platform/store/registry_blob.h"
#include "platform/store/registry_salvage.h"

namespace ts5 {
namespace {

constexpr std::string_view kMagic = "TS5 run journal 1";
constexpr std::size_t kRecordHead = 12;

void Put(ByteWriter& out, const RegistryValues& values) {
  Put(out, AsText(PackValues(values)));
}
RegistryValues TakeValues(ByteReader& in) {
  const std::uint32_t size = in.U32Le();
  return UnpackValues(in.Take(size)).value_or(RegistryValues{});
}

Bytes Sealed(ByteView content) {
  ByteWriter out;
  out.Reserve(kRecordHead + content.size());
  out.U32Le(ClampTo<std::uint32_t>(content.size()));
  out.U64Le(static_cast<std::uint64_t>(RegistryChecksum(content)));
  out.Append(content);
  return out.Release();
}

// The content of the next record; nothing when it is not whole.
std::optional<ByteView> NextRecord(ByteReader& in) {
  const std::uint32_t size = in.U32Le();
  const std::uint64_t checksum = in.U64Le();
  const ByteView content = in.Take(size);
  if (!in.Ok() || content.empty() || static_cast<std::uint64_t>(RegistryChecksum(content)) != checksum)
    return std::nullopt;
  return content;
}

// --- the plan

RegistryValues SurroundingsOf(const RunPlan& plan) {
  RegistryValues values;
  const DestinationRules& rules = plan.destination;
  values.SetInteger("Job", static_cast<std::int64_t>(plan.number));
  values.SetInteger("Begun", plan.begun);
  values.SetInteger("SourceDirectory", rules.sourceDirectory ? 1 : 0);
  values.SetText("Directory", rules.directory);
  values.SetText("Structure", rules.structure);
  values.SetInteger("UseSuffix", rules.useSuffix ? 1 : 0);
  values.SetText("Suffix", rules.suffix);
  values.SetInteger("NoPreset", rules.noPreset ? 1 : 0);
  values.SetInteger("Overwrite", static_cast<std::int64_t>(rules.overwrite));
  values.SetInteger("Origin", static_cast<std::int64_t>(rules.origin));
  values.SetText("Offered", rules.offered);
  values.SetText("Output", plan.devices.output);
  values.SetText("Input", plan.devices.input);
  return values;
}

template <typename Enum>
Enum EnumOf(std::int64_t value, Enum last) {
  return value >= 0 && value <= static_cast<std::int64_t>(last) ? static_cast<Enum>(value) : Enum{};
}

void TakeSurroundings(const RegistryValues& values, RunPlan& plan) {
  const auto number = [&](const char* name) { return values.Integer(name).value_or(0); };
  const auto text = [&](const char* name) { return std::string(values.Text(name).value_or("")); };
  plan.number = ClampTo<std::size_t>(number("Job"));
  plan.begun = number("Begun");
  plan.destination = {.sourceDirectory = number("SourceDirectory") != 0,
                      .directory = text("Directory"),
                      .structure = text("Structure"),
                      .useSuffix = number("UseSuffix") != 0,
                      .suffix = text("Suffix"),
                      .noPreset = number("NoPreset") != 0,
                      .overwrite = EnumOf(number("Overwrite"), OverwritePolicy::Ask),
                      .origin = EnumOf(number("Origin"), NameOrigin::Automatic),
                      .offered = text("Offered")};
  plan.devices.output = text("Output");
  plan.devices.input = text("Input");
}

// Takes the job as it was: nothing of it is looked for on this machine.
JobSurroundings AsItWas(const ModuleFinder& modules) {
  constexpr std::size_t kAny = std::numeric_limits<std::int32_t>::max();
  return {.modules = modules,
          .homeDirectory = "/",
          .audioDevices = kAny,
          .midiDevices = kAny,
          .isDirectory = [](const std::string&) { return true; },
          .nativePath = [](const std::string& path) { return path; },
          .driveOf = [](const std::string&) { return -1; },
          .onDataDisc = [](const std::string&) { return false; }};
}

PlannedTarget TakeTargetOfPlan(ByteReader& in) {
  PlannedTarget target;
  target.name = TakeText(in);
  target.family.head = TakeText(in);
  target.family.tail = TakeText(in);
  target.taking = EnumOf(in.U8(), Taking::Ask);
  target.evades = in.U8() != 0;
  target.code = static_cast<Outcome>(in.I32Le());
  return target;
}

Result<RunPlan> TakePlan(ByteView content, const ModuleFinder& modules) {
  ByteReader in(content);
  if (AsText(in.Take(kMagic.size())) != kMagic) return Failure(Outcome::WrongFormat);
  RunPlan plan;
  TakeSurroundings(TakeValues(in), plan);
  plan.job = JobFromValues(TakeValues(in), plan.number, AsItWas(modules));
  const std::uint32_t count = in.U32Le();
  for (std::uint32_t i = 0; i < count && in.Ok(); ++i) plan.targets.push_back(TakeTargetOfPlan(in));
  const bool whole = in.Ok() && plan.job.parameters && plan.targets.size() == ItemCount(plan.job);
  if (!whole) return Failure(Outcome::WrongFormat);
  return plan;
}

// --- items

constexpr std::uint8_t kExtended = 1;
constexpr std::uint8_t kUnchanged = 2;
constexpr std::uint8_t kHasLosses = 4;
constexpr std::uint8_t kStaged = 8;

ItemRecord TakeItem(ByteView content, const RunPlan& plan) {
  ByteReader in(content);
  ItemRecord record;
  record.index = in.U32Le();
  const std::uint8_t flags = in.U8();
  RunItem& item = record.item;
  item.source = ItemSource(plan.job, record.index);
  item.code = in.I32Le();
  item.extended = (flags & kExtended) != 0;
  item.unchanged = (flags & kUnchanged) != 0;
  record.number = in.I32Le();
  item.destination = TakeText(in);
  item.reason = TakeText(in);
  item.remark = TakeText(in);
  if ((flags & kHasLosses) != 0) {
    item.losses.emplace();
    for (std::uint32_t count = in.U32Le(); count > 0 && in.Ok(); --count) {
      ItemLoss loss{TakeText(in), TakeText(in), TakeText(in)};
      loss.count = in.U32Le();
      loss.line = TakeText(in);
      item.losses->push_back(std::move(loss));
    }
  }
  if ((flags & kStaged) != 0) {
    record.staged = TakeMark(in);
  }
  return record;
}

}  // namespace

Bytes PlanRecord(const RunPlan& plan, const ModuleFinder& modules) {
  ByteWriter out;
  out.Append(kMagic);
  Put(out, SurroundingsOf(plan));
  Put(out, ValuesOfJob(plan.job, modules));
  out.U32Le(ClampTo<std::uint32_t>(plan.targets.size()));
  for (const PlannedTarget& target : plan.targets) {
    Put(out, target.name);
    Put(out, target.family.head);
    Put(out, target.family.tail);
    out.U8(static_cast<std::uint8_t>(target.taking));
    out.U8(target.evades ? 1 : 0);
    out.U32Le(static_cast<std::uint32_t>(Code(target.code)));
  }
  return Sealed(out.View());
}

Bytes RecordOf(const ItemRecord& record) {
  const RunItem& item = record.item;
  ByteWriter out;
  out.U32Le(ClampTo<std::uint32_t>(record.index));
  out.U8(static_cast<std::uint8_t>((item.extended ? kExtended : 0) | (item.unchanged ? kUnchanged : 0) |
                                   (item.losses ? kHasLosses : 0) | (record.staged ? kStaged : 0)));
  out.U32Le(static_cast<std::uint32_t>(item.code));
  out.U32Le(static_cast<std::uint32_t>(record.number));
  Put(out, item.destination);
  Put(out, item.reason);
  Put(out, item.remark);
  if (item.losses) {
    out.U32Le(ClampTo<std::uint32_t>(item.losses->size()));
    for (const ItemLoss& loss : *item.losses) {
      Put(out, loss.kind);
      Put(out, loss.bar);
      Put(out, loss.staff);
      out.U32Le(loss.count);
      Put(out, loss.line);
    }
  }
  if (record.staged) Put(out, *record.staged);
  return Sealed(out.View());
}

Result<JournalContent> ReadJournal(ByteView bytes, const ModuleFinder& modules) {
  ByteReader in(bytes);
  const auto first = NextRecord(in);
  if (!first) return Failure(Outcome::ReadFailed);
  auto plan = TakePlan(*first, modules);
  if (!plan) return Failure(plan.error());
  JournalContent journal{.plan = *std::move(plan), .size = in.Position()};
  while (const auto content = NextRecord(in)) {
    ItemRecord record = TakeItem(*content, journal.plan);
    if (record.index >= journal.plan.targets.size()) break;
    journal.items.push_back(std::move(record));
    journal.size = in.Position();
  }
  return journal;
}

}  // namespace ts5
