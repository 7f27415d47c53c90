#pragma once

namespace orvane {

/// Gives the file open as `to` the owner, mode, access lists and extended attributes of the file
/// open as `from`, for which O_PATH is enough. What the system does not let this user carry over
/// stays behind, but never leaves the copy open to more users than the original.
/// Returns 0, or the error number of a failure that is no question of rights or abilities.
int carryOverMetadata(int from, int to) noexcept;

}  // namespace orvane
