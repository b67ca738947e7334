#include "platform/base/bytes.h"

#include <gtest/gtest.h>

#include "platform/base/casts.h"

namespace ts5 {
namespace {

TEST(Bytes, WhatIsWrittenIsRead) {
  ByteWriter out;
  out.Append("MThd");
  out.U8(0xFE);
  out.U16Be(0x1234);
  out.U24Be(0xABCDEF);
  out.U32Be(0xDEADBEEF);
  out.U64Be(0x0102030405060708);
  out.U16Le(0x1234);
  out.U24Le(0xABCDEF);
  out.U32Le(0xDEADBEEF);
  out.U64Le(0x0102030405060708);
  out.Fill(3, 7);
  out.PatchU32Be(0, 0x41424344);

  const Bytes bytes = out.Release();
  EXPECT_EQ(bytes[5], 0x12);
  EXPECT_EQ(bytes[22], 0x34);
  ByteReader in(bytes);
  EXPECT_EQ(in.Tag(), "ABCD");
  EXPECT_EQ(in.I8(), -2);
  EXPECT_EQ(in.U16Be(), 0x1234);
  EXPECT_EQ(in.U24Be(), 0xABCDEFU);
  EXPECT_EQ(in.U32Be(), 0xDEADBEEFU);
  EXPECT_EQ(in.U64Be(), 0x0102030405060708U);
  EXPECT_EQ(in.U16Le(), 0x1234);
  EXPECT_EQ(in.U24Le(), 0xABCDEFU);
  EXPECT_EQ(in.U32Le(), 0xDEADBEEFU);
  EXPECT_EQ(in.U64Le(), 0x0102030405060708U);
  EXPECT_EQ(in.Take(3).size(), 3U);
  EXPECT_TRUE(in.AtEnd());
  EXPECT_TRUE(in.Ok());
}

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
