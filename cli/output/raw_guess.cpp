#include "cli/output/raw_guess.h"

#include <algorithm>

#include "cli/options/source_options.h"
#include "cli/output/json_output.h"
#include "cli/output/number_text.h"
#include "cli/output/shell_text.h"
#include "cli/terminal/terminal_text.h"
#include "cli/terminal/text_table.h"
#include "orvane/rawpcm/raw_pcm_coding.h"

namespace orvane::cli {
namespace {

using RawPCMGuesser::Candidate;

constexpr std::size_t kShownProposals = 13;  // one for each encoding

/// To the second-best proposal; that of an only one is its whole score.
float leadOf(const std::vector<Candidate>& candidates) {
  return candidates.size() < 2 ? candidates.front().score
                               : candidates.front().score - candidates[1].score;
}

std::string nameOf(const Candidate& candidate, const RawGuess& guess) {
  const std::string token = candidate.format.formatToken();
  if (guess.areChannelsKnown) return token;
  return token + " in " + NumberText::counted(candidate.format.channelCount, "channel");
}

std::string list(const RawGuess& guess, const Console& console) {
  using Alignment = TextTable::Alignment;
  TextTable table({{"#", Alignment::right},
                   {"Encoding"},
                   {"Channels", Alignment::right},
                   {"Score", Alignment::right},
                   {"Duration", Alignment::right},
                   {"Waveform"}},
                  2);
  const auto& candidates = guess.proposals.candidates;
  for (std::size_t i = 0; i < std::min(candidates.size(), kShownProposals); ++i) {
    const auto& format = candidates[i].format;
    table.addRow({{std::to_string(i + 1)},
                  {format.formatToken(), i == 0 ? Style::bold : Style::plain},
                  {std::to_string(format.channelCount)},
                  {NumberText::fixed(static_cast<double>(candidates[i].score), 3)},
                  {NumberText::duration(guess.durationOf(candidates[i]))},
                  {guess.waveforms.at({format.channelCount, format.formatToken()})}});
  }
  std::string text = table.text(console);
  if (candidates.size() > kShownProposals)
    text += "  and " + std::to_string(candidates.size() - kShownProposals) +
            " more, which --json lists\n";
  return text;
}

std::string verdict(const RawGuess& guess) {
  const auto& candidates = guess.proposals.candidates;
  const std::string best = nameOf(candidates[0], guess);
  const std::string is = " is " + std::string(sureness(guess.proposals));
  if (candidates.size() < 2) return best + is + ": nothing else fits the size.";
  const float lead = leadOf(candidates);
  const std::string second = nameOf(candidates[1], guess);
  if (lead == 0) return best + is + ", and " + second + " has the same score.";
  return best + is + ", " + NumberText::fixed(static_cast<double>(lead), 3) + " ahead of " +
         second + ".";
}

}  // namespace

double RawGuess::durationOf(const Candidate& candidate) const {
  return static_cast<double>(candidate.format.frameCount(fileSize).value_or(0)) /
         candidate.format.sampleRate;
}

std::string_view sureness(const RawPCMGuesser::Proposals& proposals) {
  constexpr float kSmooth = 0.9F, kClearLead = 0.1F;
  if (proposals.isSilent || proposals.candidates.front().score < kSmooth) return "a guess";
  return leadOf(proposals.candidates) < kClearLead ? "likely" : "sure";
}

std::string rawGuessTable(const RawGuess& guess, const Console& console) {
  const auto& best = guess.proposals.candidates.front().format;
  std::string text = console.styled(Style::bold, TerminalText::escaped(guess.file)) + "\n" +
                     list(guess, console) + "\n" + verdict(guess) + "\n";
  if (!guess.areChannelsKnown)
    text += "Channels are told less surely: equal ones look like fewer; --channels states them.\n";
  if (!guess.isRateKnown)
    text += "The rate cannot be told from the bytes; " + NumberText::sampleRate(best.sampleRate) +
            " stands in, --rate states it.\n";
  return text + "\norvane analyze " + TerminalText::escaped(shellText(guess.file)) + " --raw " +
         rawOptionText(best) + "\n";
}

std::string rawGuessJson(const RawGuess& guess) {
  JsonOutput::Document document;
  document.addName(guess.file);
  document.add("isRateKnown", guess.isRateKnown);
  document.add("isSilent", guess.proposals.isSilent);
  document.addObjects("candidates", guess.proposals.candidates, [&](const Candidate& candidate) {
    document.add("token", candidate.format.formatToken());
    document.add("score", candidate.score);
    document.add("durationSeconds", guess.durationOf(candidate));
    document.addJSON("format", json::encode(candidate.format, JsonOutput::kRecordStyle));
  });
  return document.takeLine();
}

}  // namespace orvane::cli
