#include "cli/options/shell_words.h"

#include "cli/usage_error.h"

namespace orvane::cli {

std::vector<std::string> shellWords(std::string_view text) {
  std::vector<std::string> words;
  bool isInWord = false;
  char quote = 0;
  for (const char character : text) {
    const bool isBlank = character == ' ' || character == '\t' || character == '\n';
    if (quote == 0 && isBlank) {
      isInWord = false;
      continue;
    }
    if (!isInWord) words.emplace_back();
    isInWord = true;
    if (character == quote)
      quote = 0;
    else if (quote == 0 && (character == '\'' || character == '"'))
      quote = character;
    else
      words.back() += character;
  }
  if (quote != 0) throw UsageError("a quote is not closed in: " + std::string(text));
  return words;
}

}  // namespace orvane::cli
