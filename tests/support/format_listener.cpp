// Fails every test in which a printf format and its arguments did not fit.
#include <gtest/gtest.h>

#include "platform/base/text.h"

namespace ts5::test {
namespace {

class FormatListener : public testing::EmptyTestEventListener {
  void OnTestEnd(const testing::TestInfo& /*info*/) override {
    EXPECT_EQ(TakeFormatFaults(), 0U) << "a text was filled with arguments that do not fit it";
  }
};

const bool installed = [] {
  testing::UnitTest::GetInstance()->listeners().Append(new FormatListener);  // the unit test owns it
  return true;
}();

}  // namespace
}  // namespace ts5::test
