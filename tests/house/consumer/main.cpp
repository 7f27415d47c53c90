#include <iostream>

#include "orvane/platform/channel_layout.h"
#include "orvane/platform/input_file.h"
#include "orvane/report/pdf/browser_session.h"

// What a public header declares can be called with public headers alone.
[[maybe_unused]] static void warm(orvane::BrowserSession& session) {
  session.warmUp({});
}

// Uses a symbol of each library: channel names of OrvaneCore, files of OrvaneHeadless.
int main(int, char** arguments) {
  std::cout << orvane::shortName(orvane::ChannelLabel::left) << ' '
            << orvane::InputFile(arguments[0]).size() << '\n';
}
