#include "reports/history.h"

#include <cmath>

#include "model/moniva_account.h"
#include "storage/transaction.h"
#include "storage/writes.h"

namespace moniva {
namespace {

/// Steps through the rows of a query and makes an entry of each; refused when they cannot be read.
template <class Entry, class Read>
Result<std::vector<Entry>> entriesOf(MVAppRoot& root, std::string_view sql,
                                     std::initializer_list<Value> arguments, const Read& read) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  std::vector<Entry> entries;
  Run run = db->query(sql, arguments);
  while (run.next()) entries.push_back(read(run));
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return entries;
}

Result<std::vector<std::string>> keysOf(MVAppRoot& root, std::string_view sql,
                                        std::initializer_list<Value> arguments) {
  return entriesOf<std::string>(root, sql, arguments,
                                [](const Run& run) { return std::string(run.text(0)); });
}

}  // namespace

Result<std::vector<std::string>> getLastAddedSpend(const MonivaAccount& book, int type, Date before) {
  const bool isExpense = type == kind::kExpense || type == kind::kFurtherExpense;
  // The index of the book leads through each type from the end: the limit is reached after a few rows.
  return keysOf(book.root(),
                fmt::format("select eid from transactions where book = ? and {} and deleted = 0 and"
                            " (repeat_seed = '' or repeat_seed is NULL) and subcategory != '#NOMVCATEGORY'"
                            " and bid = 20 and datetime < ? order by datetime DESC limit 20",
                            isExpense ? "(type = 12 or type = 14)" : "(type = 11 or type = 13)"),
                {book.pk, before});
}

Result<std::vector<std::string>> installmentTransactions(MVAppRoot& root, int type) {
  return keysOf(root,
                "select eid from transactions where paid = 0 and deleted = 0 and type = ? and syear = 1003"
                " and bid = 20 order by datetime",
                {type});
}

Result<std::vector<DeletedEntry>> recentlyDeletedTransactions(MVAppRoot& root, Date since,
                                                              const std::array<int, 3>& types) {
  return entriesOf<DeletedEntry>(
      root,
      "select eid, type, account, book, transfereid from transactions where deleted = 1 and"
      " (type = ? or type = ? or type = ?) and editDate > ? order by editDate DESC",
      {types[0], types[1], types[2], since}, [](const Run& run) {
        return DeletedEntry{std::string(run.text(0)), static_cast<int>(run.integer(1)),
                            std::string(run.text(2)), std::string(run.text(3)), std::string(run.text(4))};
      });
}

Result<DayTransactions> allTransactionsForDate(MVAppRoot& root, Date date, const MonivaAccount* forBook) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  const ReadTransaction snapshot(*db);
  const Date begin = root.calendar().dateBegin(date);
  const Date end = root.calendar().dateEnd(date);
  DayTransactions day;
  constexpr std::string_view kPlain = "ifnull(t.transferEID, '') = '' and ifnull(t.ipid, '') != 'batchEdit'";
  constexpr std::string_view kMoney = "t.type in (11, 12, 13, 14)";
  const std::string inBook = forBook != nullptr ? fmt::format(" and t.{}", accountQuerySQL(*forBook)) : "";
  const std::string inBookOrNone =
      forBook != nullptr ? fmt::format(" and (t.{} or ifnull(t.book, '') = '')", accountQuerySQL(*forBook))
                         : "";
  struct Kind {
    std::vector<std::string> DayTransactions::*keys;
    std::string condition;
    std::string book;  ///< what it asks of the book; blank for nothing
  };
  const Kind kinds[] = {
      {&DayTransactions::spends, fmt::format("{} and {}", kMoney, kPlain), inBook},
      {&DayTransactions::compounds,
       fmt::format("{} and not ({}) and t.bid = 20 and ifnull(t.syear, 0) != 1003", kMoney, kPlain), inBook},
      {&DayTransactions::installments,
       fmt::format("{} and not ({}) and t.bid = 20 and t.syear = 1003", kMoney, kPlain), inBook},
      {&DayTransactions::transfers,
       "(t.type = 33 or (t.type = 23 and not exists (select 1 from transactions a where a.transferEID ="
       " t.transferEID and a.type = 33 and a.deleted = 0)))",
       ""},
      {&DayTransactions::debts, "t.type in (24, 34, 25, 35)", ""},
      {&DayTransactions::repeats, "t.type = 85", inBookOrNone}};
  for (const auto& [keys, condition, book] : kinds) {
    const std::string sql = fmt::format(
        "select t.eid from transactions t where t.deleted = 0 and {}{} and t.datetime >= ? and"
        " t.datetime <= ? order by t.editDate DESC, t.eid",
        condition, book);
    auto found =
        book.empty() ? keysOf(root, sql, {begin, end}) : keysOf(root, sql, {forBook->pk, begin, end});
    if (!found) return tl::make_unexpected(found.error());
    day.*keys = std::move(*found);
  }
  return day;
}

Result<std::vector<EditedEntry>> allTransTestForDate(MVAppRoot& root, Date date) {
  // Stamps have fractions of a second: the last one of a day is just before the next.
  const Date end{std::nextafter(root.calendar().oneDayAfter(date).secondsSince1970, 0)};
  return entriesOf<EditedEntry>(root,
                                "select eid, type, vendor from transactions where (type != 14 and type != 63 "
                                "and type != 64) and deleted = 0 and"
                                " editDate >= ? and editDate <= ? order by editDate DESC",
                                {root.calendar().dateBegin(date), end}, [](const Run& run) {
                                  return EditedEntry{std::string(run.text(0)),
                                                     static_cast<int>(run.integer(1)),
                                                     std::string(run.text(2))};
                                });
}

Date endOfSevenDays(MVAppRoot& root) {
  return root.calendar().oneDayAfter(root.calendar().dateWithDay(root.now(), 7));
}

Result<std::vector<SeriesEntry>> needPayTransactionsInSevenDay(MVAppRoot& root) {
  return seriesDueBefore(root, endOfSevenDays(root));
}

Result<std::vector<SeriesEntry>> seriesDueBefore(MVAppRoot& root, Date end) {
  return entriesOf<SeriesEntry>(
      root,
      "SELECT eid, syear FROM transactions where deleted = 0 and datetime < ? and type = ? and"
      " (syear != ? or syear is NULL) order by datetime",
      {end, kind::kRepeatSeed, advanced::kInstallment}, [](const Run& run) {
        return SeriesEntry{std::string(run.text(0)), static_cast<int>(run.integer(1))};
      });
}

Result<std::vector<RecordTemplate>> getTransactionTemplateList(MVAppRoot& root) {
  return transactionTemplates(root, kAllTemplates);
}

Result<std::vector<RecordTemplate>> shoppingLists(MVAppRoot& root) {
  return transactionTemplates(root, {kind::kExpenseTemplate, kind::kExpenseTemplate, kind::kExpenseTemplate});
}

}  // namespace moniva
