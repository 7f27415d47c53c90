#pragma once

namespace orvane::json {

/// How a JSON document is written; what it says is the same in every style.
struct Style {
  enum class Numbers {
    shortest,  ///< the fewest characters: 48000, 1e-04, 1e+20
    plain,     ///< an exponent only below 1e-4 and from 1e15 on: 48000, 0.0001, 1e+20
    real,      ///< the same, and never to be taken for an integer: 48000.0
  };

  bool isPretty = false;      ///< a line per key and element, two spaces per level, for people
  bool sortsKeys = false;     ///< by alphabet at every level; else in the order of the fields
  bool isASCII = false;       ///< all other characters as escapes
  bool mustBeFinite = false;  ///< `EncodingError` for any other number, which would be null
  Numbers numbers = Numbers::shortest;
};

}  // namespace orvane::json
