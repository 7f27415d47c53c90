#include "orvane/speech/detector/silero_network.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <utility>

#include "orvane/platform/parallel.h"
#include "orvane/platform/precondition.h"
#include "orvane/speech/detector/silero_layout.h"

namespace orvane {
namespace {

using namespace silero;

/// The recurrence takes about a third of one thread's time; it cannot keep up with more.
constexpr std::size_t kMaximumThreads = 4;

/// One pass over a stretch of a signal. Tiles of steps are computed by any thread, ahead of the
/// recurrence, into a ring of slots; whichever thread finds the next tile ready runs the recurrence
/// over it.
class Pass {
 public:
  /// The steps begin with sample `start`.
  Pass(const PackedWeights& weights, std::span<const float> samples, std::size_t start,
       RecurrentState& state, std::span<float> probabilities, const Execution& execution)
      : weights_(weights),
        samples_(samples),
        start_(start),
        state_(state),
        probabilities_(probabilities),
        observer_(execution.observer),
        tileCount_((probabilities.size() + kTileSteps - 1) / kTileSteps) {
    const std::size_t threads = std::clamp<std::size_t>(execution.threadCount, 1, kMaximumThreads);
    threadCount_ = std::min(threads, std::max<std::size_t>(tileCount_, 1));
    scratch_ = std::vector<TileScratch>(threadCount_);
    slots_ = std::vector<Slot>(threadCount_ == 1 ? 1 : 2 * threadCount_);
  }

  void run() {
    parallelFor(threadCount_, threadCount_, [this](std::size_t thread) { work(scratch_[thread]); });
  }

 private:
  struct Slot {
    AlignedFloats gates = allocateFloats(kTileSteps * kGateSize);
    bool isReady = false;
  };

  void work(TileScratch& scratch) {
    std::unique_lock lock(mutex_);
    while (!isStopped_ && nextRecurrent_ < tileCount_) {
      Slot& oldest = slots_[nextRecurrent_ % slots_.size()];
      if (oldest.isReady && !recurrenceRuns_) {
        recurrenceRuns_ = true;
        lock.unlock();
        runTile(oldest);
        lock.lock();
        oldest.isReady = false;
        recurrenceRuns_ = false;
        ++nextRecurrent_;
        changed_.notify_all();
      } else if (nextTile_ < tileCount_ && nextTile_ < nextRecurrent_ + slots_.size()) {
        const std::size_t tile = nextTile_++;
        Slot& slot = slots_[tile % slots_.size()];
        lock.unlock();
        loadTile(samples_, start_ + tile * kTileSteps * kStepSamples, scratch);
        computeTile(weights_, scratch, slot.gates.get());
        lock.lock();
        slot.isReady = true;
        changed_.notify_all();
      } else {
        changed_.wait(lock);
      }
    }
  }

  /// Only one thread at a time is in here, so that the observer's calls never overlap.
  void runTile(const Slot& slot) {
    const std::size_t first = nextRecurrent_ * kTileSteps;
    const std::size_t count = std::min(kTileSteps, probabilities_.size() - first);
    runRecurrence(weights_, slot.gates.get(), count, state_, probabilities_.data() + first);
    if (!observer_) return;
    try {
      observer_->onProgress("Detecting speech", static_cast<double>(first + count) /
                                                    static_cast<double>(probabilities_.size()));
      if (observer_->isCancelled()) throw Cancelled();
    } catch (...) {
      const std::lock_guard lock(mutex_);
      isStopped_ = true;
      changed_.notify_all();
      throw;
    }
  }

  const PackedWeights& weights_;
  std::span<const float> samples_;
  std::size_t start_;
  RecurrentState& state_;
  std::span<float> probabilities_;
  ProgressObserver* observer_;
  std::size_t tileCount_;
  std::size_t threadCount_ = 1;
  std::vector<TileScratch> scratch_{};
  std::vector<Slot> slots_{};

  std::mutex mutex_{};
  std::condition_variable changed_{};
  std::size_t nextTile_ = 0;       ///< not yet taken by a thread
  std::size_t nextRecurrent_ = 0;  ///< not yet seen by the recurrence
  bool recurrenceRuns_ = false;
  bool isStopped_ = false;
};

}  // namespace

SileroNetwork::SileroNetwork(const SileroWeights& weights)
    : weights_(std::make_unique<const PackedWeights>(packWeights(weights))) {}
SileroNetwork::~SileroNetwork() = default;
SileroNetwork::SileroNetwork(SileroNetwork&&) noexcept = default;
SileroNetwork& SileroNetwork::operator=(SileroNetwork&&) noexcept = default;

std::vector<float> SileroNetwork::stepProbabilities(std::span<const float> samples,
                                                    std::size_t stepCount,
                                                    const Execution& execution) const {
  std::vector<float> probabilities(stepCount);
  RecurrentState state;
  Pass(*weights_, samples, 0, state, probabilities, execution).run();
  return probabilities;
}

struct SileroNetwork::Stream::State {
  const PackedWeights& weights;
  RecurrentState recurrent{};
  std::vector<float> samples{};  ///< no tile yet, behind the context of the next step
  std::size_t start = 0;         ///< of that step: 0 for the first, which has no context
  std::vector<float> probabilities{};

  void run(std::size_t stepCount, std::size_t threadCount) {
    const std::size_t known = probabilities.size();
    probabilities.resize(known + stepCount);
    Pass(weights, samples, start, recurrent, std::span(probabilities).subspan(known), {threadCount})
        .run();
  }
};

SileroNetwork::Stream::Stream(const SileroNetwork& network)
    : state_(std::make_unique<State>(State{.weights = *network.weights_})) {}
SileroNetwork::Stream::~Stream() = default;
SileroNetwork::Stream::Stream(Stream&&) noexcept = default;

void SileroNetwork::Stream::process(std::span<const float> samples, std::size_t threadCount) {
  State& state = *state_;
  state.samples.insert(state.samples.end(), samples.begin(), samples.end());
  const std::size_t tiles = (state.samples.size() - state.start) / (kTileSteps * kStepSamples);
  if (tiles == 0) return;
  state.run(tiles * kTileSteps, threadCount);
  const std::size_t next = state.start + tiles * kTileSteps * kStepSamples;
  state.samples.erase(state.samples.begin(),
                      state.samples.begin() + static_cast<std::ptrdiff_t>(next - kContextSamples));
  state.start = kContextSamples;
}

std::vector<float> SileroNetwork::Stream::finish(std::size_t stepCount) {
  State& state = *state_;
  precondition(stepCount >= state.probabilities.size(), "no step is left out");
  state.run(stepCount - state.probabilities.size(), 1);
  return std::move(state.probabilities);
}

}  // namespace orvane
