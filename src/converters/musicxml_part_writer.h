// Writes one part of a score in MusicXML, measure by measure. Used inside the writer only.
#pragma once

#include <string>

#include "converters/score_losses.h"
#include "converters/xml_out.h"
#include "platform/base/outcome.h"
#include "platform/base/work_watch.h"
#include "score/score_bars.h"

namespace ts5::musicxml {

struct PartToWrite {
  const ScoreDocument& document;
  const ScoreMusic& music;
  const ScorePart& part;
  std::string id;
  std::size_t firstStaff = 0;
  bool ownBeams = false;  // of the document; else flags are beamed by beats
};
// Cancelled.
[[nodiscard]] Outcome WritePart(XmlOut& out, const PartToWrite& part, LossReport& losses,
                                const WorkWatch& watch);

}  // namespace ts5::musicxml
