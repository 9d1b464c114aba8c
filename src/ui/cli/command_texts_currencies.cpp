#include "ui/cli/command_texts.h"

namespace moniva {

std::vector<CommandText> currencyTexts() {
  return {
      {"currency",
       "the currencies you pick from",
       "Your list begins with ten common ones. Every currency can be used, whether it is in the list or not; "
       "codes have three capital letters, such as USD.",
       {{"moniva currency list", "your list"}, {"moniva currency add CHF SEK", "two more"}}},
      {"currency list",
       "list currencies, and what is kept in them",
       "Paid in it are records that were entered with an amount in the currency besides their own. With "
       "--all "
       "every currency there is today is listed, with a star where it is in your list. A text narrows the "
       "list by code or name, in your language or English.",
       {{"moniva currency list", "your list"},
        {"moniva currency list --all krona", "which currencies are called that"}}},
      {"currency add",
       "put currencies in your list",
       "",
       {{"moniva currency add CHF SEK", "Swiss francs and Swedish kronor"}}},
      {"currency remove",
       "take currencies off your list",
       "Books, accounts and records kept in them stay as they are.",
       {{"moniva currency remove HKD", ""}}},
      {"rate",
       "exchange rates",
       "Rates come from two services on the web and are kept with the settings. Where a command needs one, "
       "rates more than half a day old are fetched anew first, unless that takes too long. No record changes "
       "with the rates: it keeps the amount it was entered with.",
       {{"moniva rate show", "the currencies of your list"},
        {"moniva rate convert 20 USD", "what that is in your own currency"}}},
      {"rate show",
       "show exchange rates",
       "Without a currency those of your list, your books and your accounts are shown against your own "
       "currency, which is the current book's. With --direct the first service is asked for the rate now, "
       "and those kept stay as they are.",
       {{"moniva rate show", "your currencies"},
        {"moniva rate show USD JPY", "one pair"},
        {"moniva rate show --all", "every rate known"}}},
      {"rate convert",
       "work out an amount in another currency",
       "",
       {{"moniva rate convert 20 USD", "in your own currency"},
        {"moniva rate convert 1500 JPY CHF", "in another"}}},
      {"rate refresh",
       "fetch the exchange rates now",
       "Where no service answers, those known stay.",
       {{"moniva rate refresh", ""}}},
      {"rate load",
       "take exchange rates from a file",
       "For machines without a network: the file is the answer of an exchange-rate service, a JSON object "
       "whose member \"rates\" has what one US dollar is in each currency. All rates known are replaced.",
       {{"moniva rate load rates.json", ""}}},
      {"rate services",
       "say where exchange rates come from",
       "Without an option the command tells where. The first service is asked for /v4/latest/USD, the second "
       "for /latest?base=USD; where both answer, the second's rates count. The word \"off\" stands for none.",
       {{"moniva rate services", "see where from"},
        {"moniva rate services --primary https://rates.example.org", "another first service"},
        {"moniva rate services --off", "fetch nothing any more"},
        {"moniva rate services --usual", "the usual ones again"}}}};
}

}  // namespace moniva
