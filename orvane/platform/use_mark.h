#pragma once

#include <filesystem>

#include "orvane/platform/file_descriptor.h"

/// What a run keeps on disk for itself is locked for as long as the run lives, however it ends; so
/// a free lock tells what a killed run has left behind.
namespace orvane::UseMark {

/// Marks an open file or folder until the last copy of the descriptor is closed. False when
/// somebody else has marked it. Where the file system has no locks nothing is marked and nothing
/// ever counts as abandoned.
bool set(const FileDescriptor& file) noexcept;

/// Waits until nobody else has marked the file, for half a second at most, and marks it.
void await(const FileDescriptor& file) noexcept;

/// The file or folder of this user at `path`, open and marked, if nobody uses it; else none.
FileDescriptor takeAbandoned(const std::filesystem::path& path) noexcept;

}  // namespace orvane::UseMark
