#include "orvane/speech/dialogue/dialogue_sidecar.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace orvane {

DialogueSidecar::DialogueSidecar(std::int64_t version, std::string program,
                                 std::string programVersion, AudioFileInfo audio,
                                 std::vector<DialogueRegion> givenRegions, Date created,
                                 Date modified, DialogueRegionSource origin)
    : schemaVersion(version),
      generator(std::move(program)),
      generatorVersion(std::move(programVersion)),
      audioFile(std::move(audio)),
      regions(std::move(givenRegions)),
      createdAt(created),
      modifiedAt(modified),
      source(origin) {
  // What is no number goes last; otherwise it would leave the order undefined.
  std::stable_sort(regions.begin(), regions.end(),
                   [](const DialogueRegion& a, const DialogueRegion& b) {
                     return a.start < b.start || (std::isnan(b.start) && !std::isnan(a.start));
                   });
}

}  // namespace orvane
