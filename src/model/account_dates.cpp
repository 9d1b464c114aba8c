#include "model/account_dates.h"

namespace moniva {
namespace {

std::optional<Date> ask(const MonivaAccount& account, std::string_view function) {
  Connection* db = account.root().db().getDatabase();
  if (db == nullptr) return std::nullopt;
  Run run =
      db->query(fmt::format("select {}(datetime) from transactions where {} and deleted = 0 and paid = 1"
                            " and type > 10 and type < 50",
                            function, accountQuerySQL(account)),
                {account.pk});
  if (!run.next() || run.isNull(0)) return std::nullopt;
  return run.date(0);
}

}  // namespace

std::optional<Date> getTheDateOfFirstTransaction(const MonivaAccount& account) {
  return ask(account, "min");
}

std::optional<Date> getTheDateOfLastTransaction(const MonivaAccount& account) {
  return ask(account, "max");
}

}  // namespace moniva
