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
    workshop_.makeDirectory("photos");
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

  if (!workshop_.has("zsh")) return;
  workshop_.write("moniva.zsh", zsh);
  EXPECT_EQ(workshop_.run("zsh -n moniva.zsh"), "");
  workshop_.write("call.zsh",
                  "compdef() { print -r \"compdef $*\" }\n"
                  "_arguments() { print -rl -- \"$@\"; state=rest; words=(add); return 1 }\n"
                  "source ./moniva.zsh\n_moniva_book\n");
  const std::string called = workshop_.run("zsh -f call.zsh");
  EXPECT_NE(called.find("compdef _moniva moniva\n-C\n(-h --help)-h[Print this help]\n"), std::string::npos)
      << called;
  EXPECT_NE(called.find("\n: :->command\n*:: :->rest\n"), std::string::npos) << called;
  EXPECT_NE(called.find("\n(-c --currency)-c+[Currency of the book]:TEXT:(EUR USD XAU\\ oz)\n"),
            std::string::npos)
      << "the command below is reached\n"
      << called;
}

TEST_F(Completion, fishOffersWhatFits) {
  const std::string fish = script(Shell::fish);
  const std::pair<const char*, const char*> parts[] = {
      {"complete -c moniva -n '__moniva_at \\'\\'' -a '\\'books\\'' -d 'Books [and accounts]: who owns "
       "what'\n",
       "alias"},
      {" -s 's' -l 'store' -r -F -d 'The store\\'s file'\n", "files, and a quote"},
      {" -l 'color' -x -a '\\'auto\\' \\'always\\' \\'never\\'' -d 'When to colour'\n", "choices"},
      {"complete -c moniva -n '__moniva_at \\' import\\' 1 1' -a '\\'csv\\' \\'json\\''\n", "first argument"},
      {"complete -c moniva -n '__moniva_at \\' import\\' 2 9999' -F -d 'What to read'\n", "all others"},
      {"            case ' book' ' books'\n                set path ' book'\n",
       "aliases lead to one command"},
  };
  for (const auto& [part, why] : parts) EXPECT_NE(fish.find(part), std::string::npos) << why << "\n" << fish;
  EXPECT_EQ(fish.find("secret"), std::string::npos);

  if (!workshop_.has("fish")) return;
  workshop_.write("moniva.fish", fish);
  EXPECT_EQ(workshop_.run("HOME=$PWD fish -n moniva.fish"), "");
  const Line lines[] = {
      {"moniva b", "book\tBooks [and accounts]: who owns what\nbooks\tBooks [and accounts]: who owns what\n",
       "commands"},
      {"moniva --store book books ", "add\tAdd a book\n", "after an option's value and an alias"},
      {"moniva book add -c U", "USD\tCurrency of the book\n", "choices of an option"},
      {"moniva --color=al", "--color=always\tWhen to colour\n", "behind a sign"},
      {"moniva import ", "csv\njson\n", "choices of an argument"},
      {"moniva import csv o", "other.json\n", "files of the next"},
      {"moniva book add --sh",
       "--shown\tKeep it out of sums, which takes a text that is longer than a line\n", "flag"},
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
