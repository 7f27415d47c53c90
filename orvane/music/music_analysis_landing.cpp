#include "orvane/music/music_analysis_landing.h"

namespace orvane::MusicAnalysisLanding {

Decision decide(const Capture& captured, const Capture& current) {
  if (captured.generation != current.generation || captured.epoch != current.epoch)
    return Discard{};
  if (captured.slotID == current.slotID) return Display{};
  if (captured.slotID) return StoreForSlot{*captured.slotID};
  return Discard{};
}

}  // namespace orvane::MusicAnalysisLanding
