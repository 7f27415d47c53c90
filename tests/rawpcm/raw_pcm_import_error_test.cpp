#include "orvane/rawpcm/raw_pcm_import_error.h"

#include <gtest/gtest.h>

namespace orvane {
namespace {

TEST(RawPCMImportError, HasOneFixedTextPerCase) {
  const auto text = [](RawPCMImportError::Case failure) {
    return RawPCMImportError(std::move(failure)).errorDescription();
  };
  EXPECT_EQ(text(RawPCMImportError::UnreadableFile{"a.raw: No such file or directory"}),
            "The file could not be read: a.raw: No such file or directory");
  EXPECT_EQ(text(RawPCMImportError::NonDivisibleSize{3, 4}),
            "The file size doesn't fit the declared format: 3 byte(s) remain beyond the last whole "
            "frame of 4 bytes. Check the channel count, sample format, and header skip.");
  EXPECT_EQ(text(RawPCMImportError::InvalidFormat{}), "The declared raw format is invalid.");
  EXPECT_EQ(text(RawPCMImportError::EmptyPayload{}),
            "The file has no audio payload after the declared header skip.");
  EXPECT_EQ(text(RawPCMImportError::TooLarge{}),
            "The declared format describes more audio than can be loaded into memory.");
  EXPECT_EQ(text(RawPCMImportError::BufferAllocationFailed{}),
            "Failed to allocate the audio buffer.");
}

TEST(RawPCMImportError, WritesLargeNumbersInPlainDecimal) {
  EXPECT_NE(RawPCMImportError(RawPCMImportError::NonDivisibleSize{1234567, 512})
                .errorDescription()
                .find(": 1234567 byte(s)"),
            std::string::npos);
}

TEST(RawPCMImportError, IsEqualByCaseAndValues) {
  using E = RawPCMImportError;
  EXPECT_EQ(E(E::NonDivisibleSize{1, 4}), E(E::NonDivisibleSize{1, 4}));
  EXPECT_FALSE(E(E::NonDivisibleSize{1, 4}) == E(E::NonDivisibleSize{2, 4}));
  EXPECT_FALSE(E(E::InvalidFormat{}) == E(E::EmptyPayload{}));
  EXPECT_FALSE(E(E::UnreadableFile{"a"}) == E(E::UnreadableFile{"b"}));
}

}  // namespace
}  // namespace orvane
