#include "ui/cli/command_texts.h"

namespace moniva {

std::vector<CommandText> listTexts() {
  return {
      {"list",
       "what was entered last, is to be paid, comes next, was deleted, and more",
       "Without a command: which lists there are, and how many records each of them has now.",
       {{"moniva list", "all lists with their counts"},
        {"moniva list due", "the next seven days"},
        {"moniva list unpaid", "what is still to be paid"}}},
      {"list added",
       "list the expenses, or income, of a book that were entered last",
       "The last 20 by their dates. Payments, and what a series made by itself, are not among them.",
       {{"moniva list added", "expenses of the current book"},
        {"moniva list added --income -b Household --before 2024-03-01", ""}}},
      {"list unpaid",
       "list what is still to be paid, day by day",
       "Pending expenses, income and transfers, and the pending payments of larger records, with the sums of "
       "each day by currency. Days that are over are marked as overdue. Instalments have a list of their "
       "own.",
       {{"moniva list unpaid", ""}, {"moniva list unpaid --json", "with the sums of each day"}}},
      {"list deleted",
       "list what was deleted lately and can be brought back",
       "Of a record of several parts one line stands for all; restoring it brings all of them back.",
       {{"moniva list deleted", "in the last 30 days"},
        {"moniva list deleted --since 2024-01-01", ""},
        {"moniva restore 1a2b3c4d", "bring one back, by the end of its eid"}}},
      {"list day",
       "list what happened on a day, by kind",
       "Transfers, and debts, belong to no book and are listed for each.",
       {{"moniva list day", "today"}, {"moniva list day 2024-03-05 -b Household", ""}}},
      {"list edited",
       "list what was entered or edited on a day, the latest first",
       "Whatever its own date is.",
       {{"moniva list edited", "today"}, {"moniva list edited 2024-03-05", ""}}},
      {"list debts",
       "list debts by person, with what is owed in each currency",
       "",
       {{"moniva list debts", "open ones"}, {"moniva list debts --settled --person Anna", ""}}},
      {"list due",
       "list what is due up to seven days from today",
       "The next records of series, and whatever is pending; what is overdue comes first, and today is "
       "marked.",
       {{"moniva list due", ""}}},
      {"list instalments", "list the instalments still to be paid", "", {{"moniva list instalments", ""}}},
      {"list templates",
       "list the records kept to be entered again, the one used most first",
       "",
       {{"moniva list templates", ""}}},
      {"list alerts",
       "list last month's bills and the instalments that are due",
       "What was spent on each credit account in its last closed month, less what was refunded, with the day "
       "by which it is to be paid; and the plans of which instalments are due.",
       {{"moniva list alerts", ""}}}};
}

}  // namespace moniva
