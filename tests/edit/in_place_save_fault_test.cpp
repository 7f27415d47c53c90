// Whatever call fails and whenever the process dies, the file is the old or the new one.

#include <gtest/gtest.h>

#include <cerrno>

#include "orvane/audio/audio_source_reader.h"
#include "orvane/edit/in_place_save.h"
#include "tests/support/container_writer.h"
#include "tests/support/faulty_saving.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

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

 private:
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

TEST_F(InPlaceSaveFault, TheProcessIsAskedToEndAtEveryCall) {
  saving().terminateAtEveryCall("renameat2");
}

}  // namespace
}  // namespace orvane
