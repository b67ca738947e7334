// A text that has been laid out: its pieces and where they stand.
#pragma once

#include <QFont>
#include <QPointF>
#include <QString>
#include <QTransform>
#include <vector>

namespace ts5::artworker {

// A piece of a line.
struct TextRun {
  QString text;
  QPointF baseline;  // where it begins, in base font pixels
};

struct TextPlan {
  QFont font;            // of kBaseFontPixels
  QTransform transform;  // from base font pixels to the field's place and turn
  std::vector<TextRun> runs;
};

}  // namespace ts5::artworker
