#include "exchange/importer.h"

#include <boost/unordered/unordered_flat_set.hpp>
#include <cstdint>
#include <unordered_map>

#include "base/text.h"
#include "currency/amount_format.h"
#include "currency/currency_manager.h"
#include "exchange/account_currencies.h"
#include "exchange/csv_export.h"
#include "exchange/import_names.h"
#include "model/entry_checks.h"
#include "model/record_entry.h"
#include "storage/transaction.h"

namespace moniva {
namespace {

/// The identities of rows that were seen, by their UUIDs: sixteen bytes a row, however long the row is.
class SeenRows {
 public:
  void expect(std::size_t rows) { seen_.reserve(rows); }

  /// How many times the row has come, this time included.
  int count(const std::string& uuid) {
    const Key key = keyOf(uuid);
    if (seen_.insert(key).second) return 1;
    return ++again_.try_emplace(uuid, 1).first->second;
  }

 private:
  struct Key {
    std::uint64_t time = 0;
    std::uint64_t hash = 0;
    bool operator==(const Key&) const = default;
  };
  struct KeyHash {
    std::size_t operator()(const Key& key) const { return key.hash ^ key.time * 0x9E3779B97F4A7C15U; }
  };

  /// The digits of the UUID, of which the dashes are no part.
  static Key keyOf(std::string_view uuid) {
    Key key;
    for (const char digit : uuid) {
      if (digit == '-') continue;
      const unsigned value =
          digit <= '9' ? static_cast<unsigned>(digit - '0') : static_cast<unsigned>(digit - 'a' + 10);
      key.time = key.time << 4U | key.hash >> 60U;
      key.hash = key.hash << 4U | value;
    }
    return key;
  }

  boost::unordered_flat_set<Key, KeyHash> seen_;
  std::unordered_map<std::string, int> again_;
};

/// One import in progress: what it needs at each row, and what it has to bring up to date at the end.
class Importer {
 public:
  Importer(MVAppRoot& root, Connection& db, const ImportRequest& request, ImportReader& reader)
      : root_(root),
        db_(db),
        request_(request),
        reader_(reader),
        now_(root.now()),
        names_(root, request.currency),
        currencies_(root, request.currency),
        upkeep_(root),
        isOwnExport_(isExportedTable(reader.columns().ignored())) {
    outcome.rows = reader.rowCount();
    outcome.ignoredHeadings = reader.columns().ignored();
    seen_.expect(outcome.rows);
  }

  ImportOutcome outcome;

  /// Takes all rows; whether they stay is for the caller to say.
  Result<> run() {
    if (auto settled = settleCurrencies(); !settled) return settled;
    std::size_t done = 0;
    ImportRow row;
    while (true) {
      const auto more = reader_.next(row);
      if (!more) return tl::make_unexpected(more.error());
      if (!*more) return {};
      if (row.problems.empty()) {
        if (auto taken = take(row.record); !taken) return taken;
      } else {
        ++outcome.badRows;
        for (auto& problem : row.problems) note(std::move(problem));
      }
      if (request_.progress && ++done % 256 == 0) request_.progress(done, outcome.rows);
    }
  }

  /// Brings use counts and balances up to date with what was added, and says what is new.
  Result<> finish() {
    outcome.newBooks = std::move(names_.newBooks);
    outcome.newAccounts = std::move(names_.newAccounts);
    outcome.revivedBooks = std::move(names_.revivedBooks);
    outcome.revivedAccounts = std::move(names_.revivedAccounts);
    outcome.newCategories = std::move(names_.newCategories);
    outcome.newVendors = std::move(names_.newVendors);
    return request_.dryRun ? Result<>() : upkeep_.write(EntryUpkeep::Balances::afresh);
  }

 private:
  /// Where no row states a currency and none names two accounts, new accounts have the default one.
  Result<> settleCurrencies() {
    const auto& columns = reader_.columns();
    if (!columns.has(ImportField::currency) && !columns.has(ImportField::toAccount)) return {};
    ImportRow row;
    while (true) {
      const auto more = reader_.next(row);
      if (!more) return tl::make_unexpected(more.error());
      if (!*more) break;
      if (row.problems.empty()) currencies_.note(row.record);
    }
    currencies_.settle();
    reader_.rewind();
    return {};
  }

  Result<> take(const ImportRecord& record) {
    const auto time = root_.calendar().resolve(civilOf(record.date));
    // Asked before any name is looked up: a row that is there already must not revive what the user deleted.
    Identity identity = identify(record);
    const bool known = isThere(identity.eid);
    // A row that is bad must leave nothing behind, so all is asked before anything is made for it.
    if (!known && !(fitsItsAccounts(record) && fitsItsCurrencies(record))) {
      ++outcome.badRows;
      return {};
    }
    if (!outcome.firstDate || time.date < *outcome.firstDate) outcome.firstDate = time.date;
    if (!outcome.lastDate || time.date > *outcome.lastDate) outcome.lastDate = time.date;
    if (known) {
      ++outcome.alreadyThere;
      return {};
    }
    if (time.moved) outcome.movedByClockChange.push_back(record.line);
    if (time.ambiguous) outcome.shownTwice.push_back(record.line);
    return record.kind == ImportKind::transfer ? takeTransfer(record, std::move(identity), time.date)
                                               : takeSpend(record, std::move(identity), time.date);
  }

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
                               std::int64_t{civil.hour} * 3600 + std::int64_t{civil.minute} * 60 +
                               civil.second);
  }

  /// The identity of the row, told apart from equal rows before it in the file, and the identifier of the
  /// entry that follows from it.
  struct Identity {
    std::string text;
    double time = 0;
    std::string eid;
  };

  Identity identify(const ImportRecord& record) {
    const std::string said = identityOf(record);
    const std::string_view side = record.kind == ImportKind::transfer ? "\nA" : "";
    Identity identity;
    identity.time = identityTimeOf(record.date);
    const auto number = [&](int count) {
      identity.text = said + "\n" + std::to_string(count);
      identity.eid = nameBasedUuidV7(identity.time, identity.text + std::string(side));
    };
    number(1);
    if (const int count = seen_.count(identity.eid); count > 1) number(count);
    return identity;
  }

  void note(RowProblem problem) {
    if (++outcome.problemCount > ImportOutcome::mostProblems) return;
    outcome.problems.push_back(std::move(problem));
  }

  bool isThere(const std::string& eid) {
    Run run = db_.query("select eid from transactions where eid = ?", {eid});
    return run.next();
  }

  /// Whether the row's book and accounts take records, and it goes with their currencies; if not, it is noted
  /// why.
  bool fitsItsAccounts(const ImportRecord& record) {
    const std::string& currency = currencies_.of(record.account);
    const auto bad = [&](ImportField field, std::string_view value, Phrase reason) {
      note(reader_.problemWith(record.line, field, value, std::move(reason)));
      return false;
    };
    const bool isTransfer = record.kind == ImportKind::transfer;
    const auto takesRecords = [&](ImportField field, int aKind, const std::string& name) {
      const auto& obstacle = names_.obstacle(aKind, name);
      return !obstacle || bad(field, name, *obstacle);
    };
    if (!takesRecords(ImportField::account, kAccountKind, record.account)) return false;
    if (!takesRecords(isTransfer ? ImportField::toAccount : ImportField::book,
                      isTransfer ? kAccountKind : kBookKind, isTransfer ? record.toAccount : record.book)) {
      return false;
    }
    const auto tracks = [&](ImportField field, const std::string& account, int recordType) {
      const auto& why = names_.untracked(account, recordType);
      return !why || bad(field, account, *why);
    };
    const int leaving = isTransfer                          ? kind::kTransferOut
                        : record.kind == ImportKind::income ? kind::kIncome
                                                            : kind::kExpense;
    if (!tracks(ImportField::account, record.account, leaving)) return false;
    if (isTransfer && !tracks(ImportField::toAccount, record.toAccount, kind::kTransferIn)) return false;
    if (!record.account.empty() && !record.currency.empty() && currency != record.currency) {
      return bad(ImportField::currency, record.currency,
                 phrase("the account '{}' is kept in {}", excerpt(record.account), currency));
    }
    if (!isTransfer) return true;
    const std::string& arriving = currencies_.of(record.toAccount);
    if (currency != arriving && !record.toAmount) {
      return bad(ImportField::toAmount, "",
                 phrase("'{}' is kept in {} and '{}' in {}, so the amount that arrives is needed",
                        excerpt(record.account), currency, excerpt(record.toAccount), arriving));
    }
    if (currency == arriving && record.toAmount && *record.toAmount != record.amount) {
      return bad(ImportField::toAmount, fmt::format("{}", *record.toAmount),
                 phrase("'{}' and '{}' are both kept in {}, so what leaves one arrives in the other",
                        excerpt(record.account), excerpt(record.toAccount), currency));
    }
    return true;
  }

  /// Whether the row's amounts are ones of their currencies; if not, it is noted why.
  bool fitsItsCurrencies(const ImportRecord& record) {
    const auto bad = [&](ImportField field, double amount, auto&& reason) {
      const std::string text = fmt::format("{}", amount);
      note(reader_.problemWith(record.line, field, text, reason(text)));
      return false;
    };
    const auto isCounted = [&](ImportField field, double amount, const std::string& currency) {
      if (const auto checked = checkAmount(amount); !checked)
        return bad(field, amount, [&](const std::string&) { return *checked.error().phrase; });
      const int digits = currencyDigits(currency);
      return isOwnExport_ || currency.empty() || converted(amount, 1, digits) == amount ||
             bad(field, amount, [&](const std::string& text) {
               return phrase("{} is counted in {} decimals, and '{}' has more", currency, digits, text);
             });
    };
    const std::string& currency =
        record.account.empty() ? currencies_.ofBook(record.book) : currencies_.of(record.account);
    if (!isCounted(ImportField::amount, record.amount, currency)) return false;
    if (record.kind == ImportKind::transfer) {
      return !record.toAmount ||
             isCounted(ImportField::toAmount, *record.toAmount, currencies_.of(record.toAccount));
    }
    if (!record.foreignAmount) return true;
    if (!isCounted(ImportField::foreignAmount, *record.foreignAmount, record.foreignCurrency)) return false;
    return isOwnExport_ || record.foreignCurrency != currency || *record.foreignAmount == record.amount ||
           bad(ImportField::foreignAmount, *record.foreignAmount, [&](const std::string&) {
             return phrase("the record itself is kept in {}, and its amount is another", currency);
           });
  }

  Result<> takeSpend(const ImportRecord& record, Identity identity, Date date) {
    Spend spend(root_);
    spend.type = record.kind == ImportKind::income ? kind::kIncome : kind::kExpense;
    spend.eid = std::move(identity.eid);
    const auto account = names_.account(record.account, currencies_.of(record.account));
    if (!account) return tl::make_unexpected(account.error());
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
    if (*account != nullptr) spend.account = (*account)->pk;
    spend.category = std::move(category->category);
    spend.subcategory = std::move(category->subcategory);
    spend.vendor = std::move(*vendor);
    // In the record's own currency the foreign amount says the same once more.
    if (record.foreignCurrency != (*account != nullptr ? **account : **book).currency) {
      spend.foreignCurrency = record.foreignCurrency;
      spend.foreignAmount = record.foreignAmount.value_or(0);
    }
    return keep(spend, record.kind == ImportKind::income ? outcome.addedIncome : outcome.addedExpenses);
  }

  Result<> takeTransfer(const ImportRecord& record, Identity identity, Date date) {
    const auto from = names_.account(record.account, currencies_.of(record.account));
    if (!from) return tl::make_unexpected(from.error());
    const auto to = names_.account(record.toAccount, currencies_.of(record.toAccount));
    if (!to) return tl::make_unexpected(to.error());
    Transfer transfer(root_);
    transfer.eidA = std::move(identity.eid);
    transfer.eidB = nameBasedUuidV7(identity.time, identity.text + "\nB");
    transfer.connectUUID = nameBasedUuidV7(identity.time, identity.text + "\nAB");
    transfer.datetime = date;
    transfer.acrossCurrencies = (*from)->currency != (*to)->currency;
    transfer.accountA = (*from)->pk;
    transfer.accountB = (*to)->pk;
    transfer.amountA = record.amount;
    transfer.amountB = record.toAmount.value_or(record.amount);
    transfer.note = record.note;
    return keep(transfer, outcome.addedTransfers);
  }

  template <class Entry>
  Result<> keep(Entry& entry, std::size_t& added) {
    entry.paid = isPaidByDate(root_.calendar(), entry.datetime, now_);
    if (auto written = entry.add(); !written) return written;
    upkeep_.note(entry);
    ++added;
    if (!entry.paid) ++outcome.pending;
    return {};
  }

  MVAppRoot& root_;
  Connection& db_;
  const ImportRequest& request_;
  ImportReader& reader_;
  Date now_;
  ImportNames names_;
  AccountCurrencies currencies_;
  EntryUpkeep upkeep_;
  SeenRows seen_;
  bool isOwnExport_;
};

}  // namespace

Result<ImportOutcome> importFile(MVAppRoot& root, const std::filesystem::path& path,
                                 const ImportRequest& request) {
  auto reader = ImportReader::open(path, request.reading);
  if (!reader) return tl::make_unexpected(reader.error());
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");

  Importer importer(root, *db, request, *reader);
  ImportOutcome& outcome = importer.outcome;
  Transaction transaction(*db);
  if (!transaction.began()) return tl::make_unexpected(db->refusal());
  if (auto taken = importer.run(); !taken) return tl::make_unexpected(taken.error());
  if (outcome.badRows > 0 && !request.skipBad) {
    outcome.addedExpenses = outcome.addedIncome = outcome.addedTransfers = outcome.pending = 0;
    return std::move(outcome);
  }
  if (auto finished = importer.finish(); !finished) return tl::make_unexpected(finished.error());
  if (request.dryRun || outcome.added() == 0) return std::move(outcome);
  if (!transaction.commit()) return tl::make_unexpected(db->refusal());
  outcome.written = true;
  entriesChanged(root);
  return std::move(outcome);
}

}  // namespace moniva
