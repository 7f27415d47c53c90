// Gives arbitrary bytes to the recognition of containers.
#include <cstdint>

#include "fuzz/memory_file.h"
#include "fuzz/require.h"
#include "orvane/container/sniff/container_sniffer.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using orvane::SniffedContainer;
  using orvane::fuzz::require;
  static orvane::fuzz::MemoryFile memory;
  const orvane::InputFile file(memory.write(bytes, size));
  const SniffedContainer found = orvane::sniffContainer(file);
  require((found.kind == SniffedContainer::Kind::audio) == (found.fileTypeID != 0));
  require(found == orvane::sniffContainer(file));
  return 0;
}
