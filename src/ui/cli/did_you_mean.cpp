#include "ui/cli/did_you_mean.h"

#include <unicode/unistr.h>

#include <algorithm>
#include <vector>

namespace moniva {
namespace {

/// The text's code points with case folded away.
std::u32string folded(std::string_view text) {
  const icu::UnicodeString lower =
      icu::UnicodeString::fromUTF8({text.data(), static_cast<int32_t>(text.size())}).foldCase();
  std::u32string points;
  for (int32_t at = 0; at < lower.length(); at = lower.moveIndex32(at, 1)) {
    points += static_cast<char32_t>(lower.char32At(at));
  }
  return points;
}

/// Damerau's distance in its restricted form: no pair is swapped and then edited again.
std::size_t slipsBetween(const std::u32string& a, const std::u32string& b) {
  std::vector<std::size_t> beforeLast;
  std::vector<std::size_t> last(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) last[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::vector<std::size_t> row(b.size() + 1);
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t replaced = last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
      row[j] = std::min({replaced, last[j] + 1, row[j - 1] + 1});
      const bool isSwap = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
      if (isSwap) row[j] = std::min(row[j], beforeLast[j - 2] + 1);
    }
    beforeLast = std::move(last);
    last = std::move(row);
  }
  return last[b.size()];
}

}  // namespace

std::optional<std::string> didYouMean(std::string_view wanted, std::span<const std::string> candidates) {
  const std::u32string typed = folded(wanted);
  if (typed.empty()) return std::nullopt;
  const std::string* best = nullptr;
  std::size_t fewest = 0;
  for (const std::string& candidate : candidates) {
    const std::u32string name = folded(candidate);
    std::size_t slips = slipsBetween(typed, name);
    const std::size_t shorter = std::min(typed.size(), name.size());
    const bool goesOn = typed.size() >= 2 && name.starts_with(typed);
    if (goesOn) slips = std::min<std::size_t>(slips, 1);
    // A slip in every sign leaves nothing of the word.
    const bool isNear = slips <= std::max<std::size_t>(1, typed.size() / 3) && slips < shorter;
    if (isNear && (best == nullptr || slips < fewest)) {
      best = &candidate;
      fewest = slips;
    }
  }
  return best == nullptr ? std::nullopt : std::optional(*best);
}

}  // namespace moniva
