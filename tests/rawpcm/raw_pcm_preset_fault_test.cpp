// A list of presets is the old or the new one, whole, whatever fails and whenever the process dies.

#include <gtest/gtest.h>

#include <cerrno>

#include "orvane/rawpcm/raw_pcm_preset_store.h"
#include "tests/support/faulty_saving.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

using Presets = std::vector<RawPCMPreset>;

class RawPCMPresetFaultTest : public testing::Test {
 protected:
  test::FaultySaving saving() const {
    return {store.fileURL, test::FaultySaving::ofOperation([this] {
              store.update([](Presets& presets) { presets.push_back({.name = "new"}); });
            })};
  }
  void putThroughEverything() const {
    for (const bool anonymous : {true, false}) {
      saving().failEveryCall({ENOSPC, EDQUOT, EIO}, {.anonymous = anonymous});
      saving().disturbEveryWrite({.anonymous = anonymous});
      saving().killAtEveryCall({.anonymous = anonymous});
    }
  }

  test::TemporaryDirectory folder;
  RawPCMPresetStore store{folder.path()};
};

TEST_F(RawPCMPresetFaultTest, AListThatIsReplaced) {
  store.save(Presets(50, RawPCMPreset{.name = "old"}));
  putThroughEverything();
}

TEST_F(RawPCMPresetFaultTest, AListThatIsNew) {
  putThroughEverything();
}

}  // namespace
}  // namespace orvane
