// The bar lines of a part with their repeats and endings. Used inside the writer only.
#pragma once

#include <map>

#include "converters/xml_out.h"
#include "score/score_bars.h"

namespace ts5::converters::musicxml {

class BarlineWriter {
 public:
  BarlineWriter(XmlOut& out, const ScoreMusic& music);

  // Nothing for a plain line.
  void WriteLeft(std::size_t bar);
  void WriteRight(std::size_t bar);

 private:
  using EndingsByBar = std::multimap<std::size_t, const ScoreEnding*>;

  void WriteEndings(const EndingsByBar& endings, std::size_t bar);

  XmlOut& out_;
  const ScoreMusic& music_;
  EndingsByBar starts_;
  EndingsByBar stops_;
};

}  // namespace ts5::converters::musicxml
