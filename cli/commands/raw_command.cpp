#include "cli/commands/raw_command.h"

#include "cli/commands/raw_commands.h"

namespace orvane::cli {

void addRawCommand(CLI::App& program, ChosenCommand& chosen) {
  CLI::App* raw = program.add_subcommand("raw", "Work with headerless PCM");
  raw->require_subcommand(1);
  addRawGuessCommand(*raw, chosen);
  addRawConvertCommand(*raw, chosen);
  addRawPresetsCommand(*raw, chosen);
}

}  // namespace orvane::cli
