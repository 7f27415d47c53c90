#pragma once

namespace orvane::cli {

/// The whole program, with the arguments of `main`; returns its exit code.
int runProgram(int argumentCount, const char* const* arguments);

}  // namespace orvane::cli
