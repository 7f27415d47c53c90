#pragma once

#include <string>

#include "orvane/platform/error.h"
#include "orvane/platform/export.h"

namespace orvane {

/// A JSON text is not the record that it should be.
class ORVANE_API DecodingError : public Error {
 public:
  enum class Case {
    keyNotFound,    ///< a required key is missing
    typeMismatch,   ///< a value is of another type than the record's field
    dataCorrupted,  ///< no JSON at all, or a value that the field cannot hold
  };

  DecodingError(Case kind, std::string keyPath, const std::string& description);
  ~DecodingError() override;

  Case kind() const noexcept { return kind_; }
  /// Where in the document: "chapters.entries[3].name"; empty for the document itself.
  const std::string& keyPath() const noexcept { return keyPath_; }

  bool operator==(const DecodingError& other) const noexcept;

 private:
  Case kind_;
  std::string keyPath_;
};

}  // namespace orvane
