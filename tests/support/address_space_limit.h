#pragma once

#include <sys/resource.h>
#include <unistd.h>

#include <cstddef>
#include <fstream>
#include <stdexcept>

namespace orvane::test {

/// For as long as it lives, this process may take `headroom` bytes of address space more than it
/// has.
class AddressSpaceLimit {
 public:
  explicit AddressSpaceLimit(std::size_t headroom) {
    std::size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    if (getrlimit(RLIMIT_AS, &previous_) != 0) throw std::runtime_error("no address space limit");
    rlimit limit = previous_;
    limit.rlim_cur = pages * static_cast<std::size_t>(getpagesize()) + headroom;
    if (setrlimit(RLIMIT_AS, &limit) != 0) throw std::runtime_error("no address space limit");
  }
  ~AddressSpaceLimit() { setrlimit(RLIMIT_AS, &previous_); }
  AddressSpaceLimit(const AddressSpaceLimit&) = delete;
  AddressSpaceLimit& operator=(const AddressSpaceLimit&) = delete;

 private:
  rlimit previous_{};
};

}  // namespace orvane::test
