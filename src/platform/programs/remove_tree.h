// Removes a directory with all that is in it, which with thousands of files takes longer than anybody should
// wait.
#pragma once

#include <string>

namespace ts5 {

// Returns at once: a process of its own does it, and goes on when this one ends. Where none can be started it
// is done here. What cannot be removed stays.
void RemoveTreeInBackground(const std::string& directory);

}  // namespace ts5
