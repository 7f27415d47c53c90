#include "orvane/platform/module_location.h"

#include <dlfcn.h>
#include <link.h>

#include <string_view>
#include <system_error>

namespace orvane::ModuleLocation {
namespace {

// Any object of this binary will do as the address to ask for.
const char kAnchor = 0;

std::optional<std::filesystem::path> resolved(const std::filesystem::path& path) {
  std::error_code failure;
  auto result = std::filesystem::canonical(path, failure);
  if (failure) return std::nullopt;
  return result;
}

}  // namespace

std::optional<std::filesystem::path> executable() {
  return resolved("/proc/self/exe");
}

std::optional<std::filesystem::path> module() {
  Dl_info info{};
  void* extra = nullptr;
  if (dladdr1(&kAnchor, &info, &extra, RTLD_DL_LINKMAP) == 0) return std::nullopt;
  // The loader gives the program itself no name; `info.dli_fname` is then only what it was called
  // by.
  const auto* map = static_cast<const link_map*>(extra);
  if (map == nullptr || map->l_name == nullptr || std::string_view(map->l_name).empty())
    return executable();
  return resolved(map->l_name);
}

}  // namespace orvane::ModuleLocation
