#include "ui/cli/man_page.h"

#include <gtest/gtest.h>

#include "ui/sample_program.h"
#include "ui/shell.h"

namespace moniva {
namespace {

std::string samplePage() {
  const test::SampleProgram program;
  const ManualTexts texts{.commands = test::sampleTexts(),
                          .exitStatus = {{"0", "Done."}, {"1", "'Not' done\n.SH in the text"}},
                          .environment = {{"NO_COLOR", ""}, {"TERM", "Kind of `terminal`."}},
                          .files = {{"~/.moniva/db.sqlite", "The store."}}};
  return manPage(program.app, texts, "0.1", "2024-02-29");
}

TEST(ManPage, isEscaped) {
  const std::string page = samplePage();
  const std::pair<const char*, const char*> parts[] = {
      {".TH \"MONIVA\" 1 \"2024\\-02\\-29\" \"moniva 0.1\" \"User Commands\"\n", "the date of the page"},
      {"\n\\&.profile isn\\(aqt read; C:\\emoniva isn\\(aqt either.\n",
       "a dot at the beginning, a backslash"},
      {"\n\\fB\\-s\\fR, \\fB\\-\\-store\\fR \\fIFILE\\fR\n", "hyphens that are typed"},
      {"\n\\&\\(aqNot\\(aq done\n\\&.SH in the text\n", "a quote and a dot at the beginning of lines"},
      {"\n\\fBmoniva book add \\-\\-currency=USD \\(dqNew York\\(dq\\fR\n", "quotes of an example"},
      {"\n.TP\n\\fBNO_COLOR\\fR\n\\&\n.TP\n", "an entry without text keeps the next one apart"},
  };
  for (const auto& [part, why] : parts) EXPECT_NE(page.find(part), std::string::npos) << why << "\n" << page;
}

TEST(ManPage, formatsWithoutWarnings) {
  const std::string page = samplePage();
  EXPECT_EQ(page.find("\n\n"), std::string::npos) << "empty lines would be printed as they are";
  const test::Workshop workshop;
  if (!workshop.has("groff")) return;
  workshop.write("moniva.1", page);
  EXPECT_EQ(workshop.run("groff -man -Tascii -ww -z moniva.1"), "");
  const std::string shown = workshop.run("groff -man -Tascii -P-cbou -rLL=80n moniva.1");
  std::size_t at = 0;
  for (const char* heading : {"\nNAME\n", "\nSYNOPSIS\n", "\nDESCRIPTION\n", "\nOPTIONS\n", "\nCOMMANDS\n",
                              "\n   moniva book add\n", "\nEXAMPLES\n", "\nEXIT STATUS\n", "\nFILES\n"}) {
    at = shown.find(heading, at);
    ASSERT_NE(at, std::string::npos) << heading << "\n" << shown;
  }
  for (const char* text : {"\n       moniva - Keep track of money\n", "C:\\moniva isn't either.",
                           "moniva book add --currency=USD \"New York\"\n", "\n       -s, --store FILE\n",
                           ".SH in the text", "Kind of `terminal`."}) {
    EXPECT_NE(shown.find(text), std::string::npos) << text << "\n" << shown;
  }
}

}  // namespace
}  // namespace moniva
