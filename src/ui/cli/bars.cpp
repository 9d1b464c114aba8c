#include "ui/cli/bars.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

namespace moniva {
namespace {

constexpr std::array<std::string_view, 8> beginnings{"", "▏", "▎", "▍", "▌", "▋", "▊", "▉"};
constexpr std::array<std::string_view, 8> heights{"▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
constexpr std::string_view fullBlock = "█";
constexpr std::string_view rightHalf = "▐";

/// How many of `steps` the value fills: none only when it is not above zero.
std::size_t stepsFilled(double value, double max, std::size_t steps) {
  if (!(value > 0) || !(max > 0) || steps == 0) return 0;
  if (value >= max) return steps;
  const auto filled = static_cast<std::size_t>(std::lround(value / max * static_cast<double>(steps)));
  return std::clamp<std::size_t>(filled, 1, steps);
}

std::string repeated(std::string_view block, std::size_t times) {
  std::string text;
  text.reserve(block.size() * times);
  for (std::size_t i = 0; i < times; ++i) text += block;
  return text;
}

}  // namespace

std::string bar(double value, double max, std::size_t cells) {
  const std::size_t eighths = stepsFilled(value, max, cells * 8);
  return repeated(fullBlock, eighths / 8).append(beginnings[eighths % 8]);
}

std::string pairedBars(double left, double right, double max, std::size_t cells) {
  // There are no blocks for eighths at the right of a cell, only for a half.
  const std::size_t halves = stepsFilled(left, max, cells * 2);
  const bool hasHalf = halves % 2 != 0;
  const std::size_t taken = halves / 2 + (hasHalf ? 1 : 0);
  std::string text(cells - taken, ' ');
  if (hasHalf) text += rightHalf;
  return text + repeated(fullBlock, halves / 2) + "│" + bar(right, max, cells);
}

std::string sparkline(std::span<const double> values) {
  double low = 0;
  double high = 0;
  for (const double value : values) {
    if (!std::isfinite(value)) continue;
    low = std::min(low, value);
    high = std::max(high, value);
  }
  std::string line;
  for (const double value : values) {
    if (!std::isfinite(value)) {
      line += ' ';
      continue;
    }
    // Halves first: the distance of two large figures may be more than a double holds.
    const double range = high / 2 - low / 2;
    const double share = range > 0 ? (value / 2 - low / 2) / range : 0;
    line += heights[static_cast<std::size_t>(std::lround(share * static_cast<double>(heights.size() - 1)))];
  }
  return line;
}

}  // namespace moniva
