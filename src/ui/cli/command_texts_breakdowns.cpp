#include "ui/cli/command_texts.h"

namespace moniva {

std::vector<CommandText> breakdownTexts() {
  return {
      {"breakdown",
       "what the money went for, and where it came from",
       "The largest first, with their shares; without a period the book's present month. What a report of"
       " the same period counts and the rows do not, such as refunds, is told below them.",
       {{"moniva breakdown category", "this month's expenses by category"},
        {"moniva breakdown vendor 2024 --limit 10", "a year's ten largest payees, the others added up"},
        {"moniva breakdown account 2024-03 --of Cash --records", "what was paid from an account"}}},
      {"breakdown category",
       "by category; of one category by what is below it",
       "",
       {{"moniva breakdown category 2024-03", "a month"},
        {"moniva breakdown category 2024 Food", "what is below a category"},
        {"moniva breakdown category 2024 Food --by month", "a category month by month"},
        {"moniva breakdown category --of Food/Bakery --records", "its records of this month"},
        {"moniva breakdown category 2024 --income --csv", "income, for a spreadsheet"}}},
      {"breakdown subcategory",
       "by subcategory, over all categories",
       "Refunds are taken off the subcategory they are of.",
       {{"moniva breakdown subcategory 2024 --limit 20", ""}}},
      {"breakdown vendor",
       "by payee, or by payer",
       "What names no payee is one row.",
       {{"moniva breakdown vendor 2024", "a year's payees"},
        {"moniva breakdown vendor 2024 --income", "its payers"},
        {"moniva breakdown vendor --of Lang --by year", "one payee over the years"},
        {"moniva breakdown vendor 2024 NoPayee --records", "what names none"}}},
      {"breakdown account",
       "by the account that paid",
       "Records that have payments count by these, on the days of the payments. A record in several books"
       " has no account here: its payments are for all of it. Costs spread over months are in no row.",
       {{"moniva breakdown account", "this month"},
        {"moniva breakdown account 2024 --by month", "all accounts month by month"},
        {"moniva breakdown account 2024 Cash --by week", "one of them"}}},
      {"breakdown currency",
       "by foreign currency, each in its own units",
       "",
       {{"moniva breakdown currency 2024", "a year's foreign money"},
        {"moniva breakdown currency 2024 USD --records", ""}}},
  };
}

}  // namespace moniva
