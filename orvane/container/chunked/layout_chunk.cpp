#include "orvane/container/chunked/layout_chunk.h"

#include <algorithm>
#include <utility>

#include "orvane/container/chunked/header_bytes.h"
#include "orvane/container/chunked/header_fields.h"
#include "orvane/container/pcm_stream.h"

namespace orvane {
namespace {

constexpr std::uint64_t kHeadBytes = 12;
constexpr std::uint64_t kDescriptionBytes = 20;  // label, flags, three coordinates

}  // namespace

std::optional<ChannelLayout> readLayoutChunk(const InputFile& file, const Chunk& chunk,
                                             std::uint32_t channelCount) {
  if (channelCount > kMaximumChannels) return {};
  const std::uint64_t useful = kHeadBytes + kDescriptionBytes * channelCount;
  const HeaderFields body(file, chunk.bodyOffset, std::min(chunk.size, useful), std::endian::big);
  if (body.size() < kHeadBytes) return {};
  const ChannelLayoutTag tag = body.u32(0);
  if (tag == ChannelLayoutTags::useChannelBitmap)
    return ChannelLayout::fromBitmap(body.u32(4), channelCount);
  if (tag == ChannelLayoutTags::useChannelDescriptions) {
    // Fewer descriptions than channels leave open which channels they mean.
    if (body.u32(8) < channelCount || body.size() < useful) return {};
    std::vector<ChannelLabel> labels;
    for (std::uint32_t c = 0; c < channelCount; ++c)
      labels.push_back(ChannelLabel{body.u32(kHeadBytes + kDescriptionBytes * c)});
    return ChannelLayout::fromLabels(std::move(labels));
  }
  // A tag states its channel count; its labels are only made when that is the stream's.
  if ((tag & 0xFFFF) != channelCount) return {};
  return ChannelLayout::fromTag(tag);
}

std::vector<std::byte> layoutChunkBody(const ChannelLayout& layout) {
  const bool isDescribed = layout.tag == ChannelLayoutTags::useChannelDescriptions;
  HeaderBytes body(std::endian::big);
  body.u32(layout.tag).u32(0).u32(isDescribed ? layout.labels.size() : 0);
  if (isDescribed)
    for (const ChannelLabel label : layout.labels)
      body.u32(static_cast<std::uint32_t>(label)).u32(0).u32(0).u32(0).u32(0);
  return body.bytes();
}

}  // namespace orvane
