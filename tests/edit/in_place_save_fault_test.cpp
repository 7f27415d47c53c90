// Whatever call fails and whenever the process dies, the file is the old or the new one.

#include <gtest/gtest.h>

#include <cerrno>

#include "orvane/audio/audio_source_reader.h"
#include "orvane/edit/in_place_save.h"
#include "tests/support/container_writer.h"
#include "tests/support/faulty_saving.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/whole_file.h"

namespace orvane {
namespace {

namespace faults = test::SystemCallFaults;

using test::FaultySaving;

class InPlaceSaveFault : public testing::Test {
 protected:
  InPlaceSaveFault() {
    folder_.write("take.wav", test::formFile("RIFF", "WAVE",
                                             {{"bext", test::Bytes(604)},
                                              {"fmt ", test::waveFormatBody({})},
                                              {"data", test::Bytes(4000)},
                                              {"iXML", test::Bytes(78)}}));
    edited_ = AudioSourceReader::load(folder_ / "take.wav").buffer;
    std::fill_n(edited_->channel(0) + 100, 50, 0.5F);
    edited_->setFrameLength(900);
  }

  FaultySaving saving() const {
    const auto path = folder_ / "take.wav";
    return {path, FaultySaving::ofOperation([this, path] { InPlaceSave::write(*edited_, path); })};
  }

  test::TemporaryDirectory folder_;
  std::shared_ptr<PCMBuffer> edited_;
};

TEST_F(InPlaceSaveFault, EveryCallFails) {
  const FaultySaving faulty = saving();
  for (const bool anonymous : {true, false})
    faulty.failEveryCall({EIO, ENOSPC, EDQUOT, EINTR}, {.anonymous = anonymous});
}

TEST_F(InPlaceSaveFault, EveryAllocationFails) {
  saving().failAllocations();
}

TEST_F(InPlaceSaveFault, EveryWriteFallsShort) {
  saving().disturbEveryWrite();
}

TEST_F(InPlaceSaveFault, TheProcessDiesAtEveryCall) {
  const FaultySaving faulty = saving();
  for (const bool anonymous : {true, false}) faulty.killAtEveryCall({.anonymous = anonymous});
}

/// Both have read the same version; the second one saves just before a call of the first.
TEST_F(InPlaceSaveFault, AnotherSaverIsThereAtEveryCall) {
  const auto path = folder_ / "take.wav";
  const std::string original = test::readFile(path);
  const auto other = AudioSourceReader::load(path).buffer;
  std::fill_n(other->channel(0), 100, -0.5F);
  const std::string changed =
      InPlaceSaveError::writeFailed("the file was changed by another program meanwhile")
          .errorDescription();
  int won = 0;
  bool isOver = false;
  for (std::size_t at = 0; !isOver; ++at) {
    SCOPED_TRACE(at);
    folder_.write("take.wav", original);
    const auto version = FileStamp::of(path);
    const auto saved = [&](const PCMBuffer& buffer) -> std::string {
      try {
        InPlaceSave::write(buffer, path, {.version = version});
        return "";
      } catch (const Error& error) {
        return error.errorDescription();
      }
    };
    std::string told = changed;
    std::string content;
    faults::begin({.meanwhile = [&, number = std::size_t{0}](std::string_view) mutable {
      if (number++ != at) return;
      told = saved(*other);
      if (told.empty()) content = test::readFile(path);
    }});
    const std::string toldFirst = saved(*edited_);
    isOver = faults::end().size() <= at;
    won += toldFirst.empty() ? 0 : 1;
    EXPECT_EQ(toldFirst, told.empty() ? changed : "");
    EXPECT_TRUE(told.empty() || told == changed) << told;
    EXPECT_TRUE(content.empty() || content == test::readFile(path));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_.path()), {}), 1);
  }
  EXPECT_GT(won, 10);
}

TEST_F(InPlaceSaveFault, TheProcessIsAskedToEndAtEveryCall) {
  saving().terminateAtEveryCall("renameat2");
}

}  // namespace
}  // namespace orvane
