#include "orvane/platform/metadata_losses.h"

namespace orvane {

std::vector<std::string> MetadataLosses::descriptions() const {
  std::vector<std::string> texts;
  if (owner) texts.emplace_back("the owner");
  if (group) texts.emplace_back("the group");
  if (mode) texts.emplace_back("some access rights");
  if (accessList) texts.emplace_back("the access list");
  for (const auto& attribute : attributes) texts.push_back("the attribute " + attribute);
  if (hardLinks > 0)
    texts.push_back(hardLinks == 1
                        ? "the hard link under another name"
                        : "the hard links under " + std::to_string(hardLinks) + " other names");
  return texts;
}

}  // namespace orvane
