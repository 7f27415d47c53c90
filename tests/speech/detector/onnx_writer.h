#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "orvane/speech/detector/onnx_weights.h"

namespace orvane::test {

inline std::string varint(std::uint64_t value) {
  std::string bytes;
  for (; value >= 0x80U; value >>= 7U) bytes.push_back(static_cast<char>(value | 0x80U));
  bytes.push_back(static_cast<char>(value));
  return bytes;
}

inline std::string field(std::uint64_t number, std::uint64_t value) {
  return varint(number << 3U) + varint(value);
}

inline std::string field(std::uint64_t number, std::string_view bytes) {
  return varint(number << 3U | 2U) + varint(bytes.size()) + std::string(bytes);
}

inline std::string node(std::string_view operatorName, std::string_view output,
                        std::string_view attributes) {
  return field(2, output) + field(4, operatorName) + std::string(attributes);
}

/// A graph that holds one "If" whose branch is `graph`.
inline std::string branchNode(std::string_view graph) {
  return field(1, node("If", "out", field(5, field(1, "then_branch") + field(6, graph))));
}

/// Where a model file keeps its weights.
enum class Layout { branch, prefixedConstants, initializers };

/// Writes model files of the network's tensors as ONNX does, and broken ones.
class OnnxWriter {
 public:
  enum class Defect {
    none,
    transposed,
    extraDimension,
    hugeDimension,
    doubleType,
    shortData,
    longData,
    noData
  };

  OnnxWriter(SileroWeights weights, Layout layout)
      : weights_(std::move(weights)), layout_(layout) {}

  std::optional<SileroWeights> twin{};  ///< also written, as the 8 kHz branch
  std::size_t leftOut = kSileroTensorCount;
  std::size_t defective = kSileroTensorCount;
  Defect defect = Defect::none;
  bool packsDimensions = false;
  bool usesFloatData = false;
  std::size_t dataLimit = ~std::size_t{0};  ///< bytes of each tensor's data that are written

  std::string file() const {
    std::string graph;
    if (layout_ == Layout::branch) {
      const std::string then = field(1, "then_branch") + field(6, constants(weights_, "If_0_then"));
      const std::string other =
          twin ? field(1, "else_branch") + field(6, constants(*twin, "If_0_else")) : "";
      graph = field(1, node("If", "out", (twin ? field(5, other) : "") + field(5, then)));
    } else if (layout_ == Layout::prefixedConstants) {
      if (twin) graph += constants(*twin, "F0::If_0_else");
      graph += constants(weights_, "F0::If_0_then");
    } else {
      if (twin) graph += initializers(*twin, "model_8k.");
      graph += initializers(weights_, "model.");
    }
    return field(1, 8) + field(2, "writer") + field(7, graph + field(2, "graph"));
  }

 private:
  /// In the branch layout the tensor has the short name, else the node's output tells which it is.
  std::string constants(const SileroWeights& weights, const std::string& branch) const {
    std::string graph = field(1, node("Identity", "x", ""));
    for (std::size_t i = 0; i < kSileroTensorCount; ++i) {
      if (i == leftOut) continue;
      const std::string name = sileroTensorShapes()[i].name;
      const std::string value = tensor(weights, i, layout_ == Layout::branch ? name : "");
      graph += field(1, node("Constant", branch + "_branch__Inline_0__" + name,
                             field(5, field(1, "value") + field(5, value))));
    }
    return graph;
  }

  std::string initializers(const SileroWeights& weights, const std::string& prefix) const {
    std::string graph;
    for (std::size_t i = 0; i < kSileroTensorCount; ++i)
      if (i != leftOut)
        graph += field(5, tensor(weights, i, prefix + sileroTensorShapes()[i].name));
    return graph;
  }

  std::string tensor(const SileroWeights& weights, std::size_t index,
                     const std::string& name) const {
    const auto& shape = sileroTensorShapes()[index];
    std::vector<std::uint64_t> dimensions(shape.dimensions.begin(),
                                          shape.dimensions.begin() + shape.rank);
    std::string data(weights.tensors[index].size() * sizeof(float), '\0');
    std::memcpy(data.data(), weights.tensors[index].data(), data.size());
    if (data.size() > dataLimit) data.resize(dataLimit);
    std::uint64_t type = 1;
    if (index == defective) {
      switch (defect) {
        case Defect::none:
          break;
        case Defect::transposed:
          std::swap(dimensions.front(), dimensions.back());
          break;
        case Defect::extraDimension:
          dimensions.push_back(1);
          break;
        case Defect::hugeDimension:
          dimensions.front() = ~std::uint64_t{0};
          break;
        case Defect::doubleType:
          type = 11;
          break;
        case Defect::shortData:
          data.pop_back();
          break;
        case Defect::longData:
          data += "more";
          break;
        case Defect::noData:
          data.clear();
          break;
      }
    }
    std::string bytes;
    std::string packed;
    for (const std::uint64_t size : dimensions) {
      packed += varint(size);
      if (!packsDimensions) bytes += field(1, size);
    }
    if (packsDimensions) bytes += field(1, packed);
    bytes += field(2, type);
    if (!name.empty()) bytes += field(8, name);
    return bytes + field(usesFloatData ? 4 : 9, data);
  }

  SileroWeights weights_;
  Layout layout_;
};

}  // namespace orvane::test
