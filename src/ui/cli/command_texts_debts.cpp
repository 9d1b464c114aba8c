#include "ui/cli/command_texts.h"

namespace moniva {

std::vector<CommandText> debtTexts() {
  return {
      {"debt",
       "money borrowed from people and lent to them",
       "A debt is open until it is repaid. Money counts in the account it goes through; it is no expense and "
       "no income.",
       {{"moniva debt borrow 50 Anna -a Cash", "Anna lends you money"},
        {"moniva debt repay 20 Anna -a Cash", "you pay some of it back"},
        {"moniva debt list", "see who owes what"}}},
      {"debt borrow",
       "record money that somebody lends you",
       "Where the person owes you in the same currency, that is paid back with it first, oldest first, and "
       "only the rest is a new debt; --apart keeps the two apart.",
       {{"moniva debt borrow 50 Anna -a Cash", ""},
        {"moniva debt borrow 50 Anna --apart", "besides what Anna owes you"}}},
      {"debt lend",
       "record money that you lend somebody",
       "Where you owe the person in the same currency, that is paid back with it first, oldest first, and "
       "only the rest is a new debt; --apart keeps the two apart.",
       {{"moniva debt lend 120 Ben -a Checking -n \"for the rent\"", ""}}},
      {"debt repay",
       "record that a debt is paid back, by you or to you",
       "Of a person's open debts one of exactly the amount comes first, else the oldest. A debt named with "
       "--debt comes first, then the person's others. What you pay back and what is paid back to you follows "
       "from the debts; where there are both, --borrowed or --lent says which is meant.",
       {{"moniva debt repay 20 Anna -a Cash", "what you borrowed, or lent"},
        {"moniva debt repay 30 --debt 1a2b3c4d", "one debt"},
        {"moniva debt repay 80 Anna --excess", "what is too much is a debt the other way"}}},
      {"debt list",
       "list the debts by direction and person",
       "Open debts, unless an option says otherwise, with what was repaid and what is still owed.",
       {{"moniva debt list", "who owes what"}, {"moniva debt list Anna --all", "all there was with Anna"}}},
      {"debt show",
       "show a debt with its repayments",
       "",
       {{"moniva debt show 1a2b3c4d", "the last characters of a record are enough"}}},
      {"debt edit",
       "change a debt that nothing was repaid of",
       "",
       {{"moniva debt edit 1a2b3c4d --amount 60", ""},
        {"moniva debt edit 1a2b3c4d --person \"Anna Berg\"", ""}}},
      {"debt delete",
       "delete a debt with its repayments",
       "'moniva debt restore' brings both back.",
       {{"moniva debt delete 1a2b3c4d", ""}}},
      {"debt restore",
       "bring a deleted debt back with its repayments",
       "",
       {{"moniva debt restore 1a2b3c4d", ""}}},
      {"debt unrepay",
       "remove a repayment, so that its debt is open again",
       "",
       {{"moniva debt unrepay 5e6f7a8b", "a repayment that 'moniva debt show' lists"}}}};
}

}  // namespace moniva
