#include "cli/options/file_list.h"

#include <algorithm>
#include <span>
#include <utility>

#include "cli/usage_error.h"
#include "orvane/platform/input_file.h"

namespace orvane::cli {
namespace {

constexpr std::string_view kStandardInput = "-";

std::string readList(const std::string& listFile, StandardInput& standardInput) {
  if (listFile == kStandardInput) return standardInput.asText();
  const InputFile file(listFile);
  std::string text;
  for (std::size_t got = 1; got > 0;) {
    constexpr std::size_t kPiece = 1 << 16;
    const std::size_t start = text.size();
    text.resize(start + kPiece);
    got = file.readAt(start, std::as_writable_bytes(std::span(text).subspan(start)));
    text.resize(start + got);
  }
  return text;
}

}  // namespace

std::string InputName::shown() const {
  return isStandardInput() ? "standard input" : display;
}

std::string InputName::message(std::string_view engineText) const {
  std::string text(engineText);
  const std::string opened = path.filename().string();
  if (!isStandardInput() || opened.empty()) return text;
  // The engine puts the file's name at the start or at the end of its sentences.
  if (text.starts_with(opened)) return shown() + text.substr(opened.size());
  if (text.ends_with(opened)) return text.substr(0, text.size() - opened.size()) + shown();
  return text;
}

std::vector<std::string> FileList::namesIn(std::string_view list) {
  const char separator = list.find('\0') == std::string_view::npos ? '\n' : '\0';
  std::vector<std::string> names;
  while (!list.empty()) {
    const std::size_t end = std::min(list.find(separator), list.size());
    if (end > 0) names.emplace_back(list.substr(0, end));
    list.remove_prefix(std::min(end + 1, list.size()));
  }
  return names;
}

std::vector<InputName> FileList::resolve(const Request& request, StandardInput& standardInput) {
  if (request.names.empty() && request.listFile.empty()) throw UsageError("no FILE is given");
  std::vector<std::string> names = request.names;
  if (!request.listFile.empty()) {
    for (auto& name : namesIn(readList(request.listFile, standardInput)))
      names.push_back(std::move(name));
  }
  const auto uses = std::count(names.begin(), names.end(), kStandardInput) +
                    (request.listFile == kStandardInput ? 1 : 0);
  if (uses > 1) throw UsageError("standard input can be read only once");

  std::vector<InputName> inputs;
  for (const auto& name : names) {
    inputs.push_back(
        {name == kStandardInput ? standardInput.asFile() : std::filesystem::path(name), name});
  }
  return inputs;
}

}  // namespace orvane::cli
