#pragma once

#include "orvane/platform/metadata_losses.h"

namespace orvane {

/// Gives the file open as `to` the owner, mode, access lists and extended attributes of the file
/// open as `from`, for which O_PATH is enough. What the system does not let this user carry over
/// stays behind and is told, but never leaves the copy open to more users than the original.
/// Signatures over the content (security.ima, security.evm) stay behind untold: they would be
/// false. Returns 0, or the error number of a failure that is no question of rights or abilities.
int carryOverMetadata(int from, int to, MetadataLosses& losses) noexcept;

}  // namespace orvane
