#include "model/account_dates.h"

namespace moniva {
namespace {

Result<std::optional<Date>> ask(const MonivaAccount& account, std::string_view function) {
  Connection* db = account.root().db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  const std::string members =
      account.isGroup
          ? fmt::format("select title from category where parent = ? and type = {} and deleted = 0",
                        account.isBook() ? 8 : 7)
          : "select ?";
  // The index of the accounts has the dates in order, the one of the books has them so within each type:
  // asked for one member (and one type) at a time, the least and the greatest are at its ends.
  Run run = db->query(
      account.isBook()
          ? fmt::format("with recursive members(pk) as ({1}), kinds(type) as (values(11) union all select"
                        " type + 1 from kinds where type < 49) select {0}((select {0}(datetime) from"
                        " transactions where book = pk and transactions.type = kinds.type and deleted = 0 and"
                        " paid = 1)) from members, kinds",
                        function, members)
          : fmt::format("with members(pk) as ({1}) select {0}((select {0}(datetime) from transactions where"
                        " account = pk and type > 10 and type < 50 and deleted = 0 and paid = 1)) from"
                        " members",
                        function, members),
      {account.pk});
  const bool found = run.next() && !run.isNull(0);
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return found ? std::optional(run.date(0)) : std::nullopt;
}

}  // namespace

Result<std::optional<Date>> getTheDateOfFirstTransaction(const MonivaAccount& account) {
  return ask(account, "min");
}

Result<std::optional<Date>> getTheDateOfLastTransaction(const MonivaAccount& account) {
  return ask(account, "max");
}

Result<> getAllPeriod(MonivaAccount& account) {
  const auto first = getTheDateOfFirstTransaction(account);
  if (!first) return tl::make_unexpected(first.error());
  const auto last = getTheDateOfLastTransaction(account);
  if (!last) return tl::make_unexpected(last.error());
  account.dateOfFirstTransaction = *first;
  account.dateOfLastTransaction = *last;
  MVAppRoot& root = account.root();
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  // A text is greater than every number, so the index has all of them at its end.
  Run run = db->query(
      fmt::format("select 1 from transactions where datetime >= '' and {} and typeof(datetime) = 'text'"
                  " limit 1",
                  accountQuerySQL(account)),
      {account.pk});
  if (run.next()) {
    root.platform().userDefaults->setString("1", "updateStringTypeDateField");
    root.platform().log.line("数据库日期字段结构为string");
  }
  if (!run.ok()) return tl::make_unexpected(db->refusal());
  return {};
}

}  // namespace moniva
