// What an edit is written to is the old or the new file, whole, whatever fails.

#include <gtest/gtest.h>

#include <cerrno>

#include "orvane/edit/edit_operations.h"
#include "tests/edit/edit_samples.h"
#include "tests/support/faulty_saving.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/whole_file.h"

namespace orvane::EditOperations {
namespace {

namespace support = orvane::test;

TEST(StreamingWritersFault, LeaveTheOldOrTheNewFileWhole) {
  const support::TemporaryDirectory folder;
  const auto target = support::writeFile(folder / "out.wav", "what stood there before");
  const auto source = buildBuffer({test::noise(2, 900), 48'000, 2});
  const support::FaultySaving saving(target, support::FaultySaving::ofOperation([&] {
                                       writeCutWAV(*source, 300, 500, 50, target, 400);
                                     }));
  EXPECT_TRUE(saving.saved().starts_with("RIFF"));
  saving.failEveryCall({EIO, ENOSPC, EINTR});
  saving.disturbEveryWrite();
  saving.killAtEveryCall();
}

}  // namespace
}  // namespace orvane::EditOperations
