#include "exchange/csv_export.h"

#include <unicode/unistr.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <optional>
#include <string_view>

#include "base/text.h"
#include "currency/currency_codes.h"
#include "exchange/csv_writer.h"
#include "model/record_names.h"
#include "model/transaction_item.h"
#include "storage/transaction.h"

namespace moniva {
namespace {

constexpr std::size_t kPieceOfTable = 1 << 16;

/// A line of the table; every field is a column under its name.
struct CsvRecord {
  std::string eid, datetime, type, book, account, category, subcategory, vendor, amount, currency,
      foreignAmount, foreignCurrency, toAccount, toAmount, note, paid, transferEID;

  static std::vector<std::string> headings() {
    return {"eid",         "datetime", "type",   "book",     "account",       "category",
            "subcategory", "vendor",   "amount", "currency", "foreignAmount", "foreignCurrency",
            "toAccount",   "toAmount", "note",   "paid",     "transferEID"};
  }
  std::vector<std::string> fields() const {
    return {eid,         datetime, type,   book,     account,       category,
            subcategory, vendor,   amount, currency, foreignAmount, foreignCurrency,
            toAccount,   toAmount, note,   paid,     transferEID};
  }
};

/// What part of a record which account paid.
struct Share {
  std::string eid;  ///< of the item; of what no item needed, of the account's first payment
  std::string account;
  Decimal amount;
  Decimal foreign = {};  ///< of what the item was in a foreign currency
};

std::string wordFor(const ExportRow& row) {
  switch (row.type) {
    case kind::kIncome:
      return "income";
    case kind::kExpense:
      return "expense";
    case kind::kFurtherIncome:
      return "further income";
    case kind::kFurtherExpense:
      return "further expense";
    case kind::kTransferIn:
      return "transfer in";
    case kind::kTransferOut:
      return "transfer out";
    case kind::kBorrowed:
      return "borrowed";
    case kind::kLent:
      return "lent";
    case kind::kRepaidToUs:
      return "repaid to us";
    case kind::kRepaidByUs:
      return "repaid by us";
    default:
      return "";
  }
}

/// An amount of which import sees at once that the point is its decimal mark: three digits behind one might
/// be thousands.
std::string amountText(const Decimal& amount, const std::string& code) {
  std::string text = amount.text(currencyDigits(code));
  if (text.size() > 4 && text[text.size() - 4] == '.') text += '0';
  return text;
}

/// The text as UTF-8, whatever came from another device: a table of anything else is not read again.
std::string wellFormedText(std::string text) {
  const auto isAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80U; };
  if (std::ranges::all_of(text, isAscii)) return text;
  std::string formed;
  return icu::UnicodeString::fromUTF8(text).toUTF8String(formed);
}

/// What each item of the group owes to which account, of the rows that are settled or of those that are not.
/// Refunds are taken off what their account paid.
std::vector<Share> sharesOf(const TransactionGroup& group, bool settled) {
  std::vector<Share> funds;
  for (const auto& payment : group.payments) {
    if (payment.paid != settled || !payment.book.empty()) continue;
    const Decimal sum = Decimal::of(payment.amount).value_or(Decimal());
    const auto known = std::ranges::find(funds, payment.account, &Share::account);
    if (known == funds.end()) {
      funds.push_back({payment.eid, payment.account, sum});
    } else {
      known->amount += sum;
    }
  }
  std::vector<Share> shares;
  for (const auto& item : group.items) {
    if (item.paid != settled || !item.isSpend() || !item.account.empty()) continue;
    Decimal open = Decimal::of(item.amount).value_or(Decimal());
    for (auto& fund : funds) {
      const Decimal part = std::min(open, fund.amount);
      if (part <= Decimal()) continue;
      shares.push_back({item.eid, fund.account, part});
      fund.amount += -part;
      open += -part;
    }
    if (!open.isZero()) shares.push_back({item.eid, "", open});
  }
  std::erase_if(funds, [](const Share& fund) { return fund.amount.isZero(); });
  shares.insert(shares.end(), funds.begin(), funds.end());
  return shares;
}

double numberOf(const Decimal& amount) {
  const std::string text = amount.text(0);
  double number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

/// Divides what the item was in a foreign currency among its shares: they come to the whole of it.
void shareForeign(std::vector<Share>& shares, const ExportRow& item, const Decimal& foreign) {
  const double rate = numberOf(foreign) / numberOf(item.amount);
  const double scale = std::pow(10.0, currencyDigits(item.currency2));
  Decimal told;
  Decimal shared;
  for (auto& share : shares) {
    if (share.eid != item.eid) continue;
    told += share.amount;
    // Up to here, so that what rounding takes from one the next one gets, and the last the rest.
    const auto upTo =
        told == item.amount ? foreign : *Decimal::of(std::round(numberOf(told) * rate * scale) / scale);
    share.foreign = upTo + -shared;
    shared = upTo;
  }
}

/// One table in progress.
class CsvExport {
 public:
  CsvExport(MVAppRoot& root, Connection& db, const ExportRequest& request, const CsvForm& form,
            const ExportSink& sink)
      : root_(root), request_(request), form_(form), sink_(sink), rows_(db, request), names_(root) {}

  ExportOutcome outcome;

  Result<> write() {
    auto members = membersOf(request_);
    if (!members) return tl::make_unexpected(members.error());
    members_ = std::move(*members);
    if (auto kinds = rows_.survey(outcome); !kinds) return tl::make_unexpected(kinds.error());
    text_ = (form_.hasMark ? "\xEF\xBB\xBF" : "") + csvLine(CsvRecord::headings(), form_.separator);
    const auto taken = rows_.each(
        false, outcome, [this](const ExportRow& row, const ExportRow* other) { return take(row, other); });
    return taken ? sink_(text_) : taken;
  }

 private:
  Result<> take(const ExportRow& row, const ExportRow* other) {
    if (!row.paid && !request_.pending) {
      ++outcome.pending;
      return {};
    }
    const auto before = outcome.lines;
    if (wordFor(row).empty()) {
      ++outcome.unknown;
      return {};
    }
    if (other != nullptr) {
      addTransfer(row, *other);
    } else if (isPart(row)) {
      if (auto added = addPart(row); !added) return added;
    } else {
      addPlain(row);
    }
    if (outcome.lines > before) outcome.rows += other == nullptr ? 1 : 2;
    if (text_.size() < kPieceOfTable) return {};
    auto taken = sink_(text_);
    text_.clear();
    return taken;
  }

  /// Whether the row is an item that payments are for, or a payment of such items.
  static bool isPart(const ExportRow& row) {
    return !row.group.empty() && row.isSpend() && !row.isFurther() &&
           (row.isPayment ? row.book : row.account).empty();
  }

  /// A row that stands for itself.
  void addPlain(const ExportRow& row) {
    auto line = lineOf(row, row.account, row.amount);
    if (row.isPayment && row.book.empty() && row.isSpend()) line.type = wordForPayment(row.amount);
    add(row.book, row.account, "", line);
  }

  /// An item with the accounts that paid it, or a payment with what no item needed of it.
  Result<> addPart(const ExportRow& row) {
    if (groupKey_ != row.group || groupPaid_ != row.paid) {
      const auto group = TransactionGroup::of(root_, row.group);
      if (!group) return tl::make_unexpected(group.error());
      groupKey_ = row.group;
      groupPaid_ = row.paid;
      shares_ = sharesOf(*group, row.paid);
    }
    const auto foreign = foreignOf(row);
    if (foreign && !row.isPayment) shareForeign(shares_, row, *foreign);
    for (const auto& share : shares_) {
      if (share.eid != row.eid) continue;
      auto line = lineOf(row, share.account, share.amount);
      if (row.isPayment) line.type = wordForPayment(share.amount);
      if (share.amount != row.amount) {
        // Where nothing is left of it the line has none.
        const bool isForeign = !share.foreign.isZero();
        line.foreignAmount = isForeign ? amountText(share.foreign, row.currency2) : "";
        line.foreignCurrency = isForeign ? row.currency2 : "";
      }
      add(row.book, share.account, "", line);
    }
    return {};
  }

  void addTransfer(const ExportRow& a, const ExportRow& b) {
    auto line = lineOf(a, a.account, a.amount);
    const std::string arriving = currencyOf(b.account, "");
    line.type = "transfer";
    line.vendor = "";
    line.toAccount = titleOf(b.account);
    if (arriving != line.currency || a.amount != b.amount) line.toAmount = amountText(b.amount, arriving);
    add("", a.account, b.account, line);
  }

  CsvRecord lineOf(const ExportRow& row, const std::string& payer, const Decimal& sum) {
    CsvRecord line;
    const CivilTime when = root_.calendar().civilTime(row.datetime);
    line.eid = row.eid;
    line.datetime = fmt::format("{:04}-{:02}-{:02} {:02}:{:02}:{:02}", when.year, when.month, when.day,
                                when.hour, when.minute, when.second);
    line.type = wordFor(row);
    line.book = titleOf(row.book);
    line.account = titleOf(payer);
    line.category = categoryOf(row, row.category);
    line.subcategory = categoryOf(row, row.subcategory);
    line.vendor = whoOf(row);
    line.currency = currencyOf(payer, row.book);
    line.amount = amountText(sum, line.currency);
    if (const auto foreign = foreignOf(row)) {
      line.foreignAmount = amountText(*foreign, row.currency2);
      line.foreignCurrency = row.currency2;
    }
    line.note = row.note;
    line.paid = row.paid ? "1" : "0";
    line.transferEID = row.group;
    return line;
  }

  /// What the row was in a foreign currency.
  static std::optional<Decimal> foreignOf(const ExportRow& row) {
    const auto foreign = Decimal::of(row.amount2);
    return row.currency2.empty() || !foreign || foreign->isZero() ? std::nullopt : foreign;
  }

  /// Adds the line where it is of the book or account asked for.
  void add(const std::string& bookKey, const std::string& from, const std::string& to,
           const CsvRecord& line) {
    const auto isMember = [this](const std::string& key) {
      return !key.empty() && std::ranges::find(members_, key) != members_.end();
    };
    const bool isAsked =
        !request_.of || (request_.of->isBook() ? isMember(bookKey) : isMember(from) || isMember(to));
    if (!isAsked) return;
    text_ += wellFormedText(csvLine(line.fields(), form_.separator));
    ++outcome.lines;
  }

  static std::string wordForPayment(const Decimal& sum) { return sum < Decimal() ? "refund" : "payment"; }

  std::string titleOf(const std::string& key) {
    const auto holder = names_.holder(key);
    return holder ? holder->title : key;
  }

  std::string currencyOf(const std::string& accountKey, const std::string& bookKey) {
    const auto held = names_.holder(accountKey.empty() ? bookKey : accountKey);
    if (held) return held->currency;
    return root_.monivaAccount ? root_.monivaAccount->currency : "";
  }

  std::string categoryOf(const ExportRow& row, const std::string& key) {
    const auto found = names_.category(key, row.isIncome() ? kind::kIncome : kind::kExpense);
    return found ? found->title : key;
  }

  /// The vendor; of a debt the person, of half a transfer the other account.
  std::string whoOf(const ExportRow& row) {
    if (row.isTransfer()) return titleOf(row.vendor);
    if (row.vendor.empty() || !row.isSpend()) return row.vendor;
    const auto found = names_.vendor(row.vendor, row.type);
    return !found ? row.vendor : found->isNoVendor() ? "" : found->title;
  }

  MVAppRoot& root_;
  const ExportRequest& request_;
  const CsvForm& form_;
  const ExportSink& sink_;
  ExportRows rows_;
  RecordNames names_;
  std::vector<std::string> members_;
  std::string text_;
  std::string groupKey_;
  bool groupPaid_ = false;
  std::vector<Share> shares_;
};

}  // namespace

Result<ExportOutcome> exportCsv(MVAppRoot& root, const ExportRequest& request, const CsvForm& form,
                                const ExportSink& sink) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  const ReadTransaction snapshot(*db);
  CsvExport table(root, *db, request, form, sink);
  if (auto written = table.write(); !written) return tl::make_unexpected(written.error());
  return table.outcome;
}

bool isExportedTable(std::span<const std::string> headings) {
  return std::ranges::all_of(std::array{"eid", "transferEID"}, [&](std::string_view heading) {
    return std::ranges::find(headings, heading) != headings.end();
  });
}

}  // namespace moniva
