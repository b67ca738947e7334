// The same work on many things, on all cores.
#pragma once

#include <cstddef>
#include <functional>

namespace ts5 {

// Calls work(i) for every i below count, in any order, and on several threads unless there is little to do;
// returns when all have returned. What one of them throws is thrown here, and the rest is left.
void InParallel(std::size_t count, const std::function<void(std::size_t)>& work);

}  // namespace ts5
