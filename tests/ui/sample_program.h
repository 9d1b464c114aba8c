#pragma once

#include <CLI/CLI.hpp>
#include <memory>
#include <string>
#include <vector>

#include "ui/cli/command_tree.h"
#include "ui/cli/help_format.h"

namespace moniva::test {

inline const std::vector<CommandText>& sampleTexts() {
  static const std::vector<CommandText> texts{
      {"",
       "Keep track of money",
       "Amounts are kept in books.\n\n.profile isn't read; C:\\moniva isn't either.",
       {}},
      {"book add",
       "Add a book",
       "A book holds what is spent and earned.",
       {{"moniva book add Home", "Makes a book called Home."},
        {"moniva book add --currency=USD \"New York\"", ""}}},
  };
  return texts;
}

/// A program small enough to know by heart, with every kind of option and argument.
class SampleProgram {
 public:
  SampleProgram() {
    app.formatter(std::make_shared<HelpFormatter>(sampleTexts()));
    app.set_help_flag("-h,--help", "Print this help");
    app.fallthrough();
    app.require_subcommand(1);
    app.add_option("-s,--store", text, "The store's file")->type_name("FILE")->envname("MONIVA_STORE");
    app.add_option("--color", text, "When to colour")
        ->type_name("WHEN")
        ->check(CLI::IsMember({"auto", "always", "never"}))
        ->default_str("auto");
    app.add_flag("--secret", flag, "Nobody is told")->group("");

    CLI::App* book = app.add_subcommand("book", "Books [and accounts]: who owns what");
    book->alias("books");
    CLI::App* add = book->add_subcommand("add", "replaced by the table");
    add->add_option("NAME", text, "The book's name")->required();
    add->add_option("-c,--currency", text, "Currency of the book")
        ->check(CLI::IsMember({"EUR", "USD", "XAU oz"}));
    add->add_flag("--hidden,!--shown", flag,
                  "Keep it out of sums, which takes a text that is longer than a line");
    book->add_subcommand("list", "List books")->group("");

    CLI::App* import = app.add_subcommand("import", "Read files\n\nMore about it.");
    import->add_option("FORMAT", text, "")->required()->check(CLI::IsMember({"csv", "json"}));
    import->add_option("FILE", texts, "What to read")->check(CLI::ExistingFile);
    import->add_option("--photos", text, "Where the photos are")->check(CLI::ExistingDirectory);
    import->add_option("--tag", texts, "Tag all of it")->take_all();
    import->add_option("--limit", number, "Stop after so many");
  }

  CLI::App app{"replaced by the table", "moniva"};

 private:
  std::string text;
  std::vector<std::string> texts;
  bool flag = false;
  int number = 0;
};

}  // namespace moniva::test
