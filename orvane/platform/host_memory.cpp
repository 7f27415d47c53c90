#include "orvane/platform/host_memory.h"
