#include "cli/output/text_output.h"

#include "cli/output/abandoned_files.h"
#include "cli/output/output_file.h"
#include "cli/terminal/terminal_text.h"

namespace orvane::cli {

void addTextOutputOptions(CLI::App& command, TextOutputOptions& options) {
  command.add_option("-o,--output", options.file, "Write to F; - is standard output")
      ->option_text("F")
      ->group("Output");
  command.add_flag("--force", options.force, "Replace F if it exists")->group("Output");
}

void writeText(const TextOutputOptions& options, std::string_view text, Console& console) {
  if (options.isStandardOutput())
    return console.print(console.traits().isOutputTerminal ? TerminalText::escapedLines(text)
                                                           : std::string(text));
  warnOfAbandonedFiles({options.file}, console);
  OutputFile::writing(options.file, [&] {
    AtomicFile output(options.file, OutputFile::existing(options.force));
    output.write(text);
    output.commit();
  });
}

}  // namespace orvane::cli
