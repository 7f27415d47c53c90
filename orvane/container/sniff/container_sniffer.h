#pragma once

#include <cstdint>

#include "orvane/platform/export.h"
#include "orvane/platform/four_cc.h"
#include "orvane/platform/input_file.h"

namespace orvane {

/// What the first bytes of a file show.
struct SniffedContainer {
  enum class Kind {
    audio,     ///< `fileTypeID` names the container
    unknown,   ///< nothing that has a signature
    text,      ///< text of some sort
    playlist,  ///< text that points to other files
  };
  Kind kind = Kind::unknown;
  FourCC fileTypeID = 0;
  std::uint64_t start = 0;  ///< where the container begins, behind a leading ID3v2 tag

  bool operator==(const SniffedContainer&) const = default;
};

/// Recognises a file by its bytes alone.
ORVANE_TESTING_API SniffedContainer sniffContainer(const InputFile& file);

}  // namespace orvane
