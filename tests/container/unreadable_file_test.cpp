// Files that cannot be read at all, or hold something else than audio.

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <fstream>

#include "tests/support/container_writer.h"
#include "tests/support/file_reading.h"
#include "tests/support/in_child.h"
#include "tests/support/sanitized.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

using test::Bytes;
using test::openingFailure;

class UnreadableFile : public testing::Test {
 protected:
  void expectFailure(const std::filesystem::path& path, std::string_view sentence) {
    EXPECT_EQ(openingFailure(path), sentence);
    EXPECT_FALSE(describeAudioFile(path));
  }

  test::TemporaryDirectory folder_;
};

TEST_F(UnreadableFile, Missing) {
  expectFailure(folder_ / "missing.wav", "No such file or directory");
}

TEST_F(UnreadableFile, Directory) {
  expectFailure(folder_.path(), "Is a directory");
}

TEST_F(UnreadableFile, FIFOsAndSocketsAreRefusedAtOnce) {
  const auto fifo = folder_ / "fifo.wav";
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  expectFailure(fifo, "Not a regular file");

  const auto name = (folder_ / "s").string();
  sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
  ASSERT_LT(name.size(), sizeof address.sun_path);
  name.copy(address.sun_path, name.size());
  const int server = socket(AF_UNIX, SOCK_STREAM, 0);
  ASSERT_EQ(bind(server, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  EXPECT_FALSE(openingFailure(name).empty());
  close(server);
}

TEST_F(UnreadableFile, NotPermitted) {
  const auto path = folder_.write("secret.wav", test::waveFile({}, Bytes(8)));
  ASSERT_EQ(chmod(folder_.path().c_str(), 0755), 0);
  ASSERT_EQ(chmod(path.c_str(), 0), 0);
  // In a process of its own, because the superuser may read everything.
  const auto end = test::runInChild([&] {
    test::becomeNobody();
    return openingFailure(path) == "Permission denied" && !describeAudioFile(path) ? 0 : 1;
  });
  EXPECT_EQ(end.exitCode, 0);
}

TEST_F(UnreadableFile, Empty) {
  expectFailure(folder_.write("a.wav", ""), "The file is empty");
}

TEST_F(UnreadableFile, OneByte) {
  for (const int value : {0x00, 0x52, 0x7F, 0xFF}) {
    const auto path = folder_.write("one.wav", Bytes{static_cast<std::byte>(value)});
    EXPECT_FALSE(openingFailure(path).empty()) << value;
    EXPECT_FALSE(describeAudioFile(path));
  }
}

TEST_F(UnreadableFile, TextAndPlaylistsByWhateverName) {
  expectFailure(folder_.write("note.wav", "Dear reader,\nthis is a letter.\n"),
                "The file holds text, not audio");
  expectFailure(folder_.write("list.wav", "#EXTM3U\n#EXTINF:1,x\n/etc/passwd\n"),
                "The file is a playlist, not audio");
  expectFailure(folder_.write("list.mp3", "ffconcat version 1.0\nfile '/etc/passwd'\n"),
                "The file is a playlist, not audio");
}

TEST_F(UnreadableFile, ForgedLengthOfATag) {
  const auto path = folder_.write(
      "t.mp3", test::ByteWriter().text("ID3").u8(4).zeros(2).u32(0x7F7F7F7F).zeros(100).bytes());
  EXPECT_FALSE(openingFailure(path).empty());
}

TEST_F(UnreadableFile, ButLengthsBeyondFourGibibytesAreReadable) {
  if (test::isSanitized()) GTEST_SKIP() << "files beyond 4 GiB take a sanitizer too long";
  const std::uint64_t frames = (std::uint64_t{1} << 32) / 12 + 1'000'000;
  const Bytes head = test::formFile(
      "RF64", "WAVE",
      {{.id = "ds64", .body = test::longSizesBody(frames * 12 + 72, frames * 12, frames)},
       {.id = "fmt ", .body = test::waveFormatBody({.channels = 6, .sampleRate = 192'000})},
       {.id = "data", .statedSize = 0xFFFFFFFF}});
  const auto path = folder_.write("long.rf64", head);
  std::filesystem::resize_file(path, head.size() + frames * 12);  // sparse
  const auto file = AudioFile::open(path);
  EXPECT_EQ(file->frameLength(), static_cast<std::int64_t>(frames));
  EXPECT_TRUE(file->description().warnings.empty());
}

TEST_F(UnreadableFile, ButOffsetsBeyondFourGibibytesAreReadable) {
  if (test::isSanitized()) GTEST_SKIP() << "files beyond 4 GiB take a sanitizer too long";
  // Between format and audio lies a chunk of five gibibytes, whose size is in the table.
  const std::uint64_t gap = std::uint64_t{5} << 30;
  Bytes sizes = test::longSizesBody(gap, 8, 2);
  sizes[24] = std::byte{1};
  const Bytes entry = test::ByteWriter().text("JUNK").u64(gap).bytes();
  sizes.insert(sizes.end(), entry.begin(), entry.end());
  const Bytes head = test::formFile("RF64", "WAVE",
                                    {{.id = "ds64", .body = sizes},
                                     {.id = "fmt ", .body = test::waveFormatBody({})},
                                     {.id = "JUNK", .statedSize = 0xFFFFFFFF}});
  const auto path = folder_.write("gap.rf64", head);
  std::filesystem::resize_file(path, head.size() + gap);  // sparse
  std::ofstream(path, std::ios::binary | std::ios::app)
      .write("data\xFF\xFF\xFF\xFF\0\0\0\0\0\x40\0\xC0", 16);
  const auto buffer = test::readWhole(path);
  ASSERT_TRUE(buffer);
  test::expectSamples(*buffer, {0, 0, 0.5, -0.5});
}

}  // namespace
}  // namespace orvane
