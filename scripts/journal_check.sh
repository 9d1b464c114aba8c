#!/usr/bin/env bash
# journal_check.sh PROGRAM: fills a store with records of every kind by the program alone, writes it as a journal, and has
# hledger and ledger reckon it with their strict checks on. The balances of all accounts and the months of all books have
# to be what the program itself says of them. An amount that is changed afterwards has to be found by both.
set -euo pipefail
program=$(cd "$(dirname "$1")" && pwd)/$(basename "$1")
here=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
export MONIVA_DATA="$folder/data" TZ=Europe/Berlin LANG=C.UTF-8 LC_ALL=C.UTF-8
export HLEDGER_ARGS="" LEDGER_INIT=/dev/null
moniva() { "$program" --locale en_US --now "2024-12-31 12:00" "$@"; }
quietly() { moniva "$@" >>said 2>&1 || { echo "moniva $* failed:" >&2; tail -n 3 said >&2; exit 1; }; }
# asked SQL ARGUMENT...: what the SQL makes of the JSON, "said", that the program answers with.
asked() {
  local sql=$1
  shift
  moniva --json "$@" >json
  sqlite3 :memory: "with json(said) as (select cast(readfile('json') as text)) $sql"
}
latest() { asked "select said ->> '\$[0].eid' from json" spend list -a Dollars --limit 1; }

# Three years of a household, and what such a file cannot hold: other currencies, records of several rows, what is pending.
quietly import "$here/examples/household.csv" --currency EUR
quietly account add Dollars --currency USD --opening-balance 120.50
quietly account add "Card: gold" --type debt --currency EUR
quietly account add Coupons --type discount --currency EUR
quietly transfer add 200 Checking Dollars --to-amount 214.37 --fee 1.50 -d 2024-03-01
quietly transfer add 50 Checking Cash --fee 2 -d 2024-03-02
quietly spend add 19.99 -c Food -a Dollars -d 2024-03-03 --payee "(x) | y; z" -n "date: none"
quietly refund add "$(latest)" 5 Checking -d 2024-03-05
quietly spend add 3.50 -c Food -a Coupons -d 2024-03-04
quietly cart add --item 12.50 Food/Bakery --item 30 Home -a "Card: gold" -d 2024-04-01
quietly cart add --item 20 Food --item 0.05 Home --pay Cash 10 --pay Dollars 4.44 -d 2024-04-02
quietly instalment add 1000 7 -c Home -a Checking -d 2024-10-31
quietly cost add 120 --from 2024-11-15 --to 2025-02-14 -c Home -a "Card: gold" -d 2024-11-01
quietly debt lend 100 "Ann: B" -a Cash -d 2024-05-01
quietly debt borrow 70 Bob -a Checking -d 2024-05-02
quietly debt repay 30 "Ann: B" -a Cash -d 2024-06-01
quietly account correct Cash 12.34
quietly spend add 9 -c Food -a Cash -d 2025-01-05
quietly spend add 8 -c Food -a Dollars
quietly delete "$(latest)"

quietly export journal books.journal
quietly export journal --pending pending.journal
moniva --json account list >accounts.json
asked "select value ->> 'title' from json, json_each(said)" book list >books.txt
while read -r book; do
  asked "select printf('%d-%02d|%s|%.2f|%.2f', value ->> 'year', value ->> 'month', '$book', value ->> 'incomeAmount',
    value ->> 'expenseAmount') from json, json_each(said, '\$.listArray')" report month 2022-01..2025-12 -b "$book"
done <books.txt >months.txt

# compare WHO FILE: FILE has a line "2024-03<tab>account<tab>amount" for each account and month.
compare() {
  local wrong
  wrong=$(sqlite3 :memory: "
    create table said(month text, account text, amount real);" ".mode tabs" ".import $2 said" ".mode list" "
    create table months(month text, book text, income real, expense real);" ".separator |" ".import months.txt months" "
    with ours(what, amount) as (
      select iif(value ->> 'aType' = '_DebtAccount', 'Liabilities:', 'Assets:') || replace(value ->> 'title', ':', '-'),
        value ->> 'totalBalance' from json_each(readfile('accounts.json'))
      union all select month || ' Income:' || book, -income from months
      union all select month || ' Expenses:' || book, expense from months
    ), theirs(what, amount) as (
      select account, sum(amount) from said group by 1
      union all select month || ' ' || substr(account, 1, instr(account, ':') + instr(substr(account, instr(account, ':') + 1) || ':', ':') - 1),
        sum(amount) from said where account like 'Income:%' or account like 'Expenses:%' group by 1
    )
    select '  ' || ours.what || ': ' || ours.amount || ' here, ' || coalesce(theirs.amount, 0) || ' there' from ours
      left join theirs using (what) where abs(ours.amount - coalesce(theirs.amount, 0)) > 0.004
    union all select '  there is nothing to compare' where (select count(*) from months) < 36")
  [ -z "$wrong" ] || { printf '%s does not agree:\n%s\n' "$1" "$wrong" >&2; exit 1; }
}
for journal in books pending; do
  hledger -f $journal.journal check --strict ordereddates
  hledger -f $journal.journal bal --cleared -M --flat -N --layout=bare -O csv >wide.csv
  ledger -f $journal.journal --strict --pedantic reg --monthly --cleared \
    --format '%(format_date(date, "%Y-%m"))\t%(account)\t%(strip(display_amount))\n' >ledger.tsv
  # One line for each month of hledger's table, whose first two columns are account and commodity.
  sqlite3 :memory: ".mode csv" ".import wide.csv wide" ".mode list" \
    "select group_concat('select ''' || name || ''' || char(9) || account || char(9) || \"' || name || '\" from wide', ' union all ')
     from pragma_table_info('wide') where cid > 1" >query
  sqlite3 :memory: ".mode csv" ".import wide.csv wide" ".mode list" "$(cat query)" >hledger.tsv
  compare "hledger ($journal)" hledger.tsv
  compare "ledger ($journal)" ledger.tsv
done

# Both see one cent more.
line=$(grep -n 'Assets:Cash .* = ' books.journal | sed -n 100p | cut -d: -f1)
sed "${line}s/ = \(.*\)\([0-9]\) EUR/ = \11\2 EUR/" books.journal >changed.journal
if hledger -f changed.journal check >/dev/null 2>&1; then echo "hledger finds no fault in a changed balance" >&2; exit 1; fi
if ledger -f changed.journal bal >/dev/null 2>&1; then echo "ledger finds no fault in a changed balance" >&2; exit 1; fi
echo "$(grep -c '^20' books.journal) transactions: hledger and ledger agree with every balance and month"
