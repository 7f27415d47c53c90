#include "orvane/container/chunked/matlab_parser.h"

#include <algorithm>
#include <bit>
#include <string>

#include "orvane/container/chunked/header_fields.h"
#include "orvane/platform/error.h"

namespace orvane {
namespace {

using Kind = StoredSample::Kind;

/// How the numbers of a variable are stored; no bits for what is no number.
struct NumberType {
  Kind kind = Kind::signedInteger;
  std::uint32_t bits = 0;
};

/// One variable of either version.
struct Variable {
  std::string name{};
  std::uint32_t rows = 0;
  std::uint32_t columns = 0;
  NumberType type{};
  std::uint64_t dataOffset = 0;
  std::uint64_t end = 0;  ///< where the next variable begins
};

/// More than the names that audio has.
constexpr std::uint64_t kMaximumName = 64;

std::string nameAt(const InputFile& file, std::uint64_t offset, std::uint64_t size) {
  const std::uint64_t length = std::min(size, kMaximumName);
  const HeaderFields bytes(file, offset, length, std::endian::big);
  std::string name;
  for (std::size_t i = 0; i < length; ++i) name += static_cast<char>(bytes.u8(i));
  return name.substr(0, name.find('\0'));
}

double firstNumber(const InputFile& file, const Variable& variable, std::endian order) {
  const auto [kind, bits] = variable.type;
  const HeaderFields bytes(file, variable.dataOffset, bits / 8, order);
  const bool isFloat = kind == Kind::floatingPoint;
  switch (bits) {
    case 8:
      return bytes.u8(0);
    case 16:
      return bytes.u16(0);
    case 32:
      return isFloat ? static_cast<double>(std::bit_cast<float>(bytes.u32(0))) : bytes.u32(0);
    case 64:
      return bytes.float64(0);
    default:
      return 0;
  }
}

PCMStream streamOf(const InputFile& file, FourCC fileTypeID, const Variable& rate,
                   const Variable& audio, std::endian order) {
  if (rate.name != "samplerate" || rate.rows != 1 || rate.columns != 1 || audio.type.bits == 0)
    throw PlatformError(file.path(), "The file holds MATLAB variables other than audio");
  PCMStream stream;
  stream.description.fileTypeID = fileTypeID;
  setLinearPCM(stream, {.sampleRate = firstNumber(file, rate, order),
                        .channelCount = audio.rows,
                        .bits = audio.type.bits,
                        .kind = audio.type.kind,
                        .isBigEndian = order == std::endian::big});
  stream.description.layout = monoOrStereoLayout(audio.rows);
  if (audio.type.kind == Kind::unsignedInteger && audio.type.bits > 8)
    stream.refusal = "Unsigned samples of " + std::to_string(audio.type.bits) +
                     " bits are not supported in MATLAB files";
  const std::uint64_t frameBytes = stream.description.dataFormat.bytesPerFrame;
  setStatedAudioData(stream, file, audio.dataOffset, audio.columns * frameBytes);
  return stream;
}

/// Version 4: the digits of the first number are the byte order (thousands) and the type (tens).
Variable variable4(const InputFile& file, std::uint64_t offset, std::endian order) {
  constexpr std::uint64_t kHeaderBytes = 20;
  const HeaderFields head(file, offset, kHeaderBytes, order);
  const std::uint32_t nameBytes = head.u32(16);
  Variable variable{.name = nameAt(file, offset + kHeaderBytes, nameBytes),
                    .rows = head.u32(4),
                    .columns = head.u32(8),
                    .dataOffset = offset + kHeaderBytes + nameBytes};
  constexpr NumberType kTypes[] = {{Kind::floatingPoint, 64},   {Kind::floatingPoint, 32},
                                   {Kind::signedInteger, 32},   {Kind::signedInteger, 16},
                                   {Kind::unsignedInteger, 16}, {Kind::unsignedInteger, 8}};
  // Any other digit tells of a foreign machine or of text.
  const std::uint32_t type = head.u32(0) % 1000;
  if (type % 10 == 0 && type / 10 < std::size(kTypes)) variable.type = kTypes[type / 10];
  // The first variable is one number, so that this cannot overflow where it counts.
  variable.end = variable.dataOffset +
                 std::uint64_t{variable.rows} * variable.columns * (variable.type.bits / 8);
  return variable;
}

/// A typed piece of a version 5 file.
struct Element {
  std::uint32_t type = 0;
  std::uint64_t body = 0;
  std::uint64_t size = 0;
  std::uint64_t end = 0;
};

/// Elements of up to four bytes put them beside their size; longer ones are padded to eight bytes.
Element elementAt(const InputFile& file, std::uint64_t offset, std::endian order) {
  const HeaderFields tag(file, offset, 8, order);
  const std::uint32_t first = tag.u32(0);
  if (first >> 16 != 0)
    return {.type = first & 0xFFFF,
            .body = offset + 4,
            .size = std::min<std::uint64_t>(first >> 16, 4),
            .end = offset + 8};
  const std::uint64_t size = tag.u32(4);
  return {.type = first, .body = offset + 8, .size = size, .end = offset + 8 + (size + 7) / 8 * 8};
}

NumberType numberType5(std::uint32_t type) {
  switch (type) {
    case 1:
      return {Kind::signedInteger, 8};
    case 2:
      return {Kind::unsignedInteger, 8};
    case 3:
      return {Kind::signedInteger, 16};
    case 4:
      return {Kind::unsignedInteger, 16};
    case 5:
      return {Kind::signedInteger, 32};
    case 6:
      return {Kind::unsignedInteger, 32};
    case 7:
      return {Kind::floatingPoint, 32};
    case 9:
      return {Kind::floatingPoint, 64};
    default:
      return {};
  }
}

/// Version 5: a matrix element that holds flags, dimensions, name and numbers.
Variable variable5(const InputFile& file, std::uint64_t offset, std::endian order) {
  constexpr std::uint32_t kMatrix = 14;
  constexpr std::uint64_t kTwoDimensions = 8;
  const Element matrix = elementAt(file, offset, order);
  if (matrix.type != kMatrix) return {};
  const Element flags = elementAt(file, matrix.body, order);
  const Element dimensions = elementAt(file, flags.end, order);
  const Element name = elementAt(file, dimensions.end, order);
  const Element numbers = elementAt(file, name.end, order);
  if (dimensions.size != kTwoDimensions) return {};
  const HeaderFields sizes(file, dimensions.body, kTwoDimensions, order);
  return {.name = nameAt(file, name.body, name.size),
          .rows = sizes.u32(0),
          .columns = sizes.u32(4),
          .type = numberType5(numbers.type),
          .dataOffset = numbers.body,
          .end = matrix.end};
}

}  // namespace

PCMStream parseMATLAB4(const InputFile& file, std::uint64_t start) {
  // A first number of 0 is double precision in little-endian order.
  const bool isLittle = HeaderFields(file, start, 4, std::endian::little).u32(0) == 0;
  const std::endian order = isLittle ? std::endian::little : std::endian::big;
  const Variable rate = variable4(file, start, order);
  return streamOf(file, fourCCFrom("MAT4"), rate, variable4(file, rate.end, order), order);
}

PCMStream parseMATLAB5(const InputFile& file, std::uint64_t start) {
  constexpr std::uint64_t kHeaderBytes = 128;
  const HeaderFields mark(file, start + kHeaderBytes - 2, 2, std::endian::big);
  const bool isLittle = mark.u16(0) == 0x494D;  // "IM", turned round
  const std::endian order = isLittle ? std::endian::little : std::endian::big;
  const Variable rate = variable5(file, start + kHeaderBytes, order);
  return streamOf(file, fourCCFrom("MAT5"), rate, variable5(file, rate.end, order), order);
}

}  // namespace orvane
