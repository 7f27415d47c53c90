#include "cli/terminal/help_formatter.h"

#include "cli/terminal/terminal_text.h"

namespace orvane::cli {
namespace {

constexpr std::size_t kColumns = 80;
constexpr std::size_t kTextColumn = 24;  // where the explanations begin

std::string usage(const CLI::App& app, const std::string& name) {
  std::string text = "Usage: " + name;
  if (!app.get_subcommands([](const CLI::App*) { return true; }).empty()) text += " COMMAND";
  text += " [OPTION]…";
  for (const CLI::Option* option : app.get_options()) {
    if (!option->get_positional()) continue;
    const std::string words = option->get_option_text();
    text += " " + (words.empty()
                       ? option->get_name(true) + (option->get_items_expected_max() > 1 ? "…" : "")
                       : words);
  }
  return text + "\n";
}

// "  name   explanation", the explanation in a column of its own; long names have their own line.
std::string entry(const std::string& name, const std::string& explanation) {
  std::string text = "  " + name;
  const std::size_t width = TerminalText::width(text);
  text += width + 2 > kTextColumn ? "\n" + std::string(kTextColumn, ' ')
                                  : std::string(kTextColumn - width, ' ');
  for (const char character : TerminalText::wrapped(explanation, kColumns - kTextColumn)) {
    text += character;
    if (character == '\n') text.append(kTextColumn, ' ');
  }
  return text + "\n";
}

std::string options(const CLI::App& app, const std::string& group) {
  std::string text;
  for (const CLI::Option* option : app.get_options()) {
    if (option->get_group() != group || !option->nonpositional()) continue;
    const std::string argument = option->get_option_text();
    text += entry(option->get_name(false, true) + (argument.empty() ? "" : " " + argument),
                  option->get_description());
  }
  return text.empty() ? "" : "\n" + group + ":\n" + text;
}

std::string commands(const CLI::App& app) {
  std::string text;
  for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
    text += entry(command->get_name(), command->get_description());
  return text.empty() ? "" : "\nCommands:\n" + text;
}

}  // namespace

std::string HelpFormatter::make_help(const CLI::App* app, std::string name,
                                     CLI::AppFormatMode) const {
  std::string text =
      usage(*app, name) + "\n" + TerminalText::wrapped(app->get_description(), kColumns) + "\n";
  text += commands(*app);
  // "Options", with `--help`, is the first group of every command and reads best as the last one.
  for (const auto& group : app->get_groups()) {
    if (group != "Options") text += options(*app, group);
  }
  text += options(*app, "Options");
  if (!app->get_footer().empty()) text += "\n" + app->get_footer() + "\n";
  return text;
}

}  // namespace orvane::cli
