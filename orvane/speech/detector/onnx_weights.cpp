#include "orvane/speech/detector/onnx_weights.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string_view>

#include "orvane/platform/input_file.h"

namespace orvane {
namespace {

using Bytes = std::span<const std::byte>;

static_assert(std::endian::native == std::endian::little, "tensors are stored little-endian");

// Field numbers of the ONNX messages (onnx.proto, IR version 8 to 10).
constexpr std::uint64_t kModelGraph = 7;
constexpr std::uint64_t kGraphNode = 1;
constexpr std::uint64_t kGraphInitializer = 5;
constexpr std::uint64_t kNodeOutput = 2;
constexpr std::uint64_t kNodeOperator = 4;
constexpr std::uint64_t kNodeAttribute = 5;
constexpr std::uint64_t kAttributeName = 1;
constexpr std::uint64_t kAttributeTensor = 5;
constexpr std::uint64_t kAttributeGraph = 6;
constexpr std::uint64_t kTensorDimension = 1;
constexpr std::uint64_t kTensorDataType = 2;
constexpr std::uint64_t kTensorFloatData = 4;
constexpr std::uint64_t kTensorName = 8;
constexpr std::uint64_t kTensorRawData = 9;
constexpr std::uint64_t kDataTypeFloat = 1;

/// The wire format does not add up; becomes a `SpeechModelError` at the entrance.
struct Damaged {};

/// One field of a protobuf message. Length-delimited fields have `bytes`, varints `value`.
struct Field {
  std::uint64_t number = 0;
  std::uint64_t value = 0;
  Bytes bytes{};
  bool isDelimited = false;

  std::string_view text() const {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
  }
};

/// Walks the fields of one message without copying.
class MessageReader {
 public:
  explicit MessageReader(Bytes bytes) : rest_(bytes) {}

  bool atEnd() const { return rest_.empty(); }

  std::uint64_t varint() {
    std::uint64_t value = 0;
    for (unsigned shift = 0; shift < 64; shift += 7) {
      const auto byte = std::to_integer<std::uint64_t>(take(1)[0]);
      value |= (byte & 0x7FU) << shift;
      if (byte < 0x80U) return value;
    }
    throw Damaged{};
  }

  Field next() {
    const std::uint64_t key = varint();
    Field field{.number = key >> 3U};
    switch (key & 7U) {
      case 0:
        field.value = varint();
        break;
      case 1:
        take(8);
        break;
      case 2:
        field.bytes = take(varint());
        field.isDelimited = true;
        break;
      case 5:
        take(4);
        break;
      default:
        throw Damaged{};
    }
    return field;
  }

 private:
  Bytes take(std::uint64_t count) {
    if (count > rest_.size()) throw Damaged{};
    const Bytes taken = rest_.first(static_cast<std::size_t>(count));
    rest_ = rest_.subspan(static_cast<std::size_t>(count));
    return taken;
  }

  Bytes rest_;
};

/// A tensor as it lies in the file.
struct StoredTensor {
  std::string_view name{};
  std::array<std::uint64_t, 3> dimensions{};
  std::size_t rank = 0;
  std::uint64_t dataType = 0;
  Bytes data{};

  void addDimension(std::uint64_t size) {
    if (rank < dimensions.size()) dimensions[rank] = size;
    ++rank;
  }
};

StoredTensor readTensor(Bytes bytes) {
  StoredTensor tensor;
  for (MessageReader reader(bytes); !reader.atEnd();) {
    const Field field = reader.next();
    switch (field.number) {
      case kTensorDimension:
        if (field.isDelimited) {
          for (MessageReader packed(field.bytes); !packed.atEnd();)
            tensor.addDimension(packed.varint());
        } else {
          tensor.addDimension(field.value);
        }
        break;
      case kTensorDataType:
        tensor.dataType = field.value;
        break;
      case kTensorName:
        tensor.name = field.text();
        break;
      case kTensorFloatData:
      case kTensorRawData:
        tensor.data = field.bytes;
        break;
      default:
        break;
    }
  }
  return tensor;
}

/// The tensors found so far, by their place in the table of shapes.
using Findings = std::array<std::optional<StoredTensor>, kSileroTensorCount>;

/// Which tensor a stored name means. The published files prefix names with the model or with the
/// branch they were inlined from; the 8 kHz twin has other prefixes and must not match.
std::optional<std::size_t> tensorIndex(std::string_view storedName) {
  const auto& shapes = sileroTensorShapes();
  for (std::size_t i = 0; i < shapes.size(); ++i) {
    const std::string_view name = shapes[i].name;
    if (!storedName.ends_with(name)) continue;
    const std::string_view prefix = storedName.substr(0, storedName.size() - name.size());
    if (prefix.empty() || prefix == "model." || prefix.ends_with("then_branch__Inline_0__"))
      return i;
  }
  return std::nullopt;
}

/// Keeps a tensor under the first of the two names that is known; the first occurrence wins.
void keep(const StoredTensor& tensor, std::string_view otherName, Findings& findings) {
  auto index = tensorIndex(tensor.name);
  if (!index) index = tensorIndex(otherName);
  if (index && !findings[*index]) findings[*index] = tensor;
}

void readGraph(Bytes bytes, bool isBranch, Findings& findings);

void readNode(Bytes bytes, bool isBranch, Findings& findings) {
  std::string_view operatorName;
  std::string_view outputName;
  for (MessageReader reader(bytes); !reader.atEnd();) {
    const Field field = reader.next();
    if (field.number == kNodeOperator) operatorName = field.text();
    if (field.number == kNodeOutput && outputName.empty()) outputName = field.text();
  }
  const bool isConstant = operatorName == "Constant";
  if (!isConstant && (isBranch || operatorName != "If")) return;

  for (MessageReader reader(bytes); !reader.atEnd();) {
    const Field field = reader.next();
    if (field.number != kNodeAttribute) continue;
    std::string_view attribute;
    std::optional<Bytes> value;
    for (MessageReader parts(field.bytes); !parts.atEnd();) {
      const Field part = parts.next();
      if (part.number == kAttributeName) attribute = part.text();
      if (part.number == (isConstant ? kAttributeTensor : kAttributeGraph)) value = part.bytes;
    }
    if (!value) continue;
    if (isConstant && attribute == "value") keep(readTensor(*value), outputName, findings);
    if (!isConstant && attribute == "then_branch") readGraph(*value, true, findings);
  }
}

/// Branches nested in the 16 kHz branch hold no weights and are not entered.
void readGraph(Bytes bytes, bool isBranch, Findings& findings) {
  for (MessageReader reader(bytes); !reader.atEnd();) {
    const Field field = reader.next();
    if (field.number == kGraphNode) readNode(field.bytes, isBranch, findings);
    if (field.number == kGraphInitializer) keep(readTensor(field.bytes), {}, findings);
  }
}

bool hasShape(const StoredTensor& tensor, const SileroTensorShape& shape) {
  return tensor.rank == shape.rank &&
         std::equal(shape.dimensions.begin(), shape.dimensions.begin() + shape.rank,
                    tensor.dimensions.begin());
}

}  // namespace

SpeechModelError::SpeechModelError(const std::filesystem::path& file, const std::string& reason)
    : Error(file.filename().string() + ": " + reason) {}
SpeechModelError::~SpeechModelError() = default;

const std::array<SileroTensorShape, kSileroTensorCount>& sileroTensorShapes() noexcept {
  static constexpr std::array<SileroTensorShape, kSileroTensorCount> kShapes{{
      {"stft.forward_basis_buffer", {258, 1, 256}, 3},
      {"encoder.0.reparam_conv.weight", {128, 129, 3}, 3},
      {"encoder.0.reparam_conv.bias", {128}, 1},
      {"encoder.1.reparam_conv.weight", {64, 128, 3}, 3},
      {"encoder.1.reparam_conv.bias", {64}, 1},
      {"encoder.2.reparam_conv.weight", {64, 64, 3}, 3},
      {"encoder.2.reparam_conv.bias", {64}, 1},
      {"encoder.3.reparam_conv.weight", {128, 64, 3}, 3},
      {"encoder.3.reparam_conv.bias", {128}, 1},
      {"decoder.rnn.weight_ih", {512, 128}, 2},
      {"decoder.rnn.weight_hh", {512, 128}, 2},
      {"decoder.rnn.bias_ih", {512}, 1},
      {"decoder.rnn.bias_hh", {512}, 1},
      {"decoder.decoder.2.weight", {1, 128, 1}, 3},
      {"decoder.decoder.2.bias", {1}, 1},
  }};
  return kShapes;
}

SileroWeights parseSileroWeights(Bytes bytes, const std::filesystem::path& file) {
  Findings findings;
  try {
    for (MessageReader reader(bytes); !reader.atEnd();) {
      const Field field = reader.next();
      if (field.number == kModelGraph) readGraph(field.bytes, false, findings);
    }
  } catch (const Damaged&) {
    throw SpeechModelError(file, "The speech model is damaged.");
  }

  // Everything is checked before anything is copied.
  const auto& shapes = sileroTensorShapes();
  for (std::size_t i = 0; i < shapes.size(); ++i) {
    const std::string name = shapes[i].name;
    if (!findings[i]) throw SpeechModelError(file, "The speech model lacks \"" + name + "\".");
    const StoredTensor& tensor = *findings[i];
    if (tensor.dataType != kDataTypeFloat || !hasShape(tensor, shapes[i]) ||
        tensor.data.size() != shapes[i].elementCount() * sizeof(float))
      throw SpeechModelError(file, "\"" + name + "\" of the speech model has the wrong shape.");
  }
  SileroWeights weights;
  for (std::size_t i = 0; i < shapes.size(); ++i) {
    auto& values = weights.tensors[i];
    values.resize(shapes[i].elementCount());
    std::memcpy(values.data(), findings[i]->data.data(), findings[i]->data.size());
    if (!std::all_of(values.begin(), values.end(), [](float v) { return std::isfinite(v); }))
      throw SpeechModelError(file, "The speech model is damaged.");
  }
  return weights;
}

SileroWeights loadSileroWeights(const std::filesystem::path& file) {
  const InputFile input(file);
  if (input.size() > kMaximumModelBytes)
    throw SpeechModelError(file, "The file is too large for a speech model.");
  std::vector<std::byte> bytes(static_cast<std::size_t>(input.size()));
  input.readExactlyAt(0, bytes);
  return parseSileroWeights(bytes, file);
}

}  // namespace orvane
