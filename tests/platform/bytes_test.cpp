#include "platform/base/bytes.h"

#include <gtest/gtest.h>

#include "platform/base/casts.h"

namespace ts5 {
namespace {

TEST(Bytes, AReadPastTheEndFailsForGood) {
  const Bytes bytes = {1, 2, 3};
  ByteReader in(bytes);
  EXPECT_EQ(in.U32Be(), 0U);
  EXPECT_FALSE(in.Ok());
  EXPECT_TRUE(in.AtEnd());
  in.Seek(0);
  EXPECT_EQ(in.U8(), 1);
  EXPECT_FALSE(in.Ok());

  ByteReader huge(bytes);
  EXPECT_TRUE(huge.Take(static_cast<std::size_t>(-1)).empty());
  EXPECT_FALSE(huge.Ok());
  ByteReader behind(bytes);
  behind.Seek(4);
  EXPECT_FALSE(behind.Ok());
  ByteReader atEnd(bytes);
  atEnd.Seek(3);
  EXPECT_TRUE(atEnd.Ok());
}

TEST(Casts, NothingIsCutOff) {
  EXPECT_EQ(NarrowTo<std::uint8_t>(255), 255);
  EXPECT_EQ(NarrowTo<std::uint8_t>(256), std::nullopt);
  EXPECT_EQ(NarrowTo<std::uint32_t>(-1), std::nullopt);
  EXPECT_EQ(ClampTo<std::int8_t>(1000), 127);
  EXPECT_EQ(ClampTo<std::uint16_t>(-5), 0);
}

}  // namespace
}  // namespace ts5
