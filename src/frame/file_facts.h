// What a list shows of a file beside its name, as far as a file of its kind has it.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/base/work_watch.h"

namespace ts5 {

struct FileFacts {
  std::uint64_t size = 0;    // bytes
  std::int64_t written = 0;  // nanoseconds since 1970
  std::optional<std::chrono::milliseconds> length = {};
  std::string key = {};    // the first one, "G-Dur"
  std::string metre = {};  // the first one, "3/4"
  double tempo = 0;        // the first one, in quarters a minute; 0: none
  bool keyChanges = false;
  bool metreChanges = false;
  bool tempoChanges = false;
  std::uint32_t voices = 0;    // tracks with notes, or staves
  std::uint32_t channels = 0;  // of samples
  bool unread = false;         // only size and date are known

  bool operator==(const FileFacts&) const = default;
};

// Facts are shared by what shows them and what remembers them.
using SharedFacts = std::shared_ptr<const FileFacts>;

// Reads what the music of a file is; size and date are there already. Any thread.
using FactsReader = std::function<void(const std::string& path, FileFacts& facts, const CancelCheck&)>;

// Of the file as it is now: `known` itself when that is still of this file, else read anew; without a reader
// size and date alone. Nothing when there is no such file, or the reading was cancelled.
[[nodiscard]] SharedFacts FactsOf(const std::string& path, const SharedFacts& known,
                                  const FactsReader& reader, const CancelCheck& cancelled = {});

}  // namespace ts5
