// How the facts of each kind of file are read: by the readers that its properties come from.
#pragma once

#include <string>

#include "frame/file_facts.h"

namespace ts5 {

// A FactsReader. Of a file of another kind, or a damaged one, nothing is filled in.
void ReadFileFacts(const std::string& path, FileFacts& facts, const CancelCheck& cancelled);

}  // namespace ts5
