// Series of earlier versions: records that carried their rule themselves become the first of a series with a
// seed, and what an earlier clean-up left of series goes.

#include <boost/json.hpp>
#include <set>

#include "app/do_db_updater.h"
#include "model/entry_checks.h"
#include "model/transfer.h"
#include "recurrence/repeat_step.h"
#include "recurrence/series_repair.h"
#include "storage/writes.h"

namespace moniva {
namespace {

/// A record that repeats by itself, as earlier versions had it.
struct SelfRepeating {
  std::string eid;
  int type = 0;
  int bid = 0;
  std::string group;
  std::string rule;
  Date datetime;
  bool isUsable = false;  ///< it has a date and an amount

  bool isTransfer() const { return type == kind::kTransferIn || type == kind::kTransferOut; }
  bool isPaymentOfGroup() const { return bid == kPaymentRow && !group.empty(); }
};

Result<std::vector<SelfRepeating>> selfRepeating(MVAppRoot& root, Connection& db) {
  std::vector<SelfRepeating> rows;
  // Parts of plans and of spread costs are made by their own seed.
  Run run = db.query(
      "select eid, type, bid, ifnull(transferEID, ''), repeat, datetime, typeof(datetime) in ('real', "
      "'integer')"
      " and datetime != 0 and typeof(amount) in ('real', 'integer') and amount > 0 from transactions where"
      " deleted = 0 and (type = 11 or type = 12 or type = 23 or type = 33) and repeat != '' and"
      " repeat != 'Not Repeat' and ifnull(repeat_seed, '') = '' and ifnull(syear, 0) not in (1002, 1003) and"
      " eid != '' order by +eid");
  while (run.next()) {
    SelfRepeating row{.eid = std::string(run.text(0)),
                      .type = static_cast<int>(run.integer(1)),
                      .bid = static_cast<int>(run.integer(2)),
                      .group = std::string(run.text(3)),
                      .rule = std::string(run.text(4)),
                      .datetime = run.date(5)};
    row.isUsable = run.integer(6) != 0 && checkRecordDate(root.calendar(), row.datetime);
    rows.push_back(std::move(row));
  }
  if (!run.ok()) return tl::make_unexpected(db.refusal());
  return rows;
}

void tellLeft(MVAppRoot& root, const SelfRepeating& row, std::string_view why) {
  root.db().faultLog().line(
      fmt::format("== [{}] repeats '{}' and stays as it is: {}\n", row.eid, row.rule, why));
}

/// The identifier of the seed a record gets: the same on every device that has the record.
std::string seedIdentifierOf(std::string_view eid) {
  return nameBasedUuidV7(0, fmt::format("series begun by {}", eid));
}

/// Makes the row the first occurrence of the series.
Result<> becomeFirst(MVAppRoot& root, const std::string& eid, const std::string& seed) {
  return write(root,
               "update transactions set repeat = 'Not Repeat', repeat_end_date = '', repeat_seed = ?,"
               " editDate = ?, edit_ipid = ? where eid = ?",
               seed, root.editStamp(), root.itsUDID(), eid);
}

Date nextAfter(MVAppRoot& root, RepeatRule rule, Date first) {
  const Calendar& calendar = root.calendar();
  return nextRepeatDate(calendar, rule, first, calendar.day(first));
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

/// Writes the seed with what the row says of it; one that another device made already is left as it is.
Result<> seedExpenseOrIncome(MVAppRoot& root, Connection& db, const SelfRepeating& row, RepeatRule rule) {
  const auto payer = payerOf(db, row.group);
  if (!payer) return tl::make_unexpected(payer.error());
  const std::string seed = seedIdentifierOf(row.eid);
  auto written = write(
      root,
      "insert or ignore into transactions (bid, amount, type, note, category, subcategory, datetime, repeat,"
      " account, editDate, eid, repeat_end_date, vendor, book, sday, syear, payDate, edit_ipid, amount2,"
      " currency2, needReimburse, barcode) select ?, amount, 85, note, category, subcategory, ?, repeat,"
      " ifnull(nullif(account, ''), ?), ?, ?, case when typeof(repeat_end_date) in ('real', 'integer') and"
      " repeat_end_date > 0 then repeat_end_date else '' end, vendor, book, ?, type, datetime, ?, amount2,"
      " currency2, needReimburse, barcode from transactions where eid = ?",
      row.bid == kPaymentRow ? kPaymentRow : kItemRow, nextAfter(root, rule, row.datetime), *payer,
      root.editStamp(), seed, root.calendar().day(row.datetime), root.itsUDID(), row.eid);
  return written ? becomeFirst(root, row.eid, seed) : written;
}

/// One seed for both sides, as that of side A.
Result<> seedTransfer(MVAppRoot& root, const SelfRepeating& row, RepeatRule rule, const Transfer& pair) {
  const std::string seed = seedIdentifierOf(pair.eidA);
  // Where rows do not say what the other side's amount is, the accounts tell whether it is another
  // currency's.
  const bool across = pair.acrossCurrencies || pair.amountB > pair.amountA ||
                      currencyOfAccount(root, pair.accountA).value_or("") !=
                          currencyOfAccount(root, pair.accountB).value_or("");
  std::string charge;
  if (pair.serviceCharge > 0 && across == pair.acrossCurrencies) {
    charge = boost::json::serialize(boost::json::object{{"serviceCharge", pair.serviceCharge}});
  }
  auto written =
      write(root,
            "insert or ignore into transactions (amount, type, note, vendor, datetime, repeat, account, "
            "editDate, eid,"
            " repeat_end_date, sday, barcode, syear, edit_ipid, payDate, amount2, sweek) select ?, 85, ?, ?, "
            "?, repeat,"
            " ?, ?, ?, case when typeof(repeat_end_date) in ('real', 'integer') and repeat_end_date > 0 then"
            " repeat_end_date else '' end, ?, ?, 33, ?, ?, ?, ? from transactions where eid = ?",
            pair.amountA, pair.note, pair.accountB, nextAfter(root, rule, pair.datetime), pair.accountA,
            root.editStamp(), seed, root.calendar().day(pair.datetime), pair.timeZone, root.itsUDID(),
            pair.datetime, across ? pair.amountB : 0.0, charge.empty() ? Value(0) : Value(charge), row.eid);
  if (written) written = becomeFirst(root, pair.eidA, seed);
  return written ? becomeFirst(root, pair.eidB, seed) : written;
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

Result<> convertOne(MVAppRoot& root, Connection& db, const SelfRepeating& row,
                    const std::set<std::string>& groupsOfItems) {
  // Payments do what their item does.
  if (row.isPaymentOfGroup() && groupsOfItems.contains(row.group)) {
    return write(root,
                 "update transactions set repeat = 'Not Repeat', repeat_end_date = '', editDate = ?,"
                 " edit_ipid = ? where eid = ?",
                 root.editStamp(), root.itsUDID(), row.eid);
  }
  const auto rule = repeatRuleFrom(row.rule);
  std::string_view lack = !rule ? "that is no rule" : row.isUsable ? "" : "it lacks a date or an amount";
  if (lack.empty() && row.isTransfer()) {
    const auto pair = Transfer::transferFromUUID(root, row.group);
    lack = lackOf(root, db, pair);
    if (lack.empty()) return seedTransfer(root, row, *rule, *pair);
  } else if (lack.empty()) {
    return seedExpenseOrIncome(root, db, row, *rule);
  }
  tellLeft(root, row, lack);
  return {};
}

}  // namespace

Result<> updateRepeatSeedTransaction(MVAppRoot& root) {
  return atomically(root, [&](Connection& db) -> Result<> {
    const auto rows = selfRepeating(root, db);
    if (!rows) return tl::make_unexpected(rows.error());
    std::set<std::string> groupsOfItems;
    for (const auto& row : *rows) {
      if (row.bid != kPaymentRow && !row.group.empty() && row.isUsable && repeatRuleFrom(row.rule)) {
        groupsOfItems.insert(row.group);
      }
    }
    std::set<std::string> transfers;
    for (const auto& row : *rows) {
      const bool leads = row.isTransfer() && !row.group.empty() && row.isUsable && repeatRuleFrom(row.rule);
      if (leads && !transfers.insert(row.group).second) continue;
      if (auto converted = convertOne(root, db, row, groupsOfItems); !converted) return converted;
    }
    return {};
  });
}

namespace {

/// Writes every value of the rows that are about to leave the file to the log.
Result<> logUndated(MVAppRoot& root, Connection& db) {
  std::string columns;
  {
    Run run = db.query(
        "select group_concat('quote(\"' || name || '\")', ' || '','' || ') from"
        " pragma_table_info('transactions')");
    if (!run.next()) return tl::make_unexpected(db.refusal());
    columns = run.text(0);
  }
  Run run = db.query("select " + columns +
                     " from transactions where (type = 11 or type = 12) and repeat_seed not NULL and"
                     " repeat_seed != '' and datetime is NULL and paid = 0");
  while (run.next()) {
    root.db().faultLog().line(fmt::format("== removed, as it has no date: {}\n", run.text(0)));
  }
  return run.ok() ? Result<>() : tl::make_unexpected(db.refusal());
}

/// Sides of transfers that a series made and that are pending, of years that neither are nor touch the
/// present one, while the other side is deleted. Clearing an account takes its sides on purpose.
Result<std::vector<std::string>> strayHalves(MVAppRoot& root, Connection& db) {
  const Calendar& calendar = root.calendar();
  const Date now = root.now();
  const Date from = calendar.firstDayOfPreviousYear(now);
  const Date to = calendar.firstDayOfNextYear(calendar.firstDayOfNextYear(now));
  std::vector<std::string> eids;
  Run run = db.query(
      "select eid from transactions as side where paid = 0 and deleted = 0 and (type = 23 or type = 33) and"
      " repeat_seed != '' and transferEID != '' and typeof(datetime) in ('real', 'integer') and (datetime < ?"
      " or datetime >= ?) and exists (select 1 from transactions as other where other.transferEID ="
      " side.transferEID and other.type = 56 - side.type and other.deleted != 0 and ifnull(other.ipid, '') "
      "not"
      " like 'delete by clear%') and not exists (select 1 from transactions as other where other.transferEID "
      "="
      " side.transferEID and other.type = 56 - side.type and other.deleted = 0)",
      {from, to});
  while (run.next()) eids.emplace_back(run.text(0));
  if (!run.ok()) return tl::make_unexpected(db.refusal());
  return eids;
}

}  // namespace

Result<> clearWrongRecurringItem2(MVAppRoot& root) {
  return atomically(root, [&](Connection& db) -> Result<> {
    if (auto logged = logUndated(root, db); !logged) return logged;
    auto written =
        write(root,
              "delete from transactions where (type = 11 or type = 12) and repeat_seed not NULL and"
              " repeat_seed != '' and datetime is NULL and paid = 0");
    if (!written) return written;
    const auto strays = strayHalves(root, db);
    if (!strays) return tl::make_unexpected(strays.error());
    for (const auto& eid : *strays) {
      // Pending: no balance has it.
      written = write(root,
                      "update transactions set deleted = 3, ipid = 'delete with clearWrongRecurringItem2',"
                      " editDate = ?, edit_ipid = ? where eid = ?",
                      root.editStamp(), root.itsUDID(), eid);
      if (!written) return written;
    }
    return {};
  });
}

Result<> fixAllRepeat(MVAppRoot& root) {
  const auto mended = repairAllSeries(root, Repair::mend);
  return mended ? Result<>() : tl::make_unexpected(mended.error());
}

}  // namespace moniva
