// What a MusicXML file has and a document does not: looks, fonts, places on paper, set-ups of synthesizers.
// Every element of the format has its row in a table; one without a row is told by its name. What the reader
// takes, or tells itself where it meets it, is passed over here. Used inside the reader only.
#pragma once

#include <pugixml.hpp>

#include "converters/score_losses.h"
#include "platform/base/work_watch.h"

namespace ts5::converters::musicxml {

// Adds what is lost to the report, of the whole score or, for what belongs to the music, by bar. False when
// it is to stop.
[[nodiscard]] bool SurveyElements(pugi::xml_node root, LossReport& losses, const CancelCheck& cancelled);

}  // namespace ts5::converters::musicxml
