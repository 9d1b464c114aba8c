#include "ui/cli/command_texts.h"

namespace moniva {

std::vector<CommandText> repeatTexts() {
  return {
      {"repeat",
       "records that repeat: see, change and end series",
       "A series makes a record each time its day has come. Begin one with --repeat when you add an expense, "
       "income or a transfer.",
       {{"moniva repeat list", "what repeats, and when next"},
        {"moniva repeat edit 1a2b3c4d --following --amount 520", "another amount from one record on"}}},
      {"repeat list",
       "list the series by how often they repeat",
       "With what all series of a rule come to each time, by currency. The identifier at the beginning of "
       "each line "
       "is what the other commands take.",
       {{"moniva repeat list", ""},
        {"moniva repeat list --rule monthly -b Household", "those of a rule and a book"},
        {"moniva repeat list --stopped", "those that can be taken up again"}}},
      {"repeat show",
       "show a series, what it has made, and its next days",
       "Any of its records names it.",
       {{"moniva repeat show 1a2b3c4d", ""},
        {"moniva repeat show 1a2b3c4d --coming 12 --all", "a year to come, and every record there is"}}},
      {"repeat edit",
       "change a series, from one of its records on, or that record alone",
       "What lies before stays as it was with --this and --following. Another rule or day divides the "
       "series there; its records stay, and with another day they move along. Where the series itself is "
       "named, its next record is meant.",
       {{"moniva repeat edit 1a2b3c4d --following --amount 520", "the rent went up"},
        {"moniva repeat edit 1a2b3c4d --following --amount 30 USD", ""},
        {"moniva repeat edit 1a2b3c4d --this --date 2024-03-04", "paid later, this once"},
        {"moniva repeat edit 1a2b3c4d --following --rule Quarterly", "less often from here on"},
        {"moniva repeat edit 1a2b3c4d --all --category Rent --until 2025-12-31", ""}}},
      {"repeat stop",
       "end a series and keep what it has made",
       "'moniva repeat resume' takes it up again.",
       {{"moniva repeat stop 1a2b3c4d", ""}}},
      {"repeat resume",
       "take up a series that was stopped or is over",
       "It goes on with its next day after today; --fill adds what would have come due meanwhile.",
       {{"moniva repeat resume 1a2b3c4d", ""},
        {"moniva repeat resume 1a2b3c4d --fill --until never", "with what it missed, and no end"}}},
      {"repeat delete",
       "delete a series with all it has made",
       "It is not brought back; --dry-run tells how many records would go.",
       {{"moniva repeat delete 1a2b3c4d --dry-run", ""}}},
      {"repeat refill",
       "add what a series lacks since it began",
       "Days whose record was deleted by a person stay without one.",
       {{"moniva repeat refill 1a2b3c4d", ""}, {"moniva repeat refill --all --dry-run", "what is missing"}}},
      {"due",
       "see what is to be paid and comes in next",
       "What is pending, overdue first, the records that series will make, and the bills of credit accounts "
       "that are to be paid, with what they come to up to each line by currency. Transfers are listed, and "
       "are in no sum. What is reminded of says so. Bills are of no book; with --book and --csv they are "
       "left out, and 'moniva bill --csv' has them.",
       {{"moniva due", "the next seven days"}, {"moniva due --days 30 -b Household", ""}}}};
}

}  // namespace moniva
