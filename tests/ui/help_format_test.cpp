#include "ui/cli/help_format.h"

#include <fmt/ranges.h>
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
  EXPECT_EQ(program.app.help(), R"(Keep track of money

Usage: moniva [options] COMMAND

Amounts are kept in books.

.profile isn't read; C:\moniva isn't either.

Commands:
  book, books  Books [and accounts]: who owns what
  import       Read files

Options:
  -h, --help        Print this help
  -s, --store FILE  The store's file (variable: MONIVA_STORE)
      --color WHEN  When to colour (one of: auto, always, never; default: auto)
)");
}

TEST(Help, isPrintedForTheCommandAskedAbout) {
  test::SampleProgram program;
  try {
    program.app.parse("book add --help");
    FAIL() << "help ends the parsing";
  } catch (const CLI::CallForHelp& call) {
    std::ostringstream out;
    EXPECT_EQ(program.app.exit(call, out, out), 0);
    EXPECT_TRUE(out.str().starts_with("Add a book\n\nUsage: moniva book add [options] NAME\n")) << out.str();
  }
}

TEST(Help, takesChoicesFromEveryKindOfValidator) {
  CLI::App app("", "tool");
  std::string text;
  int number = 0;
  app.add_option("--unit", number)
      ->transform(CLI::CheckedTransformer(CLI::TransformPairs<int>{{"day", 0}, {"week", 1}}));
  app.add_option("--share", number)->check(CLI::Range(0, 100));
  app.add_option("--new", text)->check(CLI::NonexistentPath);
  CLI::Option_group* group = app.add_option_group("either");
  bool flag = false;
  group->add_flag("--grouped", flag, "In a group");
  const CommandInfo command = describeCommand(app, {});
  std::string told;
  for (const auto& option : command.options) {
    told += fmt::format("{} {} {} {}\n", option.names.back(), option.valueName,
                        fmt::join(option.choices, "/"), option.takesFile);
  }
  EXPECT_EQ(told,
            "--help   false\n--unit NUMBER day/week false\n--share NUMBER  false\n--new FILE  true\n"
            "--grouped   false\n")
      << "a range is no list";
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
