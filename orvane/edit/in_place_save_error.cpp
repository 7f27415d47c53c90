#include "orvane/edit/in_place_save_error.h"

#include <utility>

namespace orvane {
namespace {

/// "44100 Hz, 2 ch"
std::string formatText(double rate, std::int64_t channels) {
  return std::to_string(static_cast<std::int64_t>(rate)) + " Hz, " + std::to_string(channels) +
         " ch";
}

}  // namespace

InPlaceSaveError::InPlaceSaveError(Case errorCase, std::string payload, std::string description)
    : Error(std::move(description)), case_(errorCase), payload_(std::move(payload)) {}
InPlaceSaveError::~InPlaceSaveError() = default;

InPlaceSaveError InPlaceSaveError::unsupportedContainer(const std::string& extension) {
  return {Case::unsupportedContainer, extension,
          "Orvane writes WAV, AIFF, and CAF in place; \"." + extension +
              "\" files are saved as a new file."};
}

InPlaceSaveError InPlaceSaveError::notAPCMContainer(const std::string& name) {
  return {Case::notAPCMContainer, name,
          "Inside, this file is a " + name +
              " container, not WAV, AIFF, or CAF, so it can't be rewritten in place."};
}

InPlaceSaveError InPlaceSaveError::notLinearPCM(const std::string& name) {
  return {Case::notLinearPCM, name,
          "The file's audio isn't linear PCM (" + name + "), so it can't be rewritten in place."};
}

InPlaceSaveError InPlaceSaveError::formatMismatch(double fileRate, std::int64_t fileChannels,
                                                  double editedRate, std::int64_t editedChannels) {
  return {Case::formatMismatch,
          {},
          "The edited audio (" + formatText(editedRate, editedChannels) +
              ") no longer matches the file (" + formatText(fileRate, fileChannels) + ")."};
}

InPlaceSaveError InPlaceSaveError::channelOrderUnknown(const std::string& description) {
  return {Case::channelOrderUnknown, description,
          "The edited audio's channel order can't be matched to the file's channel layout (" +
              description + "), so it can't be written back in place."};
}

InPlaceSaveError InPlaceSaveError::notWritable(const std::string& path) {
  return {Case::notWritable, path, "\"" + path + "\" isn't writable."};
}

InPlaceSaveError InPlaceSaveError::unreadable(const std::string& message) {
  return {Case::unreadable, message, "The source file couldn't be read: " + message};
}

InPlaceSaveError InPlaceSaveError::writeFailed(const std::string& message) {
  return {Case::writeFailed, message,
          "Saving failed and the original file was left unchanged: " + message};
}

}  // namespace orvane
