#include "orvane/container/side_chunks.h"

#include <algorithm>

#include "orvane/container/container_table.h"
#include "orvane/container/sniff/container_sniffer.h"
#include "orvane/platform/error.h"

namespace orvane {
namespace {

/// What makes the audio, in all containers, and filling.
constexpr FourCC kOthers[] = {
    fourCCFrom("fmt "), fourCCFrom("data"), fourCCFrom("ds64"), fourCCFrom("fact"),
    fourCCFrom("FVER"), fourCCFrom("COMM"), fourCCFrom("SSND"), fourCCFrom("CHAN"),
    fourCCFrom("desc"), fourCCFrom("chan"), fourCCFrom("pakt"), fourCCFrom("kuki"),
    fourCCFrom("JUNK"), fourCCFrom("junk"), fourCCFrom("PAD "), fourCCFrom("FLLR"),
    fourCCFrom("free"), fourCCFrom("wavl"), fourCCFrom("slnt")};

}  // namespace

std::vector<FourCC> sideChunks(const InputFile& file) {
  std::vector<FourCC> result;
  try {
    const SniffedContainer container = sniffContainer(file);
    const ContainerKind* const kind = containerKind(container.fileTypeID);
    if (kind == nullptr || kind->parse == nullptr) return {};
    for (const Chunk& chunk : kind->parse(file, container.start).chunkList.chunks)
      if (std::ranges::find(kOthers, chunk.id) == std::end(kOthers) &&
          std::ranges::find(result, chunk.id) == result.end())
        result.push_back(chunk.id);
  } catch (const PlatformError&) {
    // A header that makes no sense has told no more than what is found by then.
  }
  return result;
}

}  // namespace orvane
