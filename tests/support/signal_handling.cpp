#include "tests/support/signal_handling.h"

#include <chrono>
#include <cstdint>
#include <fstream>
#include <string>
#include <thread>

namespace orvane::test {
namespace {

bool handles(int process, int signal) {
  std::ifstream status("/proc/" + std::to_string(process) + "/status");
  for (std::string name; status >> name; status.ignore(1 << 20, '\n')) {
    std::uint64_t signals = 0;
    if (name == "SigCgt:" && status >> std::hex >> signals)
      return (signals >> (signal - 1) & 1) != 0;
  }
  return false;
}

}  // namespace

void waitUntilHandled(int signal, int process) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (!handles(process, signal) && std::chrono::steady_clock::now() < deadline)
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
}

}  // namespace orvane::test
