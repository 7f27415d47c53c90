#include "orvane/platform/sha256.h"

#include <gtest/gtest.h>

#include <string>

namespace orvane {
namespace {

std::string hashOf(const std::string& text) {
  return sha256(std::as_bytes(std::span(text)));
}

// The examples that NIST publishes with FIPS 180.
TEST(SHA256, IsThatOfTheStandardsExamples) {
  EXPECT_EQ(hashOf(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
  EXPECT_EQ(hashOf("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
  EXPECT_EQ(hashOf("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
            "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
  EXPECT_EQ(hashOf(std::string(1'000'000, 'a')),
            "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

// By sha256sum; the count of bits needs a block of its own from 56 bytes on.
TEST(SHA256, FillsTheLastBlock) {
  EXPECT_EQ(hashOf(std::string(55, 'x')),
            "d5e285683cd4efc02d021a5c62014694958901005d6f71e89e0989fac77e4072");
  EXPECT_EQ(hashOf(std::string(63, 'x')),
            "75220b47218278e656f2013bb8f0c455a25eaf01e86c64924e9d48d89776d6f2");
  EXPECT_EQ(hashOf(std::string(64, 'x')),
            "7ce100971f64e7001e8fe5a51973ecdfe1ced42befe7ee8d5fd6219506b5393c");
}

}  // namespace
}  // namespace orvane
