#include "ui/cli/style.h"

#include <fmt/format.h>

#include <array>
#include <charconv>
#include <cstdlib>
#include <iterator>

namespace moniva {
namespace {

struct Rgb {
  int red;
  int green;
  int blue;
};

Rgb parts(std::uint32_t rgb) {
  return {static_cast<int>(rgb >> 16 & 0xFF), static_cast<int>(rgb >> 8 & 0xFF),
          static_cast<int>(rgb & 0xFF)};
}

int distance(const Rgb& a, const Rgb& b) {
  const int red = a.red - b.red;
  const int green = a.green - b.green;
  const int blue = a.blue - b.blue;
  return red * red + green * green + blue * blue;
}

/// Number, among the palette's 256, of the colour nearest to the one wanted: one of the 6 x 6 x 6 cube or of
/// the 24 greys. The first 16 are left out, since everyone sets those to their own taste.
int nearestInPalette(const Rgb& wanted) {
  constexpr std::array<int, 6> levels{0, 95, 135, 175, 215, 255};
  const auto nearestLevel = [&](int value) {
    std::size_t best = 0;
    for (std::size_t i = 1; i < levels.size(); ++i) {
      if (std::abs(levels[i] - value) < std::abs(levels[best] - value)) best = i;
    }
    return best;
  };
  const std::size_t red = nearestLevel(wanted.red);
  const std::size_t green = nearestLevel(wanted.green);
  const std::size_t blue = nearestLevel(wanted.blue);
  int best = static_cast<int>(16 + 36 * red + 6 * green + blue);
  int nearest = distance(wanted, {levels[red], levels[green], levels[blue]});
  for (int i = 0; i < 24; ++i) {
    const int level = 8 + 10 * i;
    const int away = distance(wanted, {level, level, level});
    if (away < nearest) {
      nearest = away;
      best = 232 + i;
    }
  }
  return best;
}

}  // namespace

Ink ink::hex(std::string_view color) {
  if (color.starts_with('#')) color.remove_prefix(1);
  std::uint32_t rgb = 0;
  const char* const end = color.data() + color.size();
  const auto [stop, error] = std::from_chars(color.data(), end, rgb, 16);
  if (color.size() != 6 || error != std::errc() || stop != end) return ink::plain;
  return {.rgb = rgb};
}

Style::Style(ColorMode mode, const TerminalTraits& traits) {
  const bool wanted = mode == ColorMode::always || (mode == ColorMode::automatic && traits.isTerminal &&
                                                    traits.noColor.empty() && traits.term != "dumb");
  if (!wanted) return;
  depth_ = traits.colorTerm == "truecolor" || traits.colorTerm == "24bit" ? Depth::full : Depth::palette;
}

std::string Style::paint(const Ink& ink, std::string_view text) const {
  if (depth_ == Depth::none || ink == ink::plain || text.empty()) return std::string(text);
  std::string on;
  std::string off;
  const auto add = [&](std::string_view begin, std::string_view end) {
    fmt::format_to(std::back_inserter(on), "\x1b[{}m", begin);
    // Each kind is ended by itself, in place of a reset, so that an outer colour goes on behind an inner one.
    off.insert(0, fmt::format("\x1b[{}m", end));
  };
  if (ink.bold) add("1", "22");
  if (ink.dim) add("2", "22");
  if (ink.underlined) add("4", "24");
  if (ink.rgb) {
    const Rgb rgb = parts(*ink.rgb);
    add(depth_ == Depth::full ? fmt::format("38;2;{};{};{}", rgb.red, rgb.green, rgb.blue)
                              : fmt::format("38;5;{}", nearestInPalette(rgb)),
        "39");
  } else if (ink.color != 0) {
    add(fmt::format("{}", 30 + ink.color), "39");
  }
  return on.append(text).append(off);
}

}  // namespace moniva
