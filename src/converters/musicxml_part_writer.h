// Writes one part of a score in MusicXML, measure by measure. Used inside the writer only.
#pragma once

#include "converters/musicxml_part_to_write.h"
#include "converters/score_losses.h"
#include "converters/xml_out.h"
#include "platform/base/outcome.h"
#include "platform/base/work_watch.h"

namespace ts5::converters::musicxml {

// Cancelled.
[[nodiscard]] Outcome WritePart(XmlOut& out, const PartToWrite& part, LossReport& losses,
                                const WorkWatch& watch);

}  // namespace ts5::converters::musicxml
