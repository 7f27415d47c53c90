#pragma once

#include "orvane/container/chunked/chunk_edits.h"

namespace orvane {

/// The time stamp that recorders repeat in the XML of `iXML` chunks, in samples since midnight,
/// follows the head as the time reference of `bext` does.
void followIXMLTimeStamp(ChunkEdits& edits);

}  // namespace orvane
