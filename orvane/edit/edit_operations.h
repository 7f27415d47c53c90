#pragma once

/// Destructive edits on decoded audio.
///
/// Frame ranges are [startFrame, endFrame), cut to what is there. Where nothing is, the audio stays
/// as it is; nothing here throws, but `Cancelled` where an observer asks for it. Each edit has up
/// to three forms with the same samples:
/// - on whole channels in memory, giving an `EditResult`: channels of unequal length and rates that
///   are no numbers are programming errors; arrays that are given away (std::move) are not copied;
/// - in place, on a view of audio that the caller owns;
/// - on a slice of a longer programme, and as a writer to a file, for what does not fit into memory
///   twice.
/// An edit that moves frames has a `FrameMap` beside it; for all others it is the identity.
#include "orvane/edit/dc_offset.h"
#include "orvane/edit/edit_result.h"
#include "orvane/edit/fade_curve.h"
#include "orvane/edit/fade_envelope.h"
#include "orvane/edit/frame_map.h"
#include "orvane/edit/level.h"
#include "orvane/edit/loudness_normalizer.h"
#include "orvane/edit/non_speech_expander.h"
#include "orvane/edit/peak_normalization.h"
#include "orvane/edit/silence.h"
#include "orvane/edit/streaming_writers.h"
#include "orvane/edit/trim_cut.h"
#include "orvane/edit/true_peak_limiter.h"
