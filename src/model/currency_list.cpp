#include "model/currency_list.h"

#include <algorithm>

#include "model/category_rows.h"
#include "model/moniva_account.h"
#include "storage/writes.h"

namespace moniva {

Result<CurrencyAdded> addCurrency(MVAppRoot& root, std::string_view code) {
  return atomically(root, [&](Connection& db) -> Result<CurrencyAdded> {
    const auto list = DoDB::getCurrencyList(root);
    if (list.empty()) return tl::make_unexpected(db.refusal());
    if (std::ranges::find(list, code) != list.end()) return CurrencyAdded::present;
    auto written =
        write(root,
              "update category set deleted = 0, ipid = '', editDate = ?, edit_ipid = ? where pk = (select pk"
              " from category where parent = '_currency' and title = ? order by editDate desc, pk limit 1)",
              root.editStamp(), root.itsUDID(), code);
    if (!written) return tl::make_unexpected(written.error());
    if (db.changes() > 0) return CurrencyAdded::revived;
    written = write(
        root, "INSERT INTO category (title, parent, editDate, type, edit_ipid) VALUES(?,'_currency',?,?,?)",
        code, root.editStamp(), 0, root.itsUDID());
    return written ? Result<CurrencyAdded>(CurrencyAdded::added) : tl::make_unexpected(written.error());
  });
}

Result<> removeCurrency(MVAppRoot& root, std::string_view code) {
  return atomically(root, [&](Connection& db) -> Result<> {
    const auto list = DoDB::getCurrencyList(root);
    if (list.empty()) return tl::make_unexpected(db.refusal());
    if (std::ranges::find(list, code) == list.end()) return refuse("{} is not in your list", code);
    if (list.size() == 1) return refuse("{} is the only currency in your list; add another one first", code);
    return write(root,
                 "update category set deleted = 1, editDate = ?, edit_ipid = ? where parent = '_currency' and"
                 " title = ? and deleted = 0",
                 root.editStamp(), root.itsUDID(), code);
  });
}

Result<std::map<std::string, CurrencyUse, std::less<>>> currencyUses(MVAppRoot& root) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  std::map<std::string, CurrencyUse, std::less<>> uses;
  {
    Run run = db->query(
        "select currency, sum(kind = ?), sum(kind = ?) from account where deleted = 0 and isGroup is not 1"
        " and currency != '' group by currency",
        {kBookKind, kAccountKind});
    while (run.next()) uses[std::string(run.text(0))] = {run.integer(1), run.integer(2), 0};
    if (!run.ok()) return tl::make_unexpected(db->refusal());
  }
  Run run =
      db->query(fmt::format("select currency2, count(*) from transactions where currency2 != '' and {}"
                            " group by currency2",
                            kRecordsInUse));
  while (run.next()) uses[std::string(run.text(0))].records = run.integer(1);
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return uses;
}

}  // namespace moniva
