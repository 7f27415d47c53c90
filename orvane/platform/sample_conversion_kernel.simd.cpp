#include "orvane/platform/sample_conversion.h"
