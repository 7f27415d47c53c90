#include "orvane/platform/host_memory.h"

#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <fstream>
#include <limits>
#include <map>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <string_view>

namespace orvane {
namespace {

namespace fs = std::filesystem;

struct Override {
  std::shared_mutex mutex;
  std::optional<HostMemory> memory;
};

Override& currentOverride() {
  static Override instance;
  return instance;
}

std::optional<std::int64_t> parseNumber(std::string_view text) {
  std::int64_t value = 0;
  const auto end = text.data() + text.size();
  const auto result = std::from_chars(text.data(), end, value);
  if (result.ec == std::errc::result_out_of_range) return std::numeric_limits<std::int64_t>::max();
  if (result.ec != std::errc{} || value < 0) return std::nullopt;
  return value;
}

/// The number a file consists of; absent for "max".
std::optional<std::int64_t> readNumber(const fs::path& path) {
  std::ifstream stream(path);
  std::string text;
  if (!(stream >> text)) return std::nullopt;
  return parseNumber(text);
}

/// A file of lines "name value …" or "name: value …".
std::map<std::string, std::int64_t> readTable(const fs::path& path) {
  std::map<std::string, std::int64_t> table;
  std::ifstream stream(path);
  for (std::string line; std::getline(stream, line);) {
    const auto nameEnd = line.find_first_of(" :");
    if (nameEnd == std::string::npos) continue;
    const auto valueStart = line.find_first_not_of(" :\t", nameEnd);
    if (valueStart == std::string::npos) continue;
    if (const auto value = parseNumber(std::string_view(line).substr(valueStart)))
      table[line.substr(0, nameEnd)] = *value;
  }
  return table;
}

std::optional<std::int64_t> find(const std::map<std::string, std::int64_t>& table,
                                 const std::string& name) {
  const auto entry = table.find(name);
  if (entry == table.end()) return std::nullopt;
  return entry->second;
}

std::int64_t kibibytes(std::int64_t count) {
  return count > std::numeric_limits<std::int64_t>::max() / 1024 ? 0 : count * 1024;
}

std::int64_t physicalBytesOfSystem() {
  return static_cast<std::int64_t>(sysconf(_SC_PHYS_PAGES)) * sysconf(_SC_PAGESIZE);
}

HostMemory readMachine(const fs::path& root) {
  const auto table = readTable(root / "proc/meminfo");
  HostMemory memory;
  const auto total = find(table, "MemTotal");
  memory.physicalBytes = total ? kibibytes(*total) : physicalBytesOfSystem();
  if (const auto free = find(table, "MemFree")) {
    // Inactive anonymous memory cannot be taken without swapping, so file pages count where the
    // kernel tells them apart.
    const auto files = find(table, "Inactive(file)");
    const auto inactive = files ? files : find(table, "Inactive");
    memory.statistics = HostMemory::Statistics{
        kibibytes(*free) + kibibytes(find(table, "SReclaimable").value_or(0)),
        kibibytes(inactive.value_or(0))};
  }
  return memory;
}

/// The names that one cgroup version gives to its figures.
struct CgroupNames {
  const char* limit;
  const char* usage;
  const char* inactiveFiles;
  const char* reclaimable;
};
constexpr CgroupNames kVersion1 = {"memory.limit_in_bytes", "memory.usage_in_bytes",
                                   "total_inactive_file", "total_slab_reclaimable"};
constexpr CgroupNames kVersion2 = {"memory.max", "memory.current", "inactive_file",
                                   "slab_reclaimable"};

/// Lowers the figures to what one group may have.
void boundByGroup(HostMemory& memory, const fs::path& group, const CgroupNames& names) {
  const auto limit = readNumber(group / names.limit);
  if (!limit || *limit >= memory.physicalBytes) return;
  memory.physicalBytes = *limit;
  const auto usage = readNumber(group / names.usage);
  if (!memory.statistics || !usage) return;
  const auto table = readTable(group / "memory.stat");
  const auto left =
      std::max<std::int64_t>(*limit - *usage, 0) + find(table, names.reclaimable).value_or(0);
  auto& statistics = *memory.statistics;
  statistics.freeAndPurgeableBytes = std::min(statistics.freeAndPurgeableBytes, left);
  statistics.inactiveBytes =
      std::min(statistics.inactiveBytes, find(table, names.inactiveFiles).value_or(0));
}

/// Applies the limits of a group and of all groups above it. In a container the path may be that of
/// the host, of which only the mount point exists: missing groups bound nothing.
void boundByGroups(HostMemory& memory, const fs::path& mount, const std::string& group,
                   const CgroupNames& names) {
  fs::path relative = fs::path(group).relative_path();
  for (; !relative.empty(); relative = relative.parent_path())
    boundByGroup(memory, mount / relative, names);
  boundByGroup(memory, mount, names);
}

}  // namespace

HostMemory HostMemory::read(const fs::path& systemRoot) {
  HostMemory memory = readMachine(systemRoot);
  const fs::path mount = systemRoot / "sys/fs/cgroup";
  // Lines "hierarchy:controllers:path"; version 2 is hierarchy 0 without controllers.
  std::ifstream stream(systemRoot / "proc/self/cgroup");
  for (std::string line; std::getline(stream, line);) {
    const auto first = line.find(':');
    const auto second = first == std::string::npos ? first : line.find(':', first + 1);
    if (second == std::string::npos) continue;
    const auto controllers = "," + line.substr(first + 1, second - first - 1) + ",";
    const auto group = line.substr(second + 1);
    if (controllers == ",,") boundByGroups(memory, mount, group, kVersion2);
    if (controllers.find(",memory,") != std::string::npos)
      boundByGroups(memory, mount / "memory", group, kVersion1);
  }
  return memory;
}

HostMemory HostMemory::current() {
  {
    auto& replaced = currentOverride();
    const std::shared_lock lock(replaced.mutex);
    if (replaced.memory) return *replaced.memory;
  }
  return read("/");
}

ScopedHostMemory::ScopedHostMemory(const HostMemory& memory) {
  auto& replaced = currentOverride();
  const std::unique_lock lock(replaced.mutex);
  replaced.memory = memory;
}

ScopedHostMemory::~ScopedHostMemory() {
  auto& replaced = currentOverride();
  const std::unique_lock lock(replaced.mutex);
  replaced.memory.reset();
}

}  // namespace orvane
