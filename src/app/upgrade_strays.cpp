// What earlier clean-ups left of series goes, and the repair of series by request.

#include "app/do_db_updater.h"
#include "recurrence/series_repair.h"
#include "storage/writes.h"

namespace moniva {
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
