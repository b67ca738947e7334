// Remembers the facts of files, so that a list that is shown again has them at once: bounded, the file that
// was asked for longest ago goes first. Kept between sessions in a file that may be lost or damaged without
// harm. Whether what is remembered still holds, size and date say: see FactsOf.
#pragma once

#include <cstddef>
#include <list>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "frame/file_facts.h"
#include "platform/base/bytes.h"

namespace ts5 {

class FactsMemory {
 public:
  static constexpr std::size_t kMost = 150'000;     // files in memory
  static constexpr std::size_t kMostKept = 50'000;  // and of these in the file
  static constexpr std::uint64_t kMaxFile = std::uint64_t{32} << 20;

  explicit FactsMemory(std::size_t most = kMost) : most_(most) {}

  // nullptr when nothing is remembered.
  [[nodiscard]] SharedFacts Find(const std::string& path);
  void Remember(const std::string& path, SharedFacts facts);
  [[nodiscard]] std::size_t Size() const { return entries_.size(); }
  // Something was remembered since it was packed or unpacked.
  [[nodiscard]] bool Changed() const { return changed_; }

  [[nodiscard]] Bytes Pack(std::size_t most = kMostKept);
  // Takes in what is not known yet; of damaged bytes nothing.
  void Unpack(ByteView bytes);
  // The same with what another one holds, which may be much.
  void TakeIn(FactsMemory older);

 private:
  using Entry = std::pair<std::string, SharedFacts>;
  void Trim();

  std::size_t most_;
  std::list<Entry> entries_;  // the one asked for last is the first
  std::unordered_map<std::string_view, std::list<Entry>::iterator> places_;
  bool changed_ = false;
};

}  // namespace ts5
