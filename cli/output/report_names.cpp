#include <algorithm>
#include <map>

#include "cli/output/report_outputs.h"
#include "cli/usage_error.h"

namespace orvane::cli {
namespace {

/// The last `count` parts of a path as one file name.
std::string lastParts(const std::vector<std::string>& parts, std::size_t count) {
  std::string name;
  for (std::size_t i = parts.size() - count; i < parts.size(); ++i)
    name += (name.empty() ? "" : "-") + parts[i];
  return name;
}

std::vector<std::string> partsOf(const InputName& input) {
  if (input.isStandardInput()) return {"stdin"};
  std::vector<std::string> parts;
  const auto path = std::filesystem::absolute(input.path).lexically_normal();
  for (const auto& part : path.relative_path()) parts.push_back(part.string());
  return parts;
}

}  // namespace

std::vector<std::string> reportNames(std::span<const InputName> inputs) {
  std::vector<std::vector<std::string>> parts;
  for (const auto& input : inputs) parts.push_back(partsOf(input));
  std::vector<std::size_t> counts(inputs.size(), 1);
  while (true) {
    std::map<std::string, std::vector<std::size_t>> users;
    for (std::size_t i = 0; i < inputs.size(); ++i)
      users[lastParts(parts[i], std::min(counts[i], parts[i].size()))].push_back(i);
    if (users.size() == inputs.size()) break;
    for (const auto& [name, indices] : users) {
      if (indices.size() == 1) continue;
      bool hasGrown = false;
      for (const std::size_t i : indices) {
        if (counts[i] >= parts[i].size()) continue;
        ++counts[i];
        hasGrown = true;
      }
      if (!hasGrown)
        throw UsageError("the reports of '" + inputs[indices[0]].shown() + "' and '" +
                         inputs[indices[1]].shown() + "' would have the same name");
    }
  }
  std::vector<std::string> names;
  for (std::size_t i = 0; i < inputs.size(); ++i)
    names.push_back(lastParts(parts[i], std::min(counts[i], parts[i].size())));
  return names;
}

}  // namespace orvane::cli
