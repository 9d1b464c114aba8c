#include "model/record_list.h"

#include <algorithm>

#include "model/entry_checks.h"
#include "storage/connection.h"

namespace moniva {
namespace {

bool isExpenseOrIncome(const TransactionItem& row) {
  return row.type == kind::kIncome || row.type == kind::kExpense || row.type == kind::kInstallmentSeed;
}

RecordWhole byItself(TransactionItem row) {
  RecordWhole whole;
  whole.group.items.push_back(row);
  whole.head = std::move(row);
  return whole;
}

Result<std::optional<RecordWhole>> wholeOf(MVAppRoot& root, TransactionItem row) {
  if (row.connectionUUID.empty()) return byItself(std::move(row));
  RecordWhole whole;
  auto group = TransactionGroup::of(root, row.connectionUUID, row.isDeleted != 0);
  if (!group) return tl::make_unexpected(group.error());
  if (group->items.empty() && !group->seed) {
    if (row.isPayment() && row.advancedType < advanced::kCart) return byItself(std::move(row));
    return std::nullopt;
  }
  whole.head = group->seed ? *group->seed : group->items.front();
  whole.group = std::move(*group);
  return whole;
}

/// The rows that stand for records, as fixed conditions; slots take what the query has.
struct Statement {
  std::string sql;
  std::vector<Value> arguments;

  void where(std::string_view condition, std::initializer_list<Value> values) {
    sql += " and ";
    sql += condition;
    arguments.insert(arguments.end(), values.begin(), values.end());
  }
};

/// A condition on the row itself, or on any row of its group. The sign keeps the list in the order of dates.
std::string onAnyRow(std::string_view condition) {
  return fmt::format(
      "(exists (select 1 from transactions r where r.eid = t.eid and {0}) or (t.transferEID != '' and exists"
      " (select 1 from transactions r where r.transferEID = t.transferEID and r.deleted = t.deleted and"
      " r.type in (11, 12) and {0})))",
      condition);
}

Statement statementFor(const RecordQuery& query) {
  Statement statement;
  statement.sql =
      "select t.eid from transactions t where +t.type in (11, 12, 86) and (t.bid != 10 or t.transferEID = '' "
      "or"
      " (t.repeat_seed != '' and t.syear < 1001))"
      " and (t.transferEID = '' or t.type = 86 or not exists (select 1 from transactions o where"
      " o.transferEID = t.transferEID and o.deleted = t.deleted and o.bid != 10 and (o.type = 86 or"
      " (o.type in (11, 12) and (o.datetime < t.datetime or (o.datetime = t.datetime and o.eid < t.eid))))))";
  statement.where(query.deleted ? "t.deleted = 1" : "+t.deleted = 0", {});
  if (query.from) statement.where("t.datetime >= ?", {*query.from});
  if (query.to) statement.where("t.datetime <= ?", {*query.to});
  if (query.advancedType != 0) statement.where("+t.syear = ?", {query.advancedType});
  if (query.type != 0) statement.where(onAnyRow("r.type = ?"), {query.type, query.type});
  const std::pair<std::string_view, const std::string*> keys[] = {
      {"r.book = ?", &query.book}, {"r.account = ?", &query.account}, {"r.vendor = ?", &query.vendor}};
  for (const auto& [condition, key] : keys) {
    if (!key->empty()) statement.where(onAnyRow(condition), {*key, *key});
  }
  if (!query.category.empty()) {
    statement.where(onAnyRow("(r.category = ? or r.subcategory = ?)"),
                    {query.category, query.category, query.category, query.category});
  }
  if (query.pending) {
    statement.where(
        "((t.transferEID = '' and +t.paid = 0) or (t.transferEID != '' and exists (select 1 from transactions"
        " r where r.transferEID = t.transferEID and r.deleted = t.deleted and r.bid = 10 and r.paid = 0)))",
        {});
  }
  statement.sql += " order by t.datetime desc, t.eid desc limit ?";
  statement.arguments.emplace_back(query.limit);
  return statement;
}

}  // namespace

Result<std::optional<RecordWhole>> RecordWhole::of(MVAppRoot& root, std::string_view eid) {
  auto row = TransactionItem::fromEID(root, eid);
  if (!row || row->isDeleted > 1 || !isExpenseOrIncome(*row)) return std::nullopt;
  return wholeOf(root, std::move(*row));
}

double RecordWhole::total() const {
  return sumOf(group.items);
}

std::vector<TransactionItem> RecordWhole::refunds() const {
  auto rows = group.payments;
  std::erase_if(rows, [](const auto& payment) { return !payment.isRefund(); });
  return rows;
}

std::vector<TransactionItem> RecordWhole::regularPayments() const {
  auto rows = group.payments;
  std::erase_if(rows, [](const auto& payment) { return payment.isRefund() || payment.isRest(); });
  return rows;
}

double RecordWhole::refunded() const {
  return withoutNoise(-sumOf(refunds()));
}

double RecordWhole::open() const {
  if (!isCompound()) return head.paid ? 0 : head.amount;
  auto rows = group.payments;
  std::erase_if(rows, [](const auto& payment) { return payment.paid; });
  return sumOf(rows);
}

std::vector<std::string> RecordWhole::accounts() const {
  std::vector<std::string> keys;
  const auto note = [&](const TransactionItem& row) {
    if (!row.account.empty() && std::ranges::find(keys, row.account) == keys.end())
      keys.push_back(row.account);
  };
  if (!isCompound()) note(head);
  for (const auto& payment : group.payments) {
    if (!payment.isRefund()) note(payment);
  }
  return keys;
}

std::string RecordWhole::currency(RecordNames& names) const {
  std::string common;
  for (const auto& key : accounts()) {
    const auto account = names.holder(key);
    if (!account) continue;
    if (!common.empty() && common != account->currency) {
      common.clear();
      break;
    }
    common = account->currency;
  }
  if (!common.empty()) return common;
  const auto book = names.holder(group.items.empty() ? head.book : group.items.front().book);
  return book ? book->currency : std::string();
}

Result<> listRecords(MVAppRoot& root, const RecordQuery& query,
                     const std::function<void(const RecordWhole&)>& take) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  const Statement statement = statementFor(query);
  Run run = db->query(statement.sql, statement.arguments);
  while (run.next()) {
    auto row = TransactionItem::fromEID(root, run.text(0));
    if (!row) continue;
    auto whole = wholeOf(root, std::move(*row));
    if (!whole) return tl::make_unexpected(whole.error());
    if (*whole) take(**whole);
  }
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return {};
}

}  // namespace moniva
