#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace moniva {

/// What the person asked for with --color.
enum class ColorMode { automatic, always, never };

/// How a piece of text is to look; several can be joined: `ink::bold | ink::red`. The right one's colour
/// wins.
struct Ink {
  bool bold = false;
  bool dim = false;
  bool underlined = false;
  std::uint8_t color = 0;  ///< 1 red ... 6 cyan, as terminals number them; 0 the terminal's own
  std::optional<std::uint32_t> rgb = {};  ///< 0xRRGGBB, instead of `color`

  friend constexpr bool operator==(const Ink&, const Ink&) = default;
};

constexpr Ink operator|(const Ink& left, const Ink& right) {
  const Ink& colored = right.color != 0 || right.rgb ? right : left;
  return {left.bold || right.bold, left.dim || right.dim, left.underlined || right.underlined, colored.color,
          colored.rgb};
}

namespace ink {
inline constexpr Ink plain{};
inline constexpr Ink bold{.bold = true};
inline constexpr Ink dim{.dim = true};
inline constexpr Ink underlined{.underlined = true};
inline constexpr Ink red{.color = 1};
inline constexpr Ink green{.color = 2};
inline constexpr Ink yellow{.color = 3};
inline constexpr Ink blue{.color = 4};
inline constexpr Ink magenta{.color = 5};
inline constexpr Ink cyan{.color = 6};
/// The ink of a colour written "#FF3333" (the sign and the case do not matter); plain for any other text.
Ink hex(std::string_view color);
}  // namespace ink

/// What is known of the place the output goes to.
struct TerminalTraits {
  bool isTerminal = false;
  std::string_view noColor = {};    ///< the variable NO_COLOR; colours stay off while it is not empty
  std::string_view term = {};       ///< the variable TERM; "dumb" means a terminal without colours
  std::string_view colorTerm = {};  ///< the variable COLORTERM; "truecolor" or "24bit" tells of all colours
};

/// Paints text for a terminal, or leaves it as it is where colours are not wanted. The text is not changed
/// otherwise; painted text may be painted again, as long as what is inside is of another kind.
class Style {
 public:
  /// A style that paints nothing.
  Style() = default;
  /// Automatic paints on terminals that can show it and whose person has not set NO_COLOR; `always` and
  /// `never` do as they say.
  Style(ColorMode mode, const TerminalTraits& traits);

  bool isOn() const { return depth_ != Depth::none; }

  std::string paint(const Ink& ink, std::string_view text) const;

  std::string bold(std::string_view text) const { return paint(ink::bold, text); }
  std::string dim(std::string_view text) const { return paint(ink::dim, text); }
  std::string underlined(std::string_view text) const { return paint(ink::underlined, text); }
  std::string red(std::string_view text) const { return paint(ink::red, text); }
  std::string green(std::string_view text) const { return paint(ink::green, text); }
  std::string yellow(std::string_view text) const { return paint(ink::yellow, text); }
  std::string blue(std::string_view text) const { return paint(ink::blue, text); }
  std::string magenta(std::string_view text) const { return paint(ink::magenta, text); }
  std::string cyan(std::string_view text) const { return paint(ink::cyan, text); }
  /// The text in a colour written "#FF3333", or the nearest of 256 on a terminal that has no more.
  std::string hex(std::string_view color, std::string_view text) const {
    return paint(ink::hex(color), text);
  }

 private:
  enum class Depth { none, palette, full };
  Depth depth_ = Depth::none;
};

}  // namespace moniva
