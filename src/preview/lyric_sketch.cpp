#include "preview/lyric_sketch.h"

#include <algorithm>

namespace ts5::preview {
namespace {

constexpr double kLyricLine = 2.3;

void DrawVerse(const MarkedStaff& on, std::vector<const PlacedSlice*> slices, std::size_t verse, double y) {
  std::ranges::stable_sort(slices, {}, &PlacedSlice::x);
  for (std::size_t i = 0; i < slices.size(); ++i) {
    const LyricItem& lyric = slices[i]->slice->event->item->lyrics[verse];
    std::string text = lyric.syllable;
    bool hyphen = (lyric.flags & kLyricHyphen) != 0;
    if (text.size() > 1 && text.ends_with('-')) {
      text.pop_back();
      hyphen = true;
    }
    const double middle = slices[i]->Middle();
    const double half = TextWidth(text, kLyricSize) / 2;
    on.canvas.Text({middle, y, text, kLyricSize, TextStyle::Plain, TextAlign::Centre});
    const double next =
        i + 1 < slices.size()
            ? slices[i + 1]->Middle() -
                  TextWidth(slices[i + 1]->slice->event->item->lyrics[verse].syllable, kLyricSize) / 2
            : on.places.right;
    if (hyphen && next - middle - half > 0.5)
      on.canvas.Text({(middle + half + next) / 2, y, "-", kLyricSize, TextStyle::Plain, TextAlign::Centre});
    if ((lyric.flags & kLyricExtender) != 0 && next - middle - half > 1.5)
      on.canvas.Line(middle + half + 0.3, y, next - 0.6, y, 0.1);
  }
}

}  // namespace

void SketchLyrics(const MarkedStaff& on) {
  std::vector<std::vector<const PlacedSlice*>> verses;
  for (const PlacedVoice& voice : on.voices) {
    for (const PlacedSlice& placed : voice) {
      const auto& lyrics = placed.slice->event->item->lyrics;
      if (!placed.slice->first) continue;
      for (std::size_t verse = 0; verse < lyrics.size(); ++verse) {
        if (lyrics[verse].syllable.empty()) continue;
        if (verses.size() <= verse) verses.resize(verse + 1);
        verses[verse].push_back(&placed);
      }
    }
  }
  if (verses.empty()) return;
  double y = std::max(on.canvas.Bottom() + 0.6, 6.5) + 1.4;
  for (std::size_t verse = 0; verse < verses.size(); ++verse, y += kLyricLine)
    DrawVerse(on, verses[verse], verse, y);
}

}  // namespace ts5::preview
