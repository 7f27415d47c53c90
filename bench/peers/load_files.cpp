// load_files FILE…: loads all of them as floats, and holds them: the least that comparing them costs.
#include <cstdio>
#include <memory>
#include <thread>
#include <vector>

#include "orvane/audio/audio_source_reader.h"
#include "orvane/platform/error.h"

int main(int argc, char** argv) {
  std::vector<std::shared_ptr<orvane::PCMBuffer>> buffers;
  try {
    const orvane::AudioSourceReader::LoadOptions options{
        .execution = {.threadCount = std::thread::hardware_concurrency()}};
    for (int i = 1; i < argc; ++i)
      buffers.push_back(orvane::AudioSourceReader::load(argv[i], {}, options).buffer);
  } catch (const orvane::Error& error) {
    std::fprintf(stderr, "%s\n", error.errorDescription().c_str());
    return 1;
  }
  for (const auto& buffer : buffers) std::printf("%u frames\n", buffer->frameLength());
  return 0;
}
