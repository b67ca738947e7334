// Threads that music waits for.
#pragma once

namespace ts5 {

// Puts the calling thread before all that are not in a hurry, where the system lets the user do so; without
// effect, and false, where it does not. For threads that sleep most of the time.
bool HurryThisThread();

}  // namespace ts5
