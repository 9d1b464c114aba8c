#include "ui/cli/command_texts.h"

namespace moniva {

std::vector<CommandText> planTexts() {
  return {
      {"instalment",
       "expenses paid in instalments",
       "A total in equal shares, one a month; the first takes what rounding leaves. Instalments that lie "
       "ahead are pending until their day.",
       {{"moniva instalment add 1200 12 -c Household -a Checking --dry-run", "see the plan"},
        {"moniva instalment divide 5f0c1a2b 6", "an expense that is there"},
        {"moniva instalment list", "the plans there are"}}},
      {"instalment add",
       "record an expense as a plan of instalments",
       "The date is that of the first one. A plan that begins on the 31st, or on the last day of February, "
       "has each on the last day of its month.",
       {{"moniva instalment add 1200 12 -c Household -a Checking -d 2024-01-31", ""},
        {"moniva instalment add 600 3 --fee 15 -a Cash --dry-run", "shows the plan and writes nothing"}}},
      {"instalment divide",
       "divide an expense into instalments",
       "",
       {{"moniva instalment divide 5f0c1a2b 6", ""}}},
      {"instalment list", "list plans of instalments", "", {{"moniva instalment list --pending", ""}}},
      {"instalment cancel",
       "make a plan one expense again",
       "Of what its instalments come to, on the day of the first one.",
       {{"moniva instalment cancel 5f0c1a2b", ""}}},
      {"cost",
       "expenses spread over months",
       "Paid once, and counted in the months it is for: a year's insurance, a season ticket.",
       {{"moniva cost add 120 --from 2024-01-01 --to 2024-12-31 -c Insurance -a Checking", ""},
        {"moniva cost spread 5f0c1a2b --from 2024-01-01 --to 2024-12-31", "an expense that is there"}}},
      {"cost add",
       "record an expense and spread it over months",
       "Each month from the first day has a share; one that is cut short has less. The date is when it was "
       "paid.",
       {{"moniva cost add 120 --from 2024-01-01 --to 2024-12-31 -c Insurance -a Checking -d 2023-12-20", ""},
        {"moniva cost add 90 --from 2024-01-15 --to 2024-03-31 --dry-run",
         "shows the shares and writes nothing"}}},
      {"cost spread",
       "spread an expense over months",
       "",
       {{"moniva cost spread 5f0c1a2b --from 2024-01-01 --to 2024-12-31", ""}}},
      {"cost change",
       "spread a cost over other months",
       "",
       {{"moniva cost change 5f0c1a2b --from 2024-01-01 --to 2024-06-30", ""}}},
      {"cost combine", "make a spread cost one expense again", "", {{"moniva cost combine 5f0c1a2b", ""}}},
      {"cost list", "list spread costs", "", {{"moniva cost list", ""}}}};
}

}  // namespace moniva
