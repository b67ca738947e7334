// A score as pages: bars go to systems and systems to pages, and each page is drawn when it is asked for.
//
//   ScorePages pages(std::move(document));
//   for (std::size_t i = 0; i < pages.Count(); ++i) Paint(pages.Draw(i));
//
// It is a look at the music, not a printed edition: texts have about their places, and what has no sign here
// is told by a word.
#pragma once

#include <memory>
#include <vector>

#include "frame/search_hit.h"
#include "platform/base/work_watch.h"
#include "preview/sketch.h"
#include "score/score_document.h"

namespace ts5::preview {

struct PageSize {
  double width = 120;  // staff spaces
  double height = 170;
};

// Where a system stands: its page, and its edges from the top of the page in staff spaces.
struct SystemPlace {
  std::size_t page = 0;
  double top = 0;
  double bottom = 0;
};

class ScorePages {
 public:
  // One that was cancelled has no pages.
  explicit ScorePages(ScoreDocument document, const CancelCheck& cancelled = {});
  ~ScorePages();
  ScorePages(ScorePages&&) noexcept;
  ScorePages& operator=(ScorePages&&) noexcept;

  [[nodiscard]] std::size_t Count() const;
  [[nodiscard]] PageSize Size() const;
  [[nodiscard]] Sketch Draw(std::size_t page) const;
  // The system with a bar, by its index in the score.
  [[nodiscard]] SystemPlace PlaceOf(std::size_t bar) const;
  // The one in which a hit of the search begins; the first one where the score does not have it any more.
  [[nodiscard]] SystemPlace PlaceOf(const SearchHit& hit) const;
  // Printed numbers of the first and last bar of a page.
  [[nodiscard]] std::pair<std::string, std::string> Bars(std::size_t page) const;

 private:
  struct Inside;
  std::unique_ptr<Inside> inside_;
};

}  // namespace ts5::preview
