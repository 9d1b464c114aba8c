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
  const std::size_t columns = b.size() + 1;
  std::vector<std::size_t> slips((a.size() + 1) * columns);
  const auto at = [&](std::size_t i, std::size_t j) -> std::size_t& { return slips[i * columns + j]; };
  for (std::size_t i = 0; i <= a.size(); ++i) {
    for (std::size_t j = 0; j <= b.size(); ++j) {
      if (i == 0 || j == 0) {
        at(i, j) = i + j;
        continue;
      }
      const std::size_t replaced = at(i - 1, j - 1) + (a[i - 1] == b[j - 1] ? 0 : 1);
      at(i, j) = std::min({replaced, at(i - 1, j) + 1, at(i, j - 1) + 1});
      const bool isSwap = i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1];
      if (isSwap) at(i, j) = std::min(at(i, j), at(i - 2, j - 2) + 1);
    }
  }
  return slips.back();
}

}  // namespace

bool isSameWord(std::string_view one, std::string_view other) {
  return folded(one) == folded(other);
}

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
