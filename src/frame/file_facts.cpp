#include "frame/file_facts.h"

#include <exception>

#include "platform/files/file_mark.h"

namespace ts5 {

SharedFacts FactsOf(const std::string& path, const SharedFacts& known, const FactsReader& reader,
                    const CancelCheck& cancelled) {
  const auto mark = MarkOf(path);
  if (!mark) return nullptr;
  const bool enough = known && (!known->unread || !reader);
  if (enough && known->size == mark->size && known->written == mark->written) return known;
  FileFacts facts{.size = mark->size, .written = mark->written, .unread = !reader};
  try {
    if (reader) reader(path, facts, cancelled);
  } catch (const std::exception&) {
    // Size and date are all that can be said of it.
    facts = {.size = mark->size, .written = mark->written};
  }
  if (cancelled && cancelled()) return nullptr;
  return std::make_shared<const FileFacts>(std::move(facts));
}

}  // namespace ts5
