#include "orvane/platform/orvane_resources.h"

#include <array>
#include <system_error>
#include <vector>

#include "orvane/platform/module_location.h"

namespace orvane::OrvaneResources {
namespace {

constexpr std::array kBundleNames{"Orvane_OrvaneHeadless.bundle",
                                  "OrvaneHeadless_OrvaneHeadless.bundle"};

bool isFolder(const std::filesystem::path& path) {
  std::error_code ignored;
  return std::filesystem::is_directory(path, ignored);
}

std::vector<Bundle> candidates(const Bundle& module, const Bundle& program) {
  std::vector<Bundle> result{module, program};
  for (const auto* base :
       {&module.bundleURL, &module.resourceURL, &program.bundleURL, &program.resourceURL}) {
    if (!*base) continue;
    for (const char* name : kBundleNames) {
      auto bundle = **base / name;
      if (isFolder(bundle)) result.push_back({.bundleURL = bundle, .resourceURL = bundle});
    }
  }
  return result;
}

Bundle moduleBundle() {
  return bundleOfBinary(ModuleLocation::module());
}
Bundle programBundle() {
  return bundleOfBinary(ModuleLocation::executable());
}

}  // namespace

Bundle bundleOfBinary(const std::optional<std::filesystem::path>& binary) {
  if (!binary) return {};
  const auto folder = binary->parent_path();
  auto prefix = folder.parent_path();
  if (const auto name = prefix.filename(); name == "lib" || name == "lib64")
    prefix = prefix.parent_path();
  Bundle result{.bundleURL = folder};
  if (auto share = prefix / "share" / "orvane"; isFolder(share)) result.resourceURL = share;
  return result;
}

std::optional<std::filesystem::path> url(std::string_view resource, std::string_view extension) {
  return url(moduleBundle(), programBundle(), resource, extension);
}

std::optional<std::filesystem::path> url(const Bundle& module, const Bundle& program,
                                         std::string_view resource, std::string_view extension) {
  std::string name(resource);
  if (!extension.empty()) name.append(".").append(extension);
  for (const auto& bundle : candidates(module, program)) {
    const auto& folder = bundle.resourceURL ? bundle.resourceURL : bundle.bundleURL;
    if (!folder) continue;
    std::error_code ignored;
    if (auto path = *folder / name; std::filesystem::exists(path, ignored)) return path;
  }
  return std::nullopt;
}

}  // namespace orvane::OrvaneResources
