#include "ui/cli/command_texts.h"

namespace moniva {

std::vector<CommandText> budgetTexts() {
  return {
      {"budget",
       "what may be spent in a month, and what is left of it",
       "A book has a budget for each of its months, or a one-time budget from one day to another; its "
       "categories can have parts of it. Without a command the one in force of the current book is shown.\n\n"
       "What is left is the amount less what was spent, and less what series and instalments still take in "
       "the month. What may be spent today is that, shared out over the days to its end. Where something "
       "was carried in, or instalments are still expected, a line says what is left with everything counted "
       "once: availableAmount in --json. There leftAmount leaves out what was carried in; once the month's "
       "own amount is used up, it is what was carried in and what was overspent, added together; and "
       "todayAvailableAmount goes by leftAmount.",
       {{"moniva budget set 400 --carry", "400 a month; what is left goes into the next"},
        {"moniva budget", "how this month stands"},
        {"moniva budget history", "how the months before went"}}},
      {"budget show",
       "how a month stands, or a one-time budget",
       "Of a month that is over there are no figures for today and of what is still due.",
       {{"moniva budget show --month 2024-03", "a month"},
        {"moniva budget show --all", "every book with a budget"}}},
      {"budget set",
       "set the budget of a book, or what a category has of it",
       "A monthly budget holds from its month on, up to the next month that has an amount of its own, and is "
       "switched on. With --from or --to it is a one-time budget, for which the monthly one makes room until "
       "it "
       "is deleted; a monthly budget takes the place of a one-time one. Categories may be given more than "
       "the budget, which is told.",
       {{"moniva budget set 400", "from this month on"},
        {"moniva budget set 400+50 --carry --month 2024-03 -b Household", "from March on"},
        {"moniva budget set 900 --from 2024-07-01 --to 2024-07-31", "a journey"},
        {"moniva budget set 150 -c Food", "what a category has of it"}}},
      {"budget edit",
       "edit the budget in force, or what a category has of it",
       "A monthly budget is edited from the present month on; for months before see budget history edit.",
       {{"moniva budget edit 450", "another amount"},
        {"moniva budget edit --no-carry", "begin each month anew"},
        {"moniva budget edit --to 2024-08-15", "a one-time budget that goes on longer"}}},
      {"budget on", "switch the budget of a book on again", "", {{"moniva budget on", ""}}},
      {"budget off",
       "switch the budget of a book off",
       "Nothing of it is lost: switched on again it is what it was.",
       {{"moniva budget off -b Travel", ""}}},
      {"budget delete",
       "delete the budget of a book, or what a category has of it",
       "A monthly budget goes with its history, which can be restored; where a one-time budget is deleted "
       "the "
       "monthly one is in force again. On a terminal it is asked for, elsewhere --yes is needed.",
       {{"moniva budget delete --yes", ""}, {"moniva budget delete -c Food --yes", "what a category has"}}},
      {"budget history",
       "the months of a budget: what was spent, carried in and left",
       "From the first month with a budget to the present one. A dim amount goes on from an earlier month. "
       "Left is the amount with what was carried in, less what was spent.",
       {{"moniva budget history", "the current book"},
        {"moniva budget history -b Household --csv", "for a spreadsheet"}}},
      {"budget history edit",
       "edit the amount of a month",
       "That month alone is changed, unless --from-here-on says otherwise, which also brings back months "
       "that "
       "were set aside; what was carried into later months is counted again.",
       {{"moniva budget history edit 2024-03 350", "one month"},
        {"moniva budget history edit 2024-03 350 --from-here-on", "that and all later ones"},
        {"moniva budget history edit 2024-03 --no-carry", "carry nothing on from that month"}}},
      {"budget history delete",
       "delete the amount of a month",
       "The amount of an earlier month goes on then. On a terminal it is asked for, elsewhere --yes is "
       "needed.",
       {{"moniva budget history delete 2024-03 --yes", ""}}},
      {"budget history restart",
       "recalculate the remainder starting from this month",
       "The history begins anew with that month: nothing is carried into it. The months before are set "
       "aside.",
       {{"moniva budget history restart 2024-01", "a new beginning with the year"}}},
      {"budget history restore",
       "restore the historical remainders",
       "Brings back the months that were set aside, so that what was left of them is carried on again, and "
       "switches the budget on.",
       {{"moniva budget history restore", ""}}},
  };
}

}  // namespace moniva
