#include "cli/options/nearest_word.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <string_view>
#include <utility>
#include <vector>

namespace orvane::cli {
namespace {

/// Letters to insert, remove, replace or swap with the next one (optimal string alignment).
std::size_t distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> beforeLast;
  std::vector<std::size_t> last;
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), 0);
  for (std::size_t i = 1; i <= a.size(); ++i) {
    beforeLast = std::exchange(last, row);
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      row[j] =
          std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1)});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
        row[j] = std::min(row[j], beforeLast[j - 2] + 1);
    }
  }
  return row.back();
}

}  // namespace

std::optional<std::string> nearestWord(const std::string& written,
                                       std::span<const std::string> known) {
  constexpr std::size_t kShort = 5;
  const std::size_t most = written.size() < kShort ? 1 : 2;
  const auto nearest = std::ranges::min_element(
      known, {}, [&](const std::string& word) { return distance(written, word); });
  if (nearest != known.end() && distance(written, *nearest) <= most) return *nearest;
  const auto beginsSo = [&](const std::string& word) { return word.starts_with(written); };
  const auto first = std::ranges::find_if(known, beginsSo);
  constexpr std::size_t kTelling = 3;
  if (written.size() < kTelling || std::ranges::count_if(known, beginsSo) != 1) return std::nullopt;
  return *first;
}

}  // namespace orvane::cli
