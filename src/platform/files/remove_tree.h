// Removes a directory with all that is in it. What cannot be removed stays.
#pragma once

#include <string>

namespace ts5 {

// A file is removed as well.
void RemoveTree(const std::string& path);
// The same of a directory, without waiting, as thousands of files take longer than anybody should: a process
// of its own does it, and goes on when this one ends. Where none can be started it is done here.
void RemoveTreeInBackground(const std::string& directory);

}  // namespace ts5
