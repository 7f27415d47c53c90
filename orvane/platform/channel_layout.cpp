#include "orvane/platform/channel_layout.h"
