#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "cli/commands/speech_model.h"
#include "cli/options/file_list.h"
#include "cli/terminal/console.h"
#include "orvane/core/time_range.h"
#include "orvane/speech/dialogue/dialogue_sidecar.h"

/// Dialogue regions as the program shows them.
namespace orvane::cli::DialogueTimeline {

/// The stretches of the file that regions cover, in order and without overlap; what lies outside
/// the file is cut off.
std::vector<HalfOpenTimeRange> covered(const DialogueSidecar& sidecar);

/// Seconds of all of them.
double totalSeconds(const DialogueSidecar& sidecar);

/// 0 … 100; 0 for a file without length.
double percentage(const DialogueSidecar& sidecar);

/// The file from start to end in that many characters: "█" where at least half is dialogue, "▒"
/// where some is, "·" where none is.
std::string bar(const DialogueSidecar& sidecar, std::size_t columns);

/// "3 regions, 0:04.250 of dialogue (34.0 %)".
std::string summary(const DialogueSidecar& sidecar);

/// Everything about one file: figures, bar and list.
std::string block(const InputName& file, const DialogueSidecar& sidecar, const Console& console);

/// The same for machines, in one line: the sidecar's keys with the figures beside them, and the
/// model that has just found the regions.
std::string json(const InputName& file, const DialogueSidecar& sidecar,
                 const std::optional<SpeechModelName>& model = {});

}  // namespace orvane::cli::DialogueTimeline
