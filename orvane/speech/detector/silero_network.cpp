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

/// A tile's gates on their way from the thread that computed them to the recurrence.
struct Slot {
  AlignedFloats gates = allocateFloats(kTileSteps * kGateSize);
  bool isReady = false;
};

/// Memory for passes, one at a time.
struct Workspace {
  std::vector<TileScratch> scratch{};  ///< one per thread
  std::vector<Slot> slots{};
};

/// One pass over a stretch of a signal. Tiles of steps are computed by any thread, ahead of the
/// recurrence, into a ring of slots; whichever thread finds the next tile ready runs the recurrence
/// over it.
class Pass {
 public:
  /// The steps begin with sample `start`.
  Pass(const PackedWeights& weights, const Signal& signal, std::size_t start, RecurrentState& state,
       std::span<float> probabilities, const Execution& execution, Workspace& workspace)
      : weights_(weights),
        signal_(signal),
        start_(start),
        state_(state),
        probabilities_(probabilities),
        observer_(execution.observer),
        tileCount_((probabilities.size() + kTileSteps - 1) / kTileSteps) {
    const std::size_t threads = std::clamp<std::size_t>(execution.threadCount, 1, kMaximumThreads);
    threadCount_ = std::min(threads, std::max<std::size_t>(tileCount_, 1));
    const std::size_t slotCount = threadCount_ == 1 ? 1 : 2 * threadCount_;
    if (workspace.scratch.size() < threadCount_) workspace.scratch.resize(threadCount_);
    if (workspace.slots.size() < slotCount) workspace.slots.resize(slotCount);
    scratch_ = workspace.scratch;
    slots_ = std::span(workspace.slots).first(slotCount);
    for (Slot& slot : slots_) slot.isReady = false;
  }

  void run() {
    parallelFor(threadCount_, threadCount_, [this](std::size_t thread) { work(scratch_[thread]); });
  }

 private:
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
        loadTile(signal_, start_ + tile * kTileSteps * kStepSamples, scratch);
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
  Signal signal_;
  std::size_t start_;
  RecurrentState& state_;
  std::span<float> probabilities_;
  ProgressObserver* observer_;
  std::size_t tileCount_;
  std::size_t threadCount_ = 1;
  std::span<TileScratch> scratch_{};
  std::span<Slot> slots_{};

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
  Workspace workspace;
  Pass(*weights_, {samples}, 0, state, probabilities, execution, workspace).run();
  return probabilities;
}

struct SileroNetwork::Stream::State {
  const PackedWeights& weights;
  RecurrentState recurrent{};
  Workspace workspace{};
  std::vector<float> held{};  ///< no tile yet, behind the context of the next step
  std::size_t start = 0;      ///< of that step: 0 for the first, which has no context
  std::vector<float> probabilities{};

  /// Of the samples held and those behind them.
  void run(std::span<const float> samples, std::size_t stepCount, std::size_t threadCount) {
    const std::size_t known = probabilities.size();
    probabilities.resize(known + stepCount);
    Pass(weights, {held, samples}, start, recurrent, std::span(probabilities).subspan(known),
         {threadCount}, workspace)
        .run();
  }

  /// Holds what follows so many of those samples.
  void drop(std::size_t count, std::span<const float> samples) {
    const std::size_t ofHeld = std::min(count, held.size());
    held.erase(held.begin(), held.begin() + static_cast<std::ptrdiff_t>(ofHeld));
    const auto rest = samples.subspan(count - ofHeld);
    held.insert(held.end(), rest.begin(), rest.end());
  }
};

SileroNetwork::Stream::Stream(const SileroNetwork& network)
    : state_(std::make_unique<State>(State{.weights = *network.weights_})) {}
SileroNetwork::Stream::~Stream() = default;
SileroNetwork::Stream::Stream(Stream&&) noexcept = default;

void SileroNetwork::Stream::process(std::span<const float> samples, std::size_t threadCount) {
  State& state = *state_;
  const std::size_t available = state.held.size() + samples.size() - state.start;
  const std::size_t tiles = available / (kTileSteps * kStepSamples);
  if (tiles == 0) return state.drop(0, samples);
  state.run(samples, tiles * kTileSteps, threadCount);
  state.drop(state.start + tiles * kTileSteps * kStepSamples - kContextSamples, samples);
  state.start = kContextSamples;
}

std::vector<float> SileroNetwork::Stream::finish(std::size_t stepCount) {
  State& state = *state_;
  precondition(stepCount >= state.probabilities.size(), "no step is left out");
  state.run({}, stepCount - state.probabilities.size(), 1);
  return std::move(state.probabilities);
}

}  // namespace orvane
