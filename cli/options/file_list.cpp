#include "cli/options/file_list.h"

#include <algorithm>
#include <span>
#include <utility>

#include "cli/interruption.h"
#include "cli/usage_error.h"
#include "orvane/platform/input_file.h"
#include "orvane/rawpcm/raw_pcm_import_error.h"

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

/// The files in a folder and below, sorted by path. Pipes, sockets and devices are passed over.
void addFilesIn(const std::filesystem::path& folder, std::vector<InputName>& inputs) {
  namespace fs = std::filesystem;
  if (Interruption::isRequested()) throw Cancelled();
  std::error_code error;
  std::vector<fs::directory_entry> entries;
  for (fs::directory_iterator entry(folder, error); !error && entry != fs::directory_iterator();
       entry.increment(error))
    entries.push_back(*entry);
  // Whatever opens it will say what is wrong with it.
  if (error) inputs.push_back({folder, folder.string()});
  std::ranges::sort(entries);
  for (const auto& entry : entries) {
    const bool isLink = entry.is_symlink(error);
    const auto type = entry.status(error).type();
    if (type == fs::file_type::directory && !isLink)
      addFilesIn(entry.path(), inputs);
    else if (type == fs::file_type::regular || type == fs::file_type::not_found)
      inputs.push_back({entry.path(), entry.path().string(), true});
  }
}

}  // namespace

std::string InputName::shown() const {
  return (isStandardInput() ? "standard input" : display) +
         (stream ? " [stream " + std::to_string(*stream) + "]" : "");
}

std::string InputName::message(std::string_view engineText) const {
  const std::string opened = (path.has_filename() ? path : path.parent_path()).filename().string();
  const std::string text(engineText);
  if (opened.empty()) return text;
  // The engine puts the file's name at the start or at the end of its sentences.
  if (text.starts_with(opened + ":")) return shown() + text.substr(opened.size());
  if (text.ends_with(" " + opened)) return text.substr(0, text.size() - opened.size()) + shown();
  return text;
}

std::string InputName::message(const Error& error) const {
  const bool namesNoFile = dynamic_cast<const RawPCMImportError*>(&error) != nullptr;
  return (namesNoFile ? shown() + ": " : "") + message(error.errorDescription());
}

std::vector<std::string> FileList::namesIn(std::string_view list) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  const bool isOfLines = list.find('\0') == std::string_view::npos;
  if (isOfLines && list.starts_with(kByteOrderMark)) list.remove_prefix(kByteOrderMark.size());
  std::vector<std::string> names;
  while (!list.empty()) {
    const std::size_t end = std::min(list.find(isOfLines ? '\n' : '\0'), list.size());
    std::string_view name = list.substr(0, end);
    if (isOfLines && name.ends_with('\r')) name.remove_suffix(1);
    if (!name.empty()) names.emplace_back(name);
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
  std::error_code ignored;
  for (const auto& name : names) {
    if (name == kStandardInput)
      inputs.push_back({standardInput.asFile(), name});
    else if (request.opensFolders && std::filesystem::is_directory(name, ignored))
      addFilesIn(name, inputs);
    else
      inputs.push_back({name, name});
  }
  return inputs;
}

}  // namespace orvane::cli
