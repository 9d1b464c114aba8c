#include "ui/cli/command_texts.h"

namespace moniva {

std::vector<CommandText> searchTexts() {
  return {
      {"search",
       "find records by text, amount, account and date",
       "Every record of which the note, the category, the vendor or the name of the person holds the text, "
       "the "
       "newest first; several words are one text. Capitals and small letters are the same, and so are signs "
       "of "
       "full and half width and traditional and simplified ones. A number finds exactly that amount as well. "
       "Plans and spread costs are found as a whole; instalments and payments stand for themselves.",
       {{"moniva search bakery", "all that says so somewhere"},
        {"moniva search 12.50 -a Cash", "that amount, or that text, through an account"},
        {"moniva search summer holidays --from 2023-01-01 --to 2023-12-31 --in records", "in one year"},
        {"moniva search --amount 800 --in transfers --csv", "for a spreadsheet"},
        {"moniva search coffee --page 2", "the next records"},
        {"moniva search -- --tips", "a text that begins like an option"}}},
      {"searches",
       "texts that you search for again and again",
       "",
       {{"moniva searches save summer holidays", ""}, {"moniva search --saved 1", "the one saved last"}}},
      {"searches list", "list the saved searches, the newest first", "", {{"moniva searches list", ""}}},
      {"searches save", "save a text to search for", "", {{"moniva searches save summer holidays", ""}}},
      {"searches forget",
       "forget a saved search",
       "",
       {{"moniva searches forget summer holidays", ""}, {"moniva searches forget --all", ""}}},
      {"explain",
       "show the records that a figure is made of",
       "The records of a figure of 'moniva report' or 'moniva breakdown', the oldest first, and what they "
       "come "
       "to. The report or the breakdown is asked as well; should the two differ, that is told and the exit "
       "status is 1. What one might miss is told below.",
       {{"moniva explain", "what is left this month"},
        {"moniva explain 2024-03 --type expense", "what was spent in a month"},
        {"moniva explain 2024 -c Food/Bakery", "a category of a year"},
        {"moniva explain 2024-03 -a Checking --type transfers-out", "what moved on from an account"}}},
  };
}

}  // namespace moniva
