// Test matchers for outcome codes and results: a test expects the particular code, never "some error".
#pragma once

#include <gmock/gmock.h>

#include "platform/base/outcome.h"

namespace ts5::test {

inline Outcome CodeOf(Outcome outcome) {
  return outcome;
}
template <typename T>
Outcome CodeOf(const Result<T>& result) {
  return result ? Outcome::Success : result.error();
}

// EXPECT_THAT(ReadFile(path), IsOk());
MATCHER(IsOk, "succeeds") {
  *result_listener << ToString(CodeOf(arg));
  return CodeOf(arg) == Outcome::Success;
}
// EXPECT_THAT(ReadFile(path), FailsWith(Outcome::SourceFailed));
MATCHER_P(FailsWith, code, "fails with " + ToString(code)) {
  *result_listener << ToString(CodeOf(arg));
  return CodeOf(arg) == code;
}

}  // namespace ts5::test
