#include "orvane/platform/audio_file/audio_file.h"
