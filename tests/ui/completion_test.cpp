#include "ui/cli/completion.h"

#include <gtest/gtest.h>

#include "ui/sample_program.h"
#include "ui/shell.h"

namespace moniva {
namespace {

struct Line {
  const char* typed;    ///< with bash's splitting, the last word being completed
  const char* offered;  ///< one a line
  const char* why;
};

class Completion : public testing::Test {
 protected:
  Completion() {
    workshop_.write("a file.csv", "");
    workshop_.write("other.json", "");
    std::filesystem::create_directory(workshop_ / "photos");
  }

  std::string script(Shell shell) const { return completionScript(program_.app, shell, test::sampleTexts()); }

  test::SampleProgram program_;
  test::Workshop workshop_;
};

TEST_F(Completion, bashOffersWhatFits) {
  workshop_.write("moniva.bash", script(Shell::bash));
  ASSERT_EQ(workshop_.run("bash -c 'source ./moniva.bash; complete -p moniva'"),
            "complete -F _moniva moniva\n");
  workshop_.write("complete.bash",
                  "source ./moniva.bash\n"
                  "COMP_WORDS=(\"$@\") COMP_CWORD=$(($# - 1))\n"
                  "_moniva\n"
                  "((${#COMPREPLY[@]})) && printf '%s\\n' \"${COMPREPLY[@]}\" | LC_ALL=C sort\n"
                  "true");
  const Line lines[] = {
      {"moniva ''", "book\nbooks\nimport\n", "commands and aliases, hidden ones not"},
      {"moniva book ''", "add\n", "commands below"},
      {"moniva books add --cur", "--currency\n", "after an alias"},
      {"moniva book add --", "--color\n--currency\n--help\n--hidden\n--shown\n--store\n",
       "inherited ones too"},
      {"moniva --s", "--store\n", "hidden options stay hidden"},
      {"moniva --color = ''", "always\nauto\nnever\n", "behind a sign"},
      {"moniva --color =", "always\nauto\nnever\n", "the sign just typed"},
      {"moniva book add -c X", "XAU\\ oz\n", "a choice that has to be quoted"},
      {"moniva --store book book add -c U", "USD\n", "a value that is a command's name as well"},
      {"moniva --store ''", "a file.csv\ncomplete.bash\nmoniva.bash\nother.json\nphotos\n", "files"},
      {"moniva import ''", "csv\njson\n", "choices of an argument"},
      {"moniva import csv other.json a", "a file.csv\n", "an argument taken many times"},
      {"moniva import --photos ''", "photos\n", "directories only"},
      {"moniva book add ''", "", "a name nothing is known of"},
  };
  for (const Line& line : lines) {
    EXPECT_EQ(workshop_.run(std::string("bash complete.bash ") + line.typed), line.offered)
        << line.why << ": " << line.typed;
  }
}

TEST_F(Completion, zshDescribesOptionsAndArguments) {
  const std::string zsh = script(Shell::zsh);
  const std::pair<const char*, const char*> parts[] = {
      {"#compdef moniva\n", "found by compinit"},
      {"    '(-c --currency)-c+[Currency of the book]:TEXT:(EUR USD XAU\\ oz)' \\\n", "choices, quoted"},
      {"    '(-s --store)--store=[The store'\\''s file]:FILE:_files' \\\n", "a quote inside quotes"},
      {"    '*--tag=[Tag all of it]:TEXT: ' \\\n", "an option taken many times"},
      {"    ':FORMAT:(csv json)' \\\n    '*:FILE:_files'\n", "arguments in their order"},
      {"    'book:Books [and accounts]: who owns what'\n", "summaries of commands"},
  };
  for (const auto& [part, why] : parts) EXPECT_NE(zsh.find(part), std::string::npos) << why << "\n" << zsh;
  EXPECT_EQ(zsh.find("secret"), std::string::npos);

  ASSERT_TRUE(workshop_.has("zsh")) << "scripts/packages.sh check installs it";
  workshop_.write("moniva.zsh", zsh);
  EXPECT_EQ(workshop_.run("zsh -n moniva.zsh"), "");
}

TEST_F(Completion, fishOffersWhatFits) {
  ASSERT_TRUE(workshop_.has("fish")) << "scripts/packages.sh check installs it";
  workshop_.write("moniva.fish", script(Shell::fish));
  const Line lines[] = {
      {"moniva boo",
       "book\tBooks [and accounts]: who owns what\nbooks\tBooks [and accounts]: who owns what\n",
       "commands and aliases"},
      {"moniva --store book books ", "add\tAdd a book\n", "after an option's value and an alias"},
      {"moniva book add -c U", "USD\tCurrency of the book\n", "choices of an option"},
      {"moniva --s", "--store\tThe store's file\n", "hidden options stay hidden; a quote"},
      {"moniva --color=al", "--color=always\tWhen to colour\n", "behind a sign"},
      {"moniva import ", "csv\njson\n", "choices of an argument"},
      {"moniva import csv o", "other.json\n", "files of the next"},
  };
  for (const Line& line : lines) {
    EXPECT_EQ(workshop_.run(std::string("HOME=$PWD fish -c 'source moniva.fish; complete -C \"") +
                            line.typed + "\"'"),
              line.offered)
        << line.why << ": " << line.typed;
  }
}

}  // namespace
}  // namespace moniva
