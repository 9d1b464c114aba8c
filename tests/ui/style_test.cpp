#include "ui/cli/style.h"

#include <gtest/gtest.h>

namespace moniva {
namespace {

TEST(Style, decidesWhetherToPaint) {
  const struct {
    ColorMode mode;
    TerminalTraits traits;
    bool isOn;
    const char* why;
  } cases[] = {
      {ColorMode::automatic, {.isTerminal = true, .term = "xterm"}, true, "a terminal"},
      {ColorMode::automatic, {.isTerminal = false, .term = "xterm"}, false, "a file or pipe"},
      {ColorMode::automatic, {.isTerminal = true, .noColor = "1"}, false, "the person wants none"},
      {ColorMode::automatic, {.isTerminal = true, .noColor = ""}, true, "an empty NO_COLOR says nothing"},
      {ColorMode::automatic, {.isTerminal = true, .term = "dumb"}, false, "the terminal cannot"},
      {ColorMode::always, {.isTerminal = false, .noColor = "1"}, true, "the option outdoes the variable"},
  };
  for (const auto& c : cases) EXPECT_EQ(Style(c.mode, c.traits).isOn(), c.isOn) << c.why;
}

TEST(Style, paints) {
  const Style off;
  const Style palette(ColorMode::always, {});
  const Style full(ColorMode::always, {.colorTerm = "truecolor"});
  const struct {
    std::string painted;
    const char* expected;
    const char* why;
  } cases[] = {
      {palette.bold("a" + palette.green("b") + "c"), "\x1b[1ma\x1b[32mb\x1b[39mc\x1b[22m",
       "bold goes on after green"},
      {palette.paint(ink::bold | ink::red | ink::green, "x"), "\x1b[1m\x1b[32mx\x1b[39m\x1b[22m",
       "the last colour"},
      {full.hex("#FF3333", "x"), "\x1b[38;2;255;51;51mx\x1b[39m", "every colour"},
      {palette.hex("ff3333", "x"), "\x1b[38;5;203mx\x1b[39m", "nearest of the cube: ff5f5f"},
      {palette.hex("#808080", "x"), "\x1b[38;5;244mx\x1b[39m", "a grey is nearer among the greys"},
      {palette.hex("#000000", "x"), "\x1b[38;5;16mx\x1b[39m", "the cube's black, not the person's"},
      {full.hex("#+12345", "x"), "x", "a sign is no digit"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.painted, c.expected) << c.why;
}

}  // namespace
}  // namespace moniva
