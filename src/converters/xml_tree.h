// Builds the tree of an XML text so that it can be stopped and takes no memory out of proportion. The parser
// itself cannot be asked; it asks for memory, page by page, and there it is told.
#pragma once

#include <cstddef>
#include <pugixml.hpp>
#include <string>

#include "platform/base/outcome.h"
#include "platform/base/work_watch.h"

namespace ts5::converters {

struct XmlParse {
  Outcome code = Outcome::Success;  // SourceFailed, Cancelled, OutOfMemory
  std::size_t offset = 0;           // in the text, where it breaks off or contradicts itself
};

// text: UTF-8, which the tree takes over piece by piece: it must outlive the tree and holds nothing of use
// afterwards. Document types and entities are passed over. A tree of a text that breaks off has what stands
// before the break.
[[nodiscard]] XmlParse ParseXml(pugi::xml_document& tree, std::string& text,
                                const CancelCheck& cancelled = {});

}  // namespace ts5::converters
