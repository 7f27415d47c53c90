#pragma once

/// Where the tests find what is no code of theirs. They stand in one object file, so that all
/// others are the same for every build folder and every checkout, and are compiled once for all of
/// them.
namespace orvane::test::places {

extern const char* const program;  ///< `orvane`
extern const char* const example;  ///< the built example
extern const char* const faults;   ///< the module of failing calls, to be loaded before others
extern const char* const fakeBrowser;
extern const char* const models;          ///< folder of speech models, which set-up fills
extern const char* const goldenReports;   ///< folder
extern const char* const goldenCaptures;  ///< folder, of terminals
extern const char* const formatsDocument;
extern const char* const conformanceDocument;

}  // namespace orvane::test::places
