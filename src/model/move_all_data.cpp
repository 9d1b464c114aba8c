#include "model/move_all_data.h"

#include <set>

#include "model/account_balance.h"
#include "model/category_rows.h"
#include "model/entry_checks.h"
#include "storage/writes.h"

namespace moniva {
namespace {

/// Rows that name an account as the other side of a transfer, where others have their vendor.
constexpr std::string_view kNamesAccount = "(type in (23,33,83) or (type = 85 and syear = 33))";
/// Budgets are plans for the book itself.
constexpr std::string_view kNoBudget = "type not in (60,61,62)";
/// What a bill carries over follows from the records, and is none.
constexpr std::string_view kNoCarry = "type != 64";
/// Seeds of series and of plans say what records there are to be, and are none.
constexpr std::string_view kNoSeed = "type not in (85,86)";

Result<> checkMove(Connection& db, const MonivaAccount& from, const MonivaAccount& other) {
  if (from.pk == other.pk) return refuse("'{}' has its records already", other.title);
  if (from.isBook() != other.isBook()) {
    return refuse("the records of a book go to a book, those of an account to an account");
  }
  for (const auto* row : {&from, &other}) {
    if (row->isGroup) return refuse("'{}' is a group; name one of its members", row->title);
  }
  if (other.isDeleted != 0) return refuse("'{}' is deleted", other.title);
  if (from.currency != other.currency) {
    return refuse("'{}' is kept in {} and '{}' in {}; amounts would not mean the same any more", from.title,
                  from.currency, other.title, other.currency);
  }
  if (from.isAccount()) {
    const auto between = numberOf(
        db,
        fmt::format(
            "select count(*) from transactions where account = ? and vendor = ? and deleted = 0 and {}",
            kNamesAccount),
        {from.pk, other.pk});
    if (!between) return tl::make_unexpected(between.error());
    if (*between > 0) {
      return refuse("there are transfers between '{}' and '{}'; delete or change them first", from.title,
                    other.title);
    }
  }
  Run types = db.query(
      fmt::format(
          "select distinct type from transactions where {} = ? and deleted = 0 and type > 10 and type < 50",
          from.isBook() ? "book" : "account"),
      {from.pk});
  while (types.next()) {
    if (auto tracked = checkTracked(other, static_cast<int>(types.integer(0))); !tracked) return tracked;
  }
  if (!types.ok()) return tl::make_unexpected(db.refusal());
  return {};
}

using Keys = std::set<std::string, std::less<>>;

/// The keys of the categories that the book's records have.
Result<Keys> categoriesIn(Connection& db, const std::string& book) {
  Keys keys;
  Run run = db.query("select distinct category, subcategory from transactions where book = ?", {book});
  while (run.next()) {
    for (const int column : {0, 1}) {
      if (!run.text(column).empty()) keys.emplace(run.text(column));
    }
  }
  if (!run.ok()) return tl::make_unexpected(db.refusal());
  return keys;
}

}  // namespace

Result<std::int64_t> moveAllDataTo(const MonivaAccount& from, const MonivaAccount& other) {
  MVAppRoot& root = from.root();
  return atomically(root, [&](Connection& db) -> Result<std::int64_t> {
    // As they are now: another program may have changed them.
    const auto source = MonivaAccount::getAccountWithPK(root, from.pk);
    const auto target = MonivaAccount::getAccountWithPK(root, other.pk);
    if (!source || !target) return refuse("there is no such book or account any more");
    if (auto checked = checkMove(db, *source, *target); !checked) return tl::make_unexpected(checked.error());
    const bool isBook = source->isBook();
    const std::string_view column = isBook ? "book" : "account";
    const auto keys = isBook ? categoriesIn(db, source->pk) : Result<Keys>();
    if (!keys) return tl::make_unexpected(keys.error());
    const auto records = numberOf(
        db,
        fmt::format("select count(*) from transactions where {} = ? and deleted = 0 and {} and {} and {}",
                    column, kNoBudget, kNoCarry, kNoSeed),
        {source->pk});
    if (!records) return records;

    constexpr std::string_view kSet =
        "update transactions set {} = ?, editDate = ?, edit_ipid = ?, ipid = 'batchEdit' where {}";
    const auto set = [&](std::string_view what, const std::string& rows, const auto&... values) {
      return write(root, fmt::format(kSet, what, rows), target->pk, root.editStamp(), root.itsUDID(),
                   values...);
    };
    Result<> written;
    if (isBook) {
      written = set("book", fmt::format("book = ? and {}", kNoBudget), source->pk);
      // Payments of older stores name the book where others have a category.
      if (written) written = set("category", "category = ? and bid = 10", source->pk);
    } else {
      written = write(root, "delete from transactions where account = ? and type = ?", source->pk,
                      kind::kOverpayment);
      // Deleted transfers between the two stay what they were, lest one that comes back lead nowhere.
      if (written)
        written = set("account", fmt::format("account = ? and (vendor is not ? or not {})", kNamesAccount),
                      source->pk, target->pk);
      if (written) {
        written = set("vendor", fmt::format("vendor = ? and account is not ? and {}", kNamesAccount),
                      source->pk, target->pk);
      }
    }
    if (written && !keys->empty()) written = countUsesAfresh(root, *keys);
    if (written) written = countTheTotalBalances(root, {source->pk, target->pk});
    if (!written) return tl::make_unexpected(written.error());
    return *records;
  });
}

}  // namespace moniva
