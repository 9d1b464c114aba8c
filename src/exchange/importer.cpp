#include "exchange/importer.h"

#include <map>
#include <set>
#include <unordered_map>

#include "exchange/import_names.h"
#include "model/account_balance.h"
#include "model/spend.h"
#include "model/transfer.h"
#include "storage/transaction.h"

namespace moniva {
namespace {

/// One import in progress: what it needs at each row, and what it has to bring up to date at the end.
class Importer {
 public:
  Importer(MVAppRoot& root, Connection& db, const ImportRequest& request)
      : root_(root), db_(db), request_(request), now_(root.now()), names_(root, request.currency) {}

  ImportOutcome outcome;

  Result<> take(const ImportRecord& record) {
    const auto time = root_.calendar().resolve(civilOf(record.date));
    if (!outcome.firstDate || time.date < *outcome.firstDate) outcome.firstDate = time.date;
    if (!outcome.lastDate || time.date > *outcome.lastDate) outcome.lastDate = time.date;

    // Asked before any name is looked up: a row that is there already must not revive what the user deleted.
    const std::string identity = numberedIdentity(record);
    const double identityTime = identityTimeOf(record.date);
    const std::string eid =
        nameBasedUuidV7(identityTime, record.kind == ImportKind::transfer ? identity + "\nA" : identity);
    if (isThere(eid)) {
      ++outcome.alreadyThere;
      return {};
    }
    if (time.moved) outcome.movedByClockChange.push_back(record.line);
    if (time.ambiguous) outcome.shownTwice.push_back(record.line);
    const auto account = names_.account(record.account, record.currency);
    if (!account) return tl::make_unexpected(account.error());
    if (*account != nullptr && !record.currency.empty() && (*account)->currency != record.currency) {
      reject(record, "Currency", record.currency,
             fmt::format("the account '{}' is kept in {}", record.account, (*account)->currency));
      return {};
    }
    if (record.kind != ImportKind::transfer) return takeSpend(record, eid, time.date, *account);
    Transfer transfer(root_);
    transfer.eidA = eid;
    transfer.eidB = nameBasedUuidV7(identityTime, identity + "\nB");
    transfer.connectUUID = nameBasedUuidV7(identityTime, identity + "\nAB");
    transfer.datetime = time.date;
    return takeTransfer(record, std::move(transfer), **account);
  }

  /// Brings use counts and balances up to date with what was added.
  Result<> finish() {
    for (const auto& [keys, uses] : categoryUses_) {
      auto category = MVCategory::getCategory(root_, keys.first);
      auto book = MonivaAccount::getAccountWithPK(root_, keys.second);
      if (category && book && !category->updateUsingCount(*book, uses)) return failed();
    }
    for (const auto& [key, type] : vendors_) {
      auto vendor = Vendor::getVendor(root_, key);
      if (vendor && !vendor->updateUsingCount(type)) return failed();
    }
    for (const auto& key : touched_) {
      auto account = MonivaAccount::getAccountWithPK(root_, key);
      if (account && !countTheTotalBalance(*account)) return failed();
    }
    outcome.newBooks = names_.newBooks;
    outcome.newAccounts = names_.newAccounts;
    outcome.newCategories = names_.newCategories;
    outcome.newVendors = names_.newVendors;
    return {};
  }

 private:
  static CivilTime civilOf(const ImportDate& date) {
    // A record without a time is put at noon: it then stays on its day in every zone near the user's.
    if (!date.hasTime) return {date.year, date.month, date.day, 12, 0, 0};
    return {date.year, date.month, date.day, date.hour, date.minute, date.second};
  }

  /// Where the row's identifiers lie in time. Taken from the typed figures as they are, so that they do not
  /// depend on the zone the file is imported in.
  static double identityTimeOf(const ImportDate& date) {
    const CivilTime civil = civilOf(date);
    return static_cast<double>(daysFromCivil(civil.year, civil.month, civil.day) * kSecondsPerDay +
                               civil.hour * 3600 + civil.minute * 60 + civil.second);
  }

  void reject(const ImportRecord& record, std::string heading, std::string value, std::string reason) {
    outcome.problems.push_back({record.line, 0, std::move(heading), std::move(value), std::move(reason)});
    ++outcome.problemCount;
    ++outcome.badRows;
  }

  tl::unexpected<Refusal> failed() const { return tl::make_unexpected(db_.refusal()); }

  bool isThere(const std::string& eid) {
    Run run = db_.query("select eid from transactions where eid = ?", {eid});
    return run.next();
  }

  /// The identity of the row, told apart from equal rows before it in the file.
  std::string numberedIdentity(const ImportRecord& record) {
    std::string identity = identityOf(record);
    const int number = ++seen_[identity];
    return identity + "\n" + std::to_string(number);
  }

  Result<> takeSpend(const ImportRecord& record, const std::string& eid, Date date,
                     const MonivaAccount* account) {
    Spend spend(root_);
    spend.type = record.kind == ImportKind::income ? kind::kIncome : kind::kExpense;
    spend.eid = eid;
    const auto book = names_.book(record.book);
    if (!book) return tl::make_unexpected(book.error());
    auto category = names_.category(spend.type, record.category, record.subcategory);
    if (!category) return tl::make_unexpected(category.error());
    auto vendor = names_.vendor(spend.type, record.vendor);
    if (!vendor) return tl::make_unexpected(vendor.error());
    spend.amount = record.amount;
    spend.datetime = date;
    spend.note = record.note;
    spend.book = (*book)->pk;
    if (account != nullptr) spend.account = account->pk;
    spend.category = std::move(category->category);
    spend.subcategory = std::move(category->subcategory);
    spend.vendor = std::move(*vendor);
    spend.foreignCurrency = record.foreignCurrency;
    spend.foreignAmount = record.foreignAmount.value_or(0);
    spend.paid = isPaidByDate(root_.calendar(), date, now_);
    if (auto added = spend.add(); !added) return added;

    if (!spend.paid) ++outcome.pending;
    ++(record.kind == ImportKind::income ? outcome.addedIncome : outcome.addedExpenses);
    if (!spend.category.empty()) ++categoryUses_[{spend.category, spend.book}];
    if (!spend.subcategory.empty() && spend.subcategory != spend.category) {
      ++categoryUses_[{spend.subcategory, spend.book}];
    }
    if (!spend.vendor.empty()) vendors_[spend.vendor] = spend.type;
    touched_.insert(spend.book);
    if (!spend.account.empty()) touched_.insert(spend.account);
    return {};
  }

  Result<> takeTransfer(const ImportRecord& record, Transfer transfer, const MonivaAccount& from) {
    const auto to = names_.account(record.toAccount, "");
    if (!to) return tl::make_unexpected(to.error());
    transfer.acrossCurrencies = from.currency != (*to)->currency;
    if (transfer.acrossCurrencies && !record.toAmount) {
      reject(record, "To amount", "",
             fmt::format("'{}' is kept in {} and '{}' in {}, so the amount that arrives is needed",
                         record.account, from.currency, record.toAccount, (*to)->currency));
      return {};
    }
    transfer.accountA = from.pk;
    transfer.accountB = (*to)->pk;
    transfer.amountA = record.amount;
    transfer.amountB = record.toAmount.value_or(record.amount);
    transfer.note = record.note;
    transfer.paid = isPaidByDate(root_.calendar(), transfer.datetime, now_);
    if (auto added = transfer.add(); !added) return added;
    if (!transfer.paid) ++outcome.pending;
    ++outcome.addedTransfers;
    touched_.insert(transfer.accountA);
    touched_.insert(transfer.accountB);
    return {};
  }

  MVAppRoot& root_;
  Connection& db_;
  const ImportRequest& request_;
  Date now_;
  ImportNames names_;
  std::unordered_map<std::string, int> seen_;
  std::map<std::pair<std::string, std::string>, int> categoryUses_;
  std::map<std::string, int> vendors_;
  std::set<std::string> touched_;
};

}  // namespace

Result<ImportOutcome> importFile(MVAppRoot& root, const std::filesystem::path& path,
                                 const ImportRequest& request) {
  auto file = readImport(path, request.reading);
  if (!file) return tl::make_unexpected(file.error());
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");

  Importer importer(root, *db, request);
  ImportOutcome& outcome = importer.outcome;
  outcome.rows = file->records.size() + file->badRows;
  outcome.badRows = file->badRows;
  outcome.problems = std::move(file->problems);
  outcome.problemCount = file->problemCount;
  outcome.ignoredHeadings = std::move(file->ignoredHeadings);

  Transaction transaction(*db);
  if (!transaction.began()) return tl::make_unexpected(db->refusal());
  std::size_t done = 0;
  for (const ImportRecord& record : file->records) {
    if (auto taken = importer.take(record); !taken) return tl::make_unexpected(taken.error());
    if (request.progress && ++done % 256 == 0) request.progress(done, file->records.size());
  }
  if (auto finished = importer.finish(); !finished) return tl::make_unexpected(finished.error());
  if (request.dryRun || (outcome.badRows > 0 && !request.skipBad)) return std::move(outcome);
  if (outcome.added() > 0) {
    if (!transaction.commit()) return tl::make_unexpected(db->refusal());
    root.markRecentEditDate();
    root.platform().notifications.post(notification::kExpenseChanged);
  }
  outcome.written = true;
  return std::move(outcome);
}

}  // namespace moniva
