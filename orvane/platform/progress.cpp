#include "orvane/platform/progress.h"

namespace orvane {

ProgressObserver::~ProgressObserver() = default;

}  // namespace orvane
