#include "ui/cli/help_format.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <sstream>

#include "ui/cli/text_width.h"
#include "ui/sample_program.h"

namespace moniva {
namespace {

TEST(Help, tellsOfACommand) {
  const test::SampleProgram program;
  EXPECT_EQ(program.app.get_subcommand("book")->get_subcommand("add")->help(), R"(Add a book

Usage: moniva book add [options] NAME

A book holds what is spent and earned.

Arguments:
  NAME  The book's name

Options:
  -h, --help             Print this help
  -c, --currency TEXT    Currency of the book (one of: EUR, USD, XAU oz)
      --hidden, --shown  Keep it out of sums, which takes a text that is longer
                         than a line

Global options:
  -s, --store FILE  The store's file (variable: MONIVA_STORE)
      --color WHEN  When to colour (one of: auto, always, never; default: auto)

Examples:
  moniva book add Home
      Makes a book called Home.
  moniva book add --currency=USD "New York"
)");
}

TEST(Help, tellsOfTheProgram) {
  const test::SampleProgram program;
  const std::string help = program.app.help();
  for (const char* part :
       {"Keep track of money\n\nUsage: moniva [options] COMMAND\n\nAmounts are kept in books.\n",
        "\n\nCommands:\n  book, books  Books [and accounts]: who owns what\n"
        "  import       Read files\n\nOptions:\n"}) {
    EXPECT_NE(help.find(part), std::string::npos) << part << help;
  }
}

RC_GTEST_PROP(Help, staysInsideItsWidth, (const std::string& summary, const std::string& told)) {
  const auto width = *rc::gen::inRange<std::size_t>(50, 120);
  CommandInfo command;
  command.fullName = "tool";
  command.summary = summary;
  command.description = told;
  command.options.push_back(
      {.names = {"--option-of-some-length"}, .valueName = "VALUE", .description = told});
  command.options.push_back({.names = {"-o"}, .description = summary + " " + told});
  std::istringstream lines(helpText(command, {}, width));
  for (std::string line; std::getline(lines, line);) RC_ASSERT(displayWidth(line) <= width);
}

}  // namespace
}  // namespace moniva
