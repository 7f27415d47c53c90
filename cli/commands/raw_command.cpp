#include "cli/commands/raw_command.h"

#include "cli/commands/raw_commands.h"

namespace orvane::cli {

void completeRawCommand(CLI::App& command, ChosenCommand& chosen) {
  command.require_subcommand(1);
  addRawGuessCommand(command, chosen);
  addRawConvertCommand(command, chosen);
  addRawPresetsCommand(command, chosen);
}

}  // namespace orvane::cli
