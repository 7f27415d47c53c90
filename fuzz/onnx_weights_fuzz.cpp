// Any bytes as a model file, and well-formed ones without their weights with some bytes changed:
// weights of the right sizes, or a SpeechModelError.
#include <fuzzer/FuzzedDataProvider.h>

#include <array>
#include <cstdlib>
#include <span>
#include <string>

#include "orvane/speech/detector/onnx_weights.h"
#include "tests/speech/detector/onnx_writer.h"
#include "tests/speech/detector/speech_test_support.h"

namespace {

using orvane::test::Layout;
using orvane::test::OnnxWriter;

std::string skeleton(Layout layout, bool hasTwin, bool packsDimensions) {
  OnnxWriter writer(orvane::test::randomWeights(1), layout);
  writer.dataLimit = 8;
  writer.packsDimensions = packsDimensions;
  if (hasTwin) writer.twin = orvane::test::randomWeights(2);
  return writer.file();
}

std::string changedSkeleton(FuzzedDataProvider& provider) {
  static const std::array<std::string, 4> kSkeletons{
      skeleton(Layout::branch, true, false), skeleton(Layout::branch, false, true),
      skeleton(Layout::prefixedConstants, false, false),
      skeleton(Layout::initializers, true, true)};
  std::string file = provider.PickValueInArray(kSkeletons);
  while (provider.remaining_bytes() > 3) {
    const auto at = provider.ConsumeIntegralInRange<std::size_t>(0, file.size() - 1);
    if (provider.ConsumeBool()) {
      file[at] = provider.ConsumeIntegral<char>();
    } else {
      file.insert(at, provider.ConsumeRandomLengthString(12));
    }
  }
  return file;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider provider(data, size);
  const std::string file =
      provider.ConsumeBool() ? changedSkeleton(provider) : provider.ConsumeRemainingBytesAsString();
  try {
    const auto weights = orvane::parseSileroWeights(std::as_bytes(std::span(file)), "model.onnx");
    for (std::size_t i = 0; i < orvane::kSileroTensorCount; ++i)
      if (weights.tensors[i].size() != orvane::sileroTensorShapes()[i].elementCount()) std::abort();
  } catch (const orvane::SpeechModelError&) {
  }
  return 0;
}
