#include "ui/cli/command_texts.h"

namespace moniva {

std::span<const CommandText> commandTexts() {
  static const std::vector<CommandText> texts = {
      {"",
       "a personal-finance ledger",
       "Moniva keeps what you spend, earn and move: books that group expense and income, and the accounts "
       "they are paid"
       " from. All of it lies in one file in the data folder.\n\n"
       "Standard output carries what was asked for: tables, JSON, and the sentence that answers a command "
       "which "
       "changed something. Messages about it, such as that the clock skips a time, and progress go to "
       "standard "
       "error; --quiet leaves them out, but never an error.",
       {{"moniva demo", "see it at work on the records of a household"},
        {"moniva book add Household --currency EUR", "begin a book"},
        {"moniva account add Cash", "begin an account"},
        {"moniva spend add 12.50 -c Food -a Cash --create", "record an expense"},
        {"moniva report month", "see the months of this year"}}},
      {"import",
       "take in a file of records",
       "The file is a table with a heading line: comma-, semicolon- or tab-separated values in UTF-8 or "
       "UTF-16. Its"
       " columns may be in any order; those known are Date, Time, Type (expense, income, transfer), Book, "
       "Account,"
       " Category, Subcategory, Payee, Amount, Foreign amount, Foreign currency, To account, To amount, Note "
       "and"
       " Currency, with common synonyms in English, German and Chinese. Without a Type the sign of the "
       "amount decides.\n\n"
       "Books, accounts, categories and vendors that are new are made. Everything is written at once or not "
       "at all, and"
       " a record that was imported before is not added again.",
       {{"moniva import records.csv --dry-run", "see what would happen"},
        {"moniva import records.csv", "take the file in"},
        {"moniva import bank.csv --skip-bad --decimal comma", "take the good rows of a German bank's file"}}},
      {"export",
       "write records to a file for other programs",
       "A file that is there is only replaced with --force, and then whole or not at all.",
       {{"moniva export journal household.journal", "for hledger and ledger"},
        {"moniva export csv records.csv", "for spreadsheets, and to import again"}}},
      {"export journal",
       "write the ledger as plain-text accounting",
       "The file is one that hledger and ledger take with their strict checks on. Expenses and income stand "
       "below their book, category and subcategory; after each posting to an account stands its balance, so "
       "that another program reckons the same or says where not. Each transaction has the identifier of its "
       "record as the tag \"eid\".\n\n"
       "Written is what is settled. What is pending is left out, and its number told; with --pending it is "
       "marked \"!\" and stands in an account Pending below its own. A journal that does not begin with the "
       "first record begins with the balances of its first day. One of a book tells no balances of accounts; "
       "one of an account has of other "
       "accounts only what went between them.",
       {{"moniva export journal household.journal && hledger -f household.journal check --strict",
         "have the books proved"},
        {"moniva export journal --from 2024-01-01 --to 2024-12-31 2024.journal", "a year"},
        {"moniva export journal -a Checking | hledger -f - register checking", "one account"}}},
      {"export csv",
       "write records as a table",
       "Expenses, income, transfers and debts with a heading line of the names of their fields; moniva "
       "import "
       "reads it again. An expense paid from several accounts has a line for each. Debts, payments and "
       "refunds apart from their expense, and transfers with a charge are in the table, but nothing that "
       "import "
       "takes: with --skip-bad it passes over them. Opening balances are not in it, what is dated ahead is "
       "pending after an import, and accounts of other currencies should be there first.",
       {{"moniva export csv records.csv", "everything"},
        {"moniva export csv --from 2024-01-01 -b Household --separator semicolon --bom records.csv",
         "for a spreadsheet program of Central Europe"}}},
      {"calc",
       "calculate with amounts on a keypad",
       "The keypad that amounts are typed on: + - × ÷ (or * and /), strictly from left to right and without "
       "precedence, so 2+3×4 gives 20. Each result is rounded to the decimals of the currency, halves away "
       "from zero; something divided by zero is shown as ∞. The currency is that of --currency, else the one "
       "most people here count in; no store is needed.\n\n"
       "Without an EXPRESSION keys are read one by one: on a terminal one line shows the display and what it "
       "comes to until q or Ctrl-D ends it. Otherwise a line is printed for each key, every line of the "
       "input is a sum of its own, and a key that would be dropped is refused. Keys are the digits, a "
       "decimal mark, the operators (x and : too), = or Enter, Backspace, which takes the last character "
       "back, and Delete or C, which takes all. An operator takes the place of the one before it.",
       {{"moniva calc 12.50+3×4", "62.00: from left to right"},
        {"moniva calc --currency JPY \"1000 / 3\"", "in whole yen"},
        {"moniva calc --steps 12.50+3", "key by key"},
        {"moniva calc -- -5+20", "a sum that begins with a minus"},
        {"moniva calc", "type the keys"},
        {"moniva calc --auto-fill 1250+300", "digits as on a cash register"}}},
      {"doctor",
       "look the store over",
       "Looks at the file and at what its records say of each other, and changes nothing. The exit status "
       "tells whether all is well. With --clock it asks a web server for the time instead, and says by how "
       "much the clock of this device is fast or slow; a minute is too much.",
       {{"moniva doctor", "look everything over"},
        {"moniva doctor --clock", "see whether the clock of this device is right"},
        {"moniva doctor --set-aside", "keep a damaged data file under a dated name and begin a new store"}}},
      {"upgrade",
       "bring a store of an older version up to date",
       "The first command of a day does so by itself; this one does it now, or shows what there is to do. No "
       "other program may have the store open meanwhile. Each step is done whole or not at all, and one that "
       "fails does not keep the others back. The store as it was before is kept beside it where anything was "
       "changed.",
       {{"moniva upgrade --dry-run", "see what the store needs"},
        {"moniva upgrade", "do it"},
        {"moniva upgrade --again 13", "have the records of all series repaired once more"}}},
      {"repair",
       "mend series that have two records for a day, or lost some",
       "Two devices that each made a record of a series for one day leave two. Of those the one edited last "
       "stays, and what a person deleted or moved to another day is left so. Records that an earlier repair "
       "removed come back where their day has none, what is left of deleted series is removed, and masses of "
       "removed copies leave the file. What is found is shown first; records of a series that does not "
       "exist, "
       "and series that cannot go on, are only shown. What older versions damaged of transfers, plans, "
       "carts, "
       "vendors and groups is mended too.",
       {{"moniva repair --dry-run", "see what there is to mend"}, {"moniva repair", "mend it"}}},
      {"open",
       "hand a URL or a file to the program",
       "Some URLs ask for maintenance: moniva://sendlog has the next command tell where the log of faults "
       "is; "
       "moniva://fix, moniva://fix2 and moniva://fix3 leave a request for repairs with the settings, for the "
       "first "
       "opening of a day or moniva upgrade, and change nothing else; "
       "moniva://resetdb begins an empty store at once and keeps the old file beside it. A file waits while "
       "the "
       "store is locked.",
       {{"moniva open moniva://sendlog && moniva book list", "the second tells where the log of faults is"},
        {"moniva open file:///home/ada/backup.mvk", "a file"}}},
      {"demo",
       "show the program at work on the records of a household",
       "Makes a store in a folder of its own, imports three years of records, shows the months of 2024, the "
       "accounts and"
       " the largest categories and the last months of its budget, and throws the store away.",
       {{"moniva demo", ""}}},
      {"completion",
       "print the completion script of a shell",
       "",
       {{"source <(moniva completion bash)", "for this shell"},
        {"moniva completion fish > ~/.config/fish/completions/moniva.fish", "for good"}}},
      {"man", "print the manual page", "", {{"moniva man | man -l -", "read it"}}},
  };
  static const std::vector<CommandText> all = [] {
    std::vector<CommandText> joined = texts;
    for (const auto& family : {
             bookTexts(),
             categoryTexts(),
             vendorTexts(),
             photoTexts(),
             transferTexts(),
             repeatTexts(),
             debtTexts(),
             billTexts(),
             currencyTexts(),
             spendTexts(),
             planTexts(),
             listTexts(),
             breakdownTexts(),
             budgetTexts(),
             reportTexts(),
             searchTexts(),
         }) {
      joined.insert(joined.end(), family.begin(), family.end());
    }
    return joined;
  }();
  return all;
}

std::vector<ManualEntry> exitStatusTexts() {
  return {
      {"0", "done"},
      {"1",
       "refused or failed; nothing was changed, unless the message says that the work is done and only its "
       "answer could not be written"},
      {"2", "the command line was not understood"},
      {"130", "interrupted; a report that was printed is partial, and says so"}};
}

std::vector<ManualEntry> environmentTexts() {
  return {{"MONIVA_DATA", "the data folder, unless --data names one"},
          {"MONIVA_PASSCODE", "the passcode of a locked store"},
          {"XDG_DATA_HOME",
           "an absolute path: the folder the data folder \"moniva\" is in, unless one is named (else "
           "~/.local/share)"},
          {"TZ", "the time zone, unless --timezone names one; the system's own where it is not known"},
          {"LC_ALL, LC_TIME, LANG",
           "the language and region, unless --locale names them; English where they are not known"},
          {"TMPDIR", "the folder the demo makes its store in (else /tmp)"},
          {"NO_COLOR", "when not empty, nothing is coloured"}};
}

std::vector<ManualEntry> fileTexts() {
  return {
      {"moniva.dat",
       "the data file, in the data folder: an SQLite database, complete by itself whenever no command runs"},
      {"settings.json", "the settings of this device"},
      {"photos", "a folder: the photos of records"},
      {"log.txt", "the log of faults of the store"},
      {"backupBeforeUpdate.dat",
       "a data file that takes the place of moniva.dat at the next start; while a store is brought up to "
       "date, its copy from before"},
      {"moniva-before-upgrade.dat.set-aside-*", "copies of the store from before it was brought up to date"}};
}

}  // namespace moniva
