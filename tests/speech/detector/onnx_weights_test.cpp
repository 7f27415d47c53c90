#include "orvane/speech/detector/onnx_weights.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <limits>
#include <optional>

#include "tests/speech/detector/onnx_writer.h"
#include "tests/speech/detector/speech_test_support.h"
#include "tests/support/temporary_directory.h"

namespace orvane {
namespace {

using test::Layout;
using test::OnnxWriter;

SileroWeights parse(const std::string& bytes) {
  return parseSileroWeights(std::as_bytes(std::span(bytes)), "model.onnx");
}

/// The reason why a file is refused; absent when it loads.
std::optional<std::string> refusal(const std::string& bytes) {
  try {
    parse(bytes);
    return std::nullopt;
  } catch (const SpeechModelError& error) {
    return error.errorDescription();
  }
}

std::string readFile(const std::filesystem::path& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

TEST(OnnxWeights, FindsThePublishedWeights) {
  const auto current = loadSileroWeights(test::currentModel());
  const auto older = loadSileroWeights(test::olderModel());
  EXPECT_NE(current, older);
  for (std::size_t i = 0; i < kSileroTensorCount; ++i) {
    EXPECT_EQ(current.tensors[i].size(), sileroTensorShapes()[i].elementCount());
    EXPECT_EQ(older.tensors[i].size(), sileroTensorShapes()[i].elementCount());
  }
  // The basis is fixed, not learned.
  EXPECT_EQ(current[SileroTensor::stftBasis], older[SileroTensor::stftBasis]);
}

TEST(OnnxWeights, ReadsEveryPublishedLayout) {
  const auto weights = test::randomWeights(1);
  for (const Layout layout : {Layout::branch, Layout::prefixedConstants, Layout::initializers}) {
    OnnxWriter writer(weights, layout);
    EXPECT_EQ(parse(writer.file()), weights);
    writer.packsDimensions = true;
    EXPECT_EQ(parse(writer.file()), weights);
    writer.usesFloatData = true;
    EXPECT_EQ(parse(writer.file()), weights);
  }
}

TEST(OnnxWeights, TakesThe16kHzBranchOnly) {
  // The twin for 8 kHz has tensors of the same names, some of the same shapes; the writer stores it
  // first where the layout allows it.
  const auto weights = test::randomWeights(1);
  for (const Layout layout : {Layout::branch, Layout::prefixedConstants, Layout::initializers}) {
    OnnxWriter writer(weights, layout);
    writer.twin = test::randomWeights(2);
    EXPECT_EQ(parse(writer.file()), weights);
  }
}

TEST(OnnxWeights, RefusesAFileWithoutOneOfTheTensors) {
  const auto weights = test::randomWeights(1);
  for (std::size_t i = 0; i < kSileroTensorCount; ++i) {
    OnnxWriter writer(weights, Layout::initializers);
    writer.leftOut = i;
    EXPECT_EQ(refusal(writer.file()), "model.onnx: The speech model lacks \"" +
                                          std::string(sileroTensorShapes()[i].name) + "\".");
  }
}

TEST(OnnxWeights, RefusesWrongShapesTypesAndSizes) {
  const auto weights = test::randomWeights(1);
  for (std::size_t i = 0; i < kSileroTensorCount; ++i) {
    for (const auto defect : {OnnxWriter::Defect::transposed, OnnxWriter::Defect::extraDimension,
                              OnnxWriter::Defect::hugeDimension, OnnxWriter::Defect::doubleType,
                              OnnxWriter::Defect::shortData, OnnxWriter::Defect::longData,
                              OnnxWriter::Defect::noData}) {
      OnnxWriter writer(weights, Layout::branch);
      writer.defective = i;
      writer.defect = defect;
      const auto& shape = sileroTensorShapes()[i];
      const bool staysValid = defect == OnnxWriter::Defect::transposed &&
                              shape.dimensions[0] == shape.dimensions[shape.rank - 1];
      EXPECT_EQ(refusal(writer.file()).has_value(), !staysValid)
          << sileroTensorShapes()[i].name << " " << static_cast<int>(defect);
    }
  }
}

TEST(OnnxWeights, RefusesWeightsThatAreNotFinite) {
  auto weights = test::randomWeights(1);
  weights[SileroTensor::headBias][0] = std::numeric_limits<float>::quiet_NaN();
  EXPECT_EQ(refusal(OnnxWriter(weights, Layout::branch).file()),
            "model.onnx: The speech model is damaged.");
}

TEST(OnnxWeights, RefusesAPublishedFileCutAnywhere) {
  const std::string whole = readFile(test::currentModel());
  ASSERT_FALSE(refusal(whole));
  for (std::size_t part = 0; part < 500; ++part)
    EXPECT_TRUE(refusal(whole.substr(0, whole.size() * part / 500))) << part;
  EXPECT_TRUE(refusal(whole.substr(0, whole.size() - 1)));
}

TEST(OnnxWeights, SurvivesFlippedBytes) {
  const std::string whole = readFile(test::currentModel());
  std::mt19937 random(4);
  std::size_t refused = 0;
  for (int round = 0; round < 300; ++round) {
    std::string flipped = whole;
    for (int i = 0; i < 20; ++i)
      flipped[random() % flipped.size()] ^= static_cast<char>(1 + random() % 255);
    // Structure lies in the first bytes and between the tensors; most bytes are weights.
    flipped[random() % 400] ^= static_cast<char>(1 + random() % 255);
    if (refusal(flipped)) ++refused;
  }
  EXPECT_GT(refused, 50U);
}

TEST(OnnxWeights, RefusesLengthsBeyondTheFile) {
  // A graph that claims 2^63 bytes, a varint without end, groups, a bare key.
  for (const std::string& bytes :
       {std::string("\x3a\xff\xff\xff\xff\xff\xff\xff\xff\x7f", 10), std::string(40, '\xff'),
        std::string("\x3b", 1), std::string("\x3a", 1), std::string("\x3a\x05", 2)})
    EXPECT_EQ(refusal(bytes), "model.onnx: The speech model is damaged.");
}

TEST(OnnxWeights, RefusesOtherFiles) {
  EXPECT_TRUE(refusal(""));
  EXPECT_TRUE(refusal("{\"json\": true}"));
  EXPECT_TRUE(refusal(std::string(100000, '\0')));
  std::string nested;  // graphs in branches in graphs …, 5,000 deep
  for (int i = 0; i < 5000; ++i) nested = test::branchNode(nested);
  EXPECT_TRUE(refusal(test::field(7, nested)));
}

TEST(OnnxWeights, RefusesWhatIsNoOrdinaryFile) {
  const test::TemporaryDirectory folder;
  EXPECT_THROW(loadSileroWeights(folder / "missing.onnx"), PlatformError);
  EXPECT_THROW(loadSileroWeights(folder.path()), PlatformError);
  const auto sparse = folder.write("sparse.onnx", std::string_view("x"));
  std::filesystem::resize_file(sparse, std::uintmax_t{1} << 40U);
  try {
    loadSileroWeights(sparse);
    FAIL();
  } catch (const SpeechModelError& error) {
    EXPECT_EQ(error.errorDescription(), "sparse.onnx: The file is too large for a speech model.");
  }
}

}  // namespace
}  // namespace orvane
