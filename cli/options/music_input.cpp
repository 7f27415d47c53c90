#include "cli/options/music_input.h"

#include "cli/options/text_input.h"
#include "orvane/platform/error.h"
#include "orvane/text/json/json_text.h"

namespace orvane::cli {

MusicAnalysisResult readMusicAnalysis(const std::string& name) {
  try {
    return decodeJSON<MusicAnalysisResult>(readTextInput(name));
  } catch (const DecodingError& error) {
    throw PlatformError(shownTextInput(name), error.errorDescription());
  }
}

}  // namespace orvane::cli
