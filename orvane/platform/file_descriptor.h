#pragma once

#include <unistd.h>

#include <utility>

namespace orvane {

/// Owns an open file of the system; -1 is none.
class FileDescriptor {
 public:
  FileDescriptor() = default;
  explicit FileDescriptor(int number) noexcept : number_(number) {}
  ~FileDescriptor() { close(); }
  FileDescriptor(FileDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    if (this != &other) {
      close();
      number_ = std::exchange(other.number_, -1);
    }
    return *this;
  }

  explicit operator bool() const noexcept { return number_ >= 0; }
  int number() const noexcept { return number_; }

  /// What close(2) returns; 0 when nothing is open. Nothing is open afterwards in any case.
  int close() noexcept { return number_ >= 0 ? ::close(std::exchange(number_, -1)) : 0; }

 private:
  int number_ = -1;
};

}  // namespace orvane
