#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <string_view>

#include "tests/support/whole_file.h"

namespace orvane::test {

/// Compares a text with the file "<name>.accepted" of the folder. When they differ, the text is
/// written beside it as "<name>.received", for a person to look at and to rename.
inline void expectAccepted(const std::filesystem::path& folder, const std::string& name,
                           std::string_view text) {
  const auto accepted = folder / (name + ".accepted");
  const auto received = folder / (name + ".received");
  if (std::filesystem::exists(accepted) && readFile(accepted) == text) {
    std::filesystem::remove(received);
    return;
  }
  writeFile(received, text);
  ADD_FAILURE() << received << " differs from what is accepted";
}

}  // namespace orvane::test
