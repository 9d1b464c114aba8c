#include "ui/cli/command_texts.h"

namespace moniva {

std::vector<CommandText> reportTexts() {
  return {
      {"report",
       "what came in and went out",
       "Of a book what was earned and spent, of an account what came in and went out, transfers too; of a "
       "group "
       "what that comes to for its members. Only what is settled counts; --pending shows besides what is "
       "still "
       "to come. Ctrl-C stops a long report: it prints what it has and says that it is partial.",
       {{"moniva report month", "the months of this year"},
        {"moniva report day 2024-02", "the days of a month"},
        {"moniva report year --json", "all years, for another program"}}},
      {"report year",
       "the years of a book or an account",
       "",
       {{"moniva report year", "all years of the current book"},
        {"moniva report year 2020..2024 -b Household", ""},
        {"moniva report year -c Food --compare previous", "a category, and by how much it changed"}}},
      {"report month",
       "the months of a book or an account",
       "Months and years are those of the book: where it begins its months on the 25th, so does the report.",
       {{"moniva report month", "this year"},
        {"moniva report month 2024 -b Household", "another year"},
        {"moniva report month 2024-03..2024-08 -a Checking", "some months of an account"},
        {"moniva report month --compare year --type expense", "beside the same months a year before"},
        {"moniva report month --vendor \"Bäckerei Lang\"", "what was spent at one vendor"},
        {"moniva report month --currency USD", "what was in foreign money, in its units"},
        {"moniva report month --pending", "with what is still to be paid"}}},
      {"report week",
       "the weeks of a book or an account",
       "A week begins on the book's own first weekday. Compared with a year before it is the week 52 weeks "
       "before.",
       {{"moniva report week", "the weeks of this year"},
        {"moniva report week 2024-03 --csv", "those of a month, for a spreadsheet"}}},
      {"report day",
       "the days of a book or an account, or one day with its records",
       "",
       {{"moniva report day", "this month"},
        {"moniva report day 2024-02 --empty", "every day of a month"},
        {"moniva report day yesterday", "one day with its records"},
        {"moniva report day today --accounts-in USD", "a day of all accounts kept in dollars"}}},
      {"report fiscal-year",
       "the years as the book counts them, with their first and last day",
       "",
       {{"moniva report fiscal-year -b Club", ""}}},
      {"report expected",
       "what is to be expected of expenses",
       "What series of expenses have yet to make, instalments that are neither paid nor to be reimbursed, "
       "and "
       "pending expenses, less pending income.",
       {{"moniva report expected", "this month"}, {"moniva report expected 2024 -b Household", ""}}}};
}

}  // namespace moniva
