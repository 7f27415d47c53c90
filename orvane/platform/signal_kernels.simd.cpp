#include "orvane/platform/signal_kernels.h"
