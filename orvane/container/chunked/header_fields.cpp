#include "orvane/container/chunked/header_fields.h"

#include <algorithm>
#include <cmath>

#include "orvane/platform/error.h"

namespace orvane {

HeaderFields::HeaderFields(const InputFile& file, std::uint64_t offset, std::uint64_t size,
                           std::endian order)
    : file_(&file), order_(order) {
  const std::uint64_t present = offset < file.size() ? file.size() - offset : 0;
  bytes_.resize(static_cast<std::size_t>(std::min(size, present)));
  bytes_.resize(file.readAt(offset, bytes_));
}

const std::byte* HeaderFields::checked(std::size_t at, std::size_t size) const {
  if (at > bytes_.size() || size > bytes_.size() - at)
    throw PlatformError(file_->path(), "The file's header is cut short");
  return bytes_.data() + at;
}

std::uint64_t HeaderFields::unsignedAt(std::size_t at, std::size_t size) const {
  const std::byte* const bytes = checked(at, size);
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < size; ++i) {
    const std::size_t position = order_ == std::endian::big ? i : size - 1 - i;
    value = (value << 8) | std::to_integer<std::uint64_t>(bytes[position]);
  }
  return value;
}

double HeaderFields::float80(std::size_t at) const {
  const std::uint16_t head = u16(at);
  const std::uint64_t mantissa = u64(at + 2);
  const int exponent = head & 0x7FFF;
  // The mantissa's highest bit counts 1; it has 63 more below it.
  const double magnitude = std::ldexp(static_cast<double>(mantissa), exponent - 16383 - 63);
  return (head & 0x8000) != 0 ? -magnitude : magnitude;
}

FourCC HeaderFields::fourCC(std::size_t at) const {
  const std::byte* const bytes = checked(at, 4);
  FourCC code = 0;
  for (std::size_t i = 0; i < 4; ++i) code = (code << 8) | std::to_integer<FourCC>(bytes[i]);
  return code;
}

std::string HeaderFields::text(std::size_t at, std::size_t size) const {
  return {reinterpret_cast<const char*>(checked(at, size)), size};
}

}  // namespace orvane
