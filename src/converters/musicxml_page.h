// The pages of a score in MusicXML: <defaults>, whose unit is the tenth of a staff space. Used inside the
// reader and the writer only.
#pragma once

#include <pugixml.hpp>

#include "converters/xml_out.h"
#include "score/score_document.h"

namespace ts5::converters::musicxml {

// Orientation, distances of lines, staves and systems; what is missing stays as it is.
void ReadPage(pugi::xml_node root, ScoreDocument& document);
// Nothing for a score that says nothing of its pages.
void WritePage(XmlOut& out, const ScoreDocument& document);

}  // namespace ts5::converters::musicxml
