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

}  // namespace moniva
