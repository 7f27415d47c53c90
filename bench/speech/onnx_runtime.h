#pragma once

#include <dlfcn.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace orvane::bench {

/// The network of a published model file in ONNX Runtime, as its users run it: one call per step of
/// 512 samples, on one thread. The library is opened at run time; of its C interface only what is
/// used here is declared. Entries of its function table never change their place.
class OnnxRuntimeVad {
 public:
  OnnxRuntimeVad(const std::string& library, const std::string& model) {
    void* const handle = dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) throw std::runtime_error(dlerror());
    auto* const base = reinterpret_cast<const ApiBase* (*)()>(dlsym(handle, "OrtGetApiBase"));
    if (base == nullptr) throw std::runtime_error(library + " is no ONNX Runtime");
    table_ = base()->getApi(kApiVersion);
    version_ = base()->getVersion();

    void* environment = nullptr;
    call<3>(kLogErrors, "bench", &environment);
    void* options = nullptr;
    call<10>(&options);
    call<24>(options, 1);
    call<25>(options, 1);
    call<7>(environment, model.c_str(), options, &session_);
    void* memory = nullptr;
    call<69>(kArenaAllocator, kDefaultMemory, &memory);

    window_ = tensor(memory, std::span<float>(windowData_), {1, 576}, kFloat);
    for (std::size_t i = 0; i < 2; ++i)
      state_[i] = tensor(memory, std::span<float>(stateData_[i]), {2, 1, 128}, kFloat);
    rate_ = tensor(memory, std::span<std::int64_t>(&rateData_, 1), {}, kInt64);
    output_ = tensor(memory, std::span<float>(&outputData_, 1), {1, 1}, kFloat);
  }

  const std::string& version() const { return version_; }

  /// Probabilities of all whole steps, from a cleared state.
  std::vector<float> run(std::span<const float> samples) {
    windowData_.fill(0);
    for (auto& state : stateData_) state.fill(0);
    std::vector<float> result;
    for (std::size_t step = 0; (step + 1) * 512 <= samples.size(); ++step) {
      std::copy(windowData_.end() - 64, windowData_.end(), windowData_.begin());
      std::copy_n(samples.data() + step * 512, 512, windowData_.begin() + 64);
      const char* const inputNames[] = {"input", "state", "sr"};
      const char* const outputNames[] = {"output", "stateN"};
      const void* const inputs[] = {window_, state_[step % 2], rate_};
      void* outputs[] = {output_, state_[1 - step % 2]};
      call<9>(session_, nullptr, inputNames, inputs, std::size_t{3}, outputNames, std::size_t{2},
              outputs);
      result.push_back(outputData_);
    }
    return result;
  }

 private:
  struct ApiBase {
    void* const* (*getApi)(std::uint32_t version);
    const char* (*getVersion)();
  };
  static constexpr std::uint32_t kApiVersion = 8;
  static constexpr int kLogErrors = 3;
  static constexpr int kArenaAllocator = 1;
  static constexpr int kDefaultMemory = 0;
  static constexpr int kFloat = 1;
  static constexpr int kInt64 = 7;

  template <std::size_t kPlace, class... Arguments>
  void call(Arguments... arguments) const {
    using Function = void* (*)(Arguments...);
    void* const status = reinterpret_cast<Function>(table_[kPlace])(arguments...);
    if (status == nullptr) return;
    throw std::runtime_error(reinterpret_cast<const char* (*)(void*)>(table_[2])(status));
  }

  template <class T>
  void* tensor(void* memory, std::span<T> data, std::vector<std::int64_t> shape, int type) const {
    void* value = nullptr;
    call<49>(static_cast<const void*>(memory), static_cast<void*>(data.data()), data.size_bytes(),
             static_cast<const std::int64_t*>(shape.data()), shape.size(), type, &value);
    return value;
  }

  void* const* table_ = nullptr;
  std::string version_{};
  void* session_ = nullptr;
  void* window_ = nullptr;
  std::array<void*, 2> state_{};
  void* rate_ = nullptr;
  void* output_ = nullptr;
  std::array<float, 576> windowData_{};
  std::array<std::array<float, 256>, 2> stateData_{};
  std::int64_t rateData_ = 16000;
  float outputData_ = 0;
};

}  // namespace orvane::bench
