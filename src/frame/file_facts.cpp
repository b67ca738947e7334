#include "frame/file_facts.h"

#include <exception>

#include "platform/files/file_mark.h"

namespace ts5 {

SharedFacts FactsOf(const std::string& path, const SharedFacts& known, const FactsReader& reader,
                    const CancelCheck& cancelled) {
  const auto mark = MarkOf(path);
  if (!mark) return nullptr;
  if (known && known->size == mark->size && known->written == mark->written) return known;
  FileFacts facts{.size = mark->size, .written = mark->written};
  try {
    reader(path, facts, cancelled);
  } catch (const std::exception&) {
    // Size and date are all that can be said of it.
    facts = {.size = mark->size, .written = mark->written};
  }
  if (cancelled && cancelled()) return nullptr;
  return std::make_shared<const FileFacts>(std::move(facts));
}

}  // namespace ts5
