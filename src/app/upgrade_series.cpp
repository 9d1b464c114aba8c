// Series of earlier versions: records that carried their rule themselves, each of them, become the first and
// the further occurrences of a series with a seed.

#include <boost/json.hpp>
#include <map>
#include <set>

#include "app/do_db_updater.h"
#include "app/older_series.h"
#include "app/upgrade_support.h"
#include "model/entry_checks.h"
#include "model/transfer.h"

namespace moniva {
namespace {

/// A record as earlier versions had it: one that carries its rule, or one like it.
struct OlderRecord {
  std::string eid;
  int type = 0;
  int bid = 0;
  std::string group;
  std::string rule;
  Date datetime;
  bool isUsable = false;  ///< it has a date and an amount
  std::string likeness;   ///< all that occurrences of one series have in common
  std::string payer;      ///< the one account from which a record with payments was paid; blank for several

  bool isTransfer() const { return type == kind::kTransferIn || type == kind::kTransferOut; }
  bool isPaymentOfGroup() const { return bid == kPaymentRow && !group.empty(); }
};

// Parts of plans and of spread costs are made by their own seed.
constexpr std::string_view kOlderRecords =
    "select eid, type, bid, ifnull(transferEID, ''), ifnull(repeat, ''), datetime, typeof(datetime) in "
    "('real',"
    " 'integer') and datetime != 0 and typeof(amount) in ('real', 'integer') and amount > 0, amount,"
    " ifnull(account, ''), ifnull(category, ''), ifnull(subcategory, ''), ifnull(vendor, ''), ifnull(book, "
    "'')"
    " from transactions where deleted = 0 and ifnull(repeat_seed, '') = '' and ifnull(syear, 0) not in (1002,"
    " 1003) and eid != '' and ";

OlderRecord readOlder(MVAppRoot& root, const Run& run) {
  OlderRecord row{.eid = std::string(run.text(0)),
                  .type = static_cast<int>(run.integer(1)),
                  .bid = static_cast<int>(run.integer(2)),
                  .group = std::string(run.text(3)),
                  .rule = std::string(run.text(4)),
                  .datetime = run.date(5),
                  .likeness = fmt::format("{} {} {}", run.integer(1), run.integer(2), run.real(7)),
                  .payer = {}};
  for (int column = 8; column <= 12; ++column) row.likeness.append("\n").append(run.text(column));
  row.isUsable = run.integer(6) != 0 && checkRecordDate(root.calendar(), row.datetime);
  return row;
}

Result<std::vector<OlderRecord>> selfRepeating(MVAppRoot& root) {
  return loaded(
      root,
      fmt::format("{}(type = 11 or type = 12 or type = 23 or type = 33) and repeat != '' and repeat !="
                  " 'Not Repeat' order by +eid",
                  kOlderRecords),
      {}, [&](const Run& run) { return readOlder(root, run); });
}

void tellLeft(MVAppRoot& root, const OlderRecord& row, std::string_view why) {
  root.db().faultLog().line(
      fmt::format("== [{}] repeats '{}' and stays as it is: {}\n", row.eid, row.rule, why));
}

/// The identifier of the seed a record gets: the same on every device that has the record.
std::string seedIdentifierOf(std::string_view eid) {
  return nameBasedUuidV7(0, fmt::format("series begun by {}", eid));
}

/// The row stays as a record that does not repeat; an occurrence of the series if there is one.
Result<> loseRule(MVAppRoot& root, std::string_view eid, std::string_view seed = {}) {
  return write(root,
               "update transactions set repeat = 'Not Repeat', repeat_end_date = '', repeat_seed = ?,"
               " editDate = ?, edit_ipid = ? where eid = ?",
               seed, root.editStamp(), root.itsUDID(), eid);
}

/// The one account from which a record with payments was paid; blank for several.
Result<std::string> payerOf(Connection& db, const std::string& group) {
  if (group.empty()) return std::string();
  Run run = db.query(
      "select min(account), max(account) from transactions where transferEID = ? and bid = 10 and deleted = 0"
      " and type < 13 and account != ''",
      {group});
  if (!run.next()) return tl::make_unexpected(db.refusal());
  return run.text(0) == run.text(1) ? std::string(run.text(0)) : std::string();
}

/// A series that is to get its seed: what its first record says, the date that the seed waits for, and the
/// record whose end counts, as it was edited last.
struct NewSeed {
  const OlderRecord& first;
  Date next;
  const OlderRecord& endOf;
};

/// Writes the seed with what the row says of it; one that another device made already is left as it is.
Result<> seedExpenseOrIncome(MVAppRoot& root, const NewSeed& made) {
  const OlderRecord& row = made.first;
  return write(
      root,
      "insert or ignore into transactions (bid, amount, type, note, category, subcategory, datetime, repeat,"
      " account, editDate, eid, repeat_end_date, vendor, book, sday, syear, payDate, edit_ipid, amount2,"
      " currency2, needReimburse, barcode) select ?, amount, 85, note, category, subcategory, ?, repeat,"
      " ifnull(nullif(account, ''), ?), ?, ?, ifnull((select repeat_end_date from transactions where eid = ? "
      "and"
      " typeof(repeat_end_date) in ('real', 'integer') and repeat_end_date > 0), ''), vendor, book, ?, type,"
      " datetime, ?, amount2, currency2, needReimburse, barcode from transactions where eid = ?",
      row.bid == kPaymentRow ? kPaymentRow : kItemRow, made.next, row.payer, root.editStamp(),
      seedIdentifierOf(row.eid), made.endOf.eid, root.calendar().day(row.datetime), root.itsUDID(), row.eid);
}

/// One seed for both sides, as that of side A.
Result<> seedTransfer(MVAppRoot& root, const NewSeed& made) {
  const auto pair = Transfer::transferFromUUID(root, made.first.group);
  if (!pair) return refusalOfStore(root);
  // Where rows do not say what the other side's amount is, the accounts tell whether it is another
  // currency's.
  const bool across = pair->acrossCurrencies || pair->amountB > pair->amountA ||
                      currencyOfAccount(root, pair->accountA).value_or("") !=
                          currencyOfAccount(root, pair->accountB).value_or("");
  std::string charge;
  if (pair->serviceCharge > 0 && across == pair->acrossCurrencies) {
    charge = boost::json::serialize(boost::json::object{{"serviceCharge", pair->serviceCharge}});
  }
  return write(
      root,
      "insert or ignore into transactions (amount, type, note, vendor, datetime, repeat, account, editDate, "
      "eid,"
      " repeat_end_date, sday, barcode, syear, edit_ipid, payDate, amount2, sweek) select ?, 85, ?, ?, ?, ?, "
      "?,"
      " ?, ?, ifnull((select max(repeat_end_date) from transactions where transferEID = ? and "
      "typeof(repeat_end_date) in"
      " ('real', 'integer') and repeat_end_date > 0), ''), ?, ?, 33, ?, ?, ?, ?",
      pair->amountA, pair->note, pair->accountB, made.next, made.first.rule, pair->accountA, root.editStamp(),
      seedIdentifierOf(pair->eidA), made.endOf.group, root.calendar().day(pair->datetime), pair->timeZone,
      root.itsUDID(), pair->datetime, across ? pair->amountB : 0.0,
      charge.empty() ? Value(0) : Value(charge));
}

/// Why a transfer cannot be the first of a series; blank when it can.
std::string_view lackOf(MVAppRoot& root, Connection& db, const std::optional<Transfer>& pair) {
  if (!pair || pair->isDeleted != 0) return "its other side is not there";
  if (!currencyOfAccount(root, pair->accountA) || !currencyOfAccount(root, pair->accountB)) {
    return "an account of it is not there";
  }
  if (!pair->repeatSeed.empty()) return "its other side is in a series";
  Run run = db.query(
      "select 1 from transactions where eid = ? and typeof(datetime) in ('real', 'integer') and datetime != "
      "0",
      {pair->eidA});
  const bool isDated = run.next() && checkRecordDate(root.calendar(), pair->datetime);
  return isDated && checkAmount(pair->amountA) && checkAmount(pair->amountB) ? ""
                                                                             : "it lacks a date or an amount";
}

/// The older records that may be occurrences of one series, by all they have in common and by their rule.
using AlikeRecords = std::map<std::pair<std::string, std::string>, std::vector<OlderRecord>>;

std::string likenessOf(const Transfer& pair) {
  return fmt::format("{} {}\n{}\n{}", pair.amountA, pair.amountB, pair.accountA, pair.accountB);
}

/// Sorts the records that carry their rule; of those that cannot be in a series it is told or taken.
Result<AlikeRecords> alikeRecords(MVAppRoot& root, Connection& db) {
  auto rows = selfRepeating(root);
  if (!rows) return tl::make_unexpected(rows.error());
  std::set<std::string> groupsOfItems;
  for (const auto& row : *rows) {
    if (row.bid != kPaymentRow && !row.group.empty() && row.isUsable && repeatRuleFrom(row.rule)) {
      groupsOfItems.insert(row.group);
    }
  }
  AlikeRecords alike;
  std::set<std::string> transfers;
  for (auto& row : *rows) {
    // Payments do what their item does.
    if (row.isPaymentOfGroup() && groupsOfItems.contains(row.group)) {
      if (auto lost = loseRule(root, row.eid); !lost) return tl::make_unexpected(lost.error());
      continue;
    }
    const bool isSound = row.isUsable && repeatRuleFrom(row.rule);
    std::string_view lack = !repeatRuleFrom(row.rule) ? "that is no rule"
                            : row.isUsable            ? ""
                                                      : "it lacks a date or an amount";
    if (isSound && row.isTransfer()) {
      if (!row.group.empty() && !transfers.insert(row.group).second) continue;
      const auto pair = Transfer::transferFromUUID(root, row.group);
      lack = lackOf(root, db, pair);
      if (lack.empty()) {
        row.likeness = likenessOf(*pair);
        row.eid = pair->eidA;
        row.datetime = pair->datetime;
      }
    } else if (isSound) {
      const auto payer = payerOf(db, row.group);
      if (!payer) return tl::make_unexpected(payer.error());
      row.payer = *payer;
      row.likeness.append("\n").append(*payer);
    }
    if (!lack.empty()) {
      tellLeft(root, row, lack);
      continue;
    }
    alike[{row.likeness, row.rule}].push_back(std::move(row));
  }
  return alike;
}

/// Records without a rule that are like one that carries one, by their likeness.
Result<std::map<std::string, std::vector<OlderRecord>>> plainOnes(MVAppRoot& root, Connection& db,
                                                                  const AlikeRecords& alike) {
  std::map<std::string, std::vector<OlderRecord>> found;
  std::set<std::string> wanted;
  bool anyTransfer = false;
  for (const auto& [key, rows] : alike) {
    anyTransfer = anyTransfer || rows.front().isTransfer();
    if (!rows.front().isTransfer()) wanted.insert(key.first.substr(0, key.first.rfind('\n')));
  }
  std::vector<OlderRecord> candidates;
  if (!wanted.empty()) {
    Run run = db.query(
        fmt::format("{}type in (11, 12) and ifnull(repeat, '') in ('', 'Not Repeat')", kOlderRecords));
    while (run.next()) {
      auto row = readOlder(root, run);
      if (row.isUsable && !row.isPaymentOfGroup() && wanted.contains(row.likeness)) {
        candidates.push_back(std::move(row));
      }
    }
    if (!run.ok()) return tl::make_unexpected(db.refusal());
  }
  for (auto& row : candidates) {
    const auto payer = payerOf(db, row.group);
    if (!payer) return tl::make_unexpected(payer.error());
    row.likeness.append("\n").append(*payer);
    found[row.likeness].push_back(std::move(row));
  }
  if (!anyTransfer) return found;
  Run run = db.query(
      "select a.eid, a.transferEID, a.datetime, a.amount, b.amount, a.account, b.account from transactions "
      "as a"
      " join transactions as b on b.transferEID = a.transferEID and +b.type = 23 where a.type = 33 and"
      " a.transferEID != '' and a.deleted = 0 and b.deleted = 0 and ifnull(a.repeat_seed, '') = '' and"
      " ifnull(b.repeat_seed, '') = '' and ifnull(a.repeat, '') in ('', 'Not Repeat') and ifnull(b.repeat, "
      "'') in"
      " ('', 'Not Repeat') and typeof(a.datetime) in ('real', 'integer')");
  while (run.next()) {
    const std::string likeness =
        fmt::format("{} {}\n{}\n{}", run.real(3), run.real(4), run.text(5), run.text(6));
    found[likeness].push_back({.eid = std::string(run.text(0)),
                               .type = kind::kTransferOut,
                               .group = std::string(run.text(1)),
                               .rule = {},
                               .datetime = run.date(2),
                               .likeness = likeness,
                               .payer = {}});
  }
  if (!run.ok()) return tl::make_unexpected(db.refusal());
  return found;
}

/// Makes the record an occurrence of the series, a transfer with both its sides; of none it only loses its
/// rule.
Result<> joinSeries(MVAppRoot& root, const OlderRecord& row, const std::string& seed) {
  auto done = loseRule(root, row.eid, seed);
  if (!done || !row.isTransfer()) return done;
  const auto pair = Transfer::transferFromUUID(root, row.group);
  return pair ? loseRule(root, pair->eidB, seed) : refusalOfStore(root);
}

/// Makes a series of each run of records that one could have made, plain ones on its days too.
Result<> seedAlike(MVAppRoot& root, RepeatRule rule, const std::vector<OlderRecord>& rows,
                   std::vector<OlderRecord>& plain) {
  std::vector<Date> dates;
  for (const auto& row : rows) dates.push_back(row.datetime);
  const auto runs = olderSeries(root.calendar(), rule, dates);
  for (const auto at : runs.strays) {
    tellLeft(root, rows[at], "another record of its series is nearer than half a round");
    if (auto done = joinSeries(root, rows[at], ""); !done) return done;
  }
  for (const auto& places : runs.series) {
    const OlderRecord& first = rows[places.front()];
    std::vector<Date> days;
    std::vector<const OlderRecord*> members;
    for (const auto at : places) {
      days.push_back(rows[at].datetime);
      members.push_back(&rows[at]);
    }
    std::vector<Date> offered;
    for (const auto& row : plain) offered.push_back(row.datetime);
    for (const auto at : onDaysOfSeries(root.calendar(), rule, days, offered)) {
      days.push_back(plain[at].datetime);
      members.push_back(&plain[at]);
    }
    const NewSeed made{first,
                       dateAfter(root.calendar(), rule, first.datetime, *std::ranges::max_element(days)),
                       rows[places.back()]};
    auto done = first.isTransfer() ? seedTransfer(root, made) : seedExpenseOrIncome(root, made);
    for (const OlderRecord* row : members) {
      if (done) done = joinSeries(root, *row, seedIdentifierOf(first.eid));
    }
    if (!done) return done;
    std::set<std::string_view> taken;
    for (const OlderRecord* row : members) taken.insert(row->eid);
    std::erase_if(plain, [&](const OlderRecord& row) { return taken.contains(row.eid); });
  }
  return {};
}

}  // namespace

Result<> updateRepeatSeedTransaction(MVAppRoot& root) {
  return atomically(root, [&](Connection& db) -> Result<> {
    auto alike = alikeRecords(root, db);
    if (!alike) return tl::make_unexpected(alike.error());
    auto plain = plainOnes(root, db, *alike);
    if (!plain) return tl::make_unexpected(plain.error());
    for (auto& [key, rows] : *alike) {
      std::ranges::sort(rows, {}, [](const OlderRecord& row) { return std::pair(row.datetime, row.eid); });
      if (auto done = seedAlike(root, *repeatRuleFrom(key.second), rows, (*plain)[key.first]); !done)
        return done;
    }
    return {};
  });
}

}  // namespace moniva
