#include "orvane/platform/uuid.h"

#include <gtest/gtest.h>

#include <unordered_set>

namespace orvane {
namespace {

TEST(UUID, RandomOnesAreVersion4AndDiffer) {
  std::unordered_set<UUID> seen;
  for (int i = 0; i < 1000; ++i) {
    const auto uuid = UUID::random();
    EXPECT_EQ(uuid.bytes[6] >> 4U, 4U);
    EXPECT_EQ(uuid.bytes[8] >> 6U, 2U);
    EXPECT_TRUE(seen.insert(uuid).second);
  }
}

TEST(UUID, WritesUpperCaseAndReadsEitherCase) {
  const auto uuid = UUID::parse("123e4567-e89b-42d3-a456-426614174aff");
  ASSERT_TRUE(uuid);
  EXPECT_EQ(uuid->bytes[0], 0x12U);
  EXPECT_EQ(uuid->bytes[15], 0xFFU);
  EXPECT_EQ(uuid->text(), "123E4567-E89B-42D3-A456-426614174AFF");
  EXPECT_EQ(UUID::parse(uuid->text()), uuid);
  EXPECT_EQ(UUID{}.text(), "00000000-0000-0000-0000-000000000000");
}

TEST(UUID, EveryTextComesBack) {
  for (int i = 0; i < 1000; ++i) {
    const auto uuid = UUID::random();
    EXPECT_EQ(UUID::parse(uuid.text()), uuid);
  }
}

TEST(UUID, RefusesEveryOtherForm) {
  for (const char* text :
       {"", "123E4567-E89B-42D3-A456-42661417400", "123E4567-E89B-42D3-A456-4266141740000",
        "123E4567E89B42D3A456426614174000", "{123E4567-E89B-42D3-A456-426614174000}",
        "123E4567-E89B-42D3-A456-42661417400G", "123E4567_E89B-42D3-A456-426614174000",
        "123E-4567E89B-42D3-A456-426614174000", " 23E4567-E89B-42D3-A456-426614174000",
        "+23E4567-E89B-42D3-A456-426614174000"})
    EXPECT_EQ(UUID::parse(text), std::nullopt) << text;
}

}  // namespace
}  // namespace orvane
