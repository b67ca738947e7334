#include "frame/facts_memory.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <optional>

#include "platform/base/casts.h"
#include "platform/files/paths.h"
#include "platform/store/registry_salvage.h"

namespace ts5 {
namespace {

constexpr std::string_view kMagic = "TS5 file facts 2";
constexpr std::size_t kMaxText = 200;

constexpr std::uint8_t kHasLength = 1;
constexpr std::uint8_t kKeyChanges = 2;
constexpr std::uint8_t kMetreChanges = 4;
constexpr std::uint8_t kTempoChanges = 8;

void Put(ByteWriter& out, std::string_view text) {
  out.U16Le(ClampTo<std::uint16_t>(text.size()));
  out.Append(text);
}

std::optional<std::string> TakeText(ByteReader& in) {
  const ByteView bytes = in.Take(in.U16Le());
  if (!in.Ok() || bytes.size() > 2 * kMaxPathCharacters * 2) return std::nullopt;
  return std::string(AsText(bytes));
}

void Put(ByteWriter& out, const FileFacts& facts) {
  out.U64Le(facts.size);
  out.U64Le(static_cast<std::uint64_t>(facts.written));
  out.U8(static_cast<std::uint8_t>((facts.length ? kHasLength : 0) | (facts.keyChanges ? kKeyChanges : 0) |
                                   (facts.metreChanges ? kMetreChanges : 0) |
                                   (facts.tempoChanges ? kTempoChanges : 0)));
  out.U64Le(facts.length ? static_cast<std::uint64_t>(facts.length->count()) : 0);
  out.U64Le(std::bit_cast<std::uint64_t>(facts.tempo));
  out.U32Le(facts.voices);
  out.U32Le(facts.channels);
  Put(out, facts.key);
  Put(out, facts.metre);
}

std::optional<FileFacts> TakeFacts(ByteReader& in) {
  constexpr std::uint64_t kLongest = 400ULL * 24 * 3600 * 1000;
  FileFacts facts;
  facts.size = in.U64Le();
  facts.written = static_cast<std::int64_t>(in.U64Le());
  const std::uint8_t flags = in.U8();
  const std::uint64_t length = in.U64Le();
  facts.tempo = std::bit_cast<double>(in.U64Le());
  facts.voices = in.U32Le();
  facts.channels = in.U32Le();
  auto key = TakeText(in);
  auto metre = TakeText(in);
  const bool sound = in.Ok() && key && metre && key->size() <= kMaxText && metre->size() <= kMaxText &&
                     length <= kLongest && std::isfinite(facts.tempo) && std::abs(facts.tempo) < 1e6;
  if (!sound) return std::nullopt;
  if ((flags & kHasLength) != 0) facts.length = std::chrono::milliseconds(length);
  facts.keyChanges = (flags & kKeyChanges) != 0;
  facts.metreChanges = (flags & kMetreChanges) != 0;
  facts.tempoChanges = (flags & kTempoChanges) != 0;
  facts.key = *std::move(key);
  facts.metre = *std::move(metre);
  return facts;
}

}  // namespace

SharedFacts FactsMemory::Find(const std::string& path) {
  const auto found = places_.find(path);
  if (found == places_.end()) return nullptr;
  entries_.splice(entries_.begin(), entries_, found->second);
  return found->second->second;
}

void FactsMemory::Remember(const std::string& path, SharedFacts facts) {
  if (!facts) return;
  if (const auto found = places_.find(path); found != places_.end()) {
    entries_.splice(entries_.begin(), entries_, found->second);
    changed_ = changed_ || found->second->second != facts;
    found->second->second = std::move(facts);
    return;
  }
  entries_.emplace_front(path, std::move(facts));
  places_.emplace(entries_.front().first, entries_.begin());
  changed_ = true;
  Trim();
}

void FactsMemory::Trim() {
  while (entries_.size() > most_) {
    places_.erase(entries_.back().first);
    entries_.pop_back();
  }
}

void FactsMemory::TakeIn(FactsMemory older) {
  older.most_ = most_;
  for (auto entry = entries_.rbegin(); entry != entries_.rend(); ++entry)
    older.Remember(entry->first, entry->second);
  entries_.swap(older.entries_);
  places_.swap(older.places_);
  Trim();
}

Bytes FactsMemory::Pack(std::size_t most) {
  ByteWriter content;
  std::size_t left = most;
  for (const auto& [path, facts] : entries_) {
    if (left-- == 0) break;
    Put(content, path);
    Put(content, *facts);
  }
  ByteWriter out;
  out.Append(kMagic);
  out.U64Le(static_cast<std::uint64_t>(RegistryChecksum(content.View())));
  out.Append(content.View());
  changed_ = false;
  return out.Release();
}

void FactsMemory::Unpack(ByteView bytes) {
  ByteReader in(bytes);
  if (AsText(in.Take(kMagic.size())) != kMagic) return;
  const std::uint64_t checksum = in.U64Le();
  const ByteView content = in.Take(in.Remaining());
  if (!in.Ok() || static_cast<std::uint64_t>(RegistryChecksum(content)) != checksum) return;
  ByteReader entries(content);
  while (!entries.AtEnd() && entries_.size() < most_) {
    auto path = TakeText(entries);
    auto facts = TakeFacts(entries);
    if (!path || !facts || !IsUsablePath(*path)) return;
    if (places_.contains(*path)) continue;
    entries_.emplace_back(*std::move(path), std::make_shared<const FileFacts>(*std::move(facts)));
    places_.emplace(entries_.back().first, std::prev(entries_.end()));
  }
}

}  // namespace ts5
