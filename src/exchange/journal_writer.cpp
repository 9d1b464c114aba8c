#include "exchange/journal_writer.h"

#include <algorithm>
#include <limits>

#include "exchange/journal_entry.h"
#include "storage/transaction.h"

namespace moniva {
namespace {

constexpr std::size_t kPiece = 1 << 16;
constexpr std::size_t kNameWidth = 44;
constexpr std::size_t kAmountWidth = 14;

/// One journal in progress.
class JournalWriter {
 public:
  JournalWriter(MVAppRoot& root, Connection& db, const ExportRequest& request, const ExportSink& sink)
      : db_(db),
        calendar_(root.calendar()),
        request_(request),
        sink_(sink),
        rows_(db, request),
        chart_(root, db, request) {}

  ExportOutcome outcome;

  Result<> write() {
    if (auto loaded = chart_.load(); !loaded) return loaded;
    auto kinds = rows_.survey(outcome);
    if (!kinds) return tl::make_unexpected(kinds.error());
    declareAll(*kinds);
    const auto taken =
        rows_.each(request_.from.has_value(), outcome,
                   [this](const ExportRow& row, const ExportRow* other) { return take(row, other); });
    if (!taken) return taken;
    if (!isOpen_) open(calendar_.dayNumber(request_.from.value_or(firstEdit())));
    outcome.accounts = static_cast<std::int64_t>(chart_.accounts().size());
    return flush(0);
  }

 private:
  /// When the books were begun, for a journal without records.
  Date firstEdit() {
    Run run = db_.query("select min(editDate) from account where editDate > 1000000");
    return run.next() ? run.date(0) : Date{};
  }

  /// Makes every account that the rows will ask for, and declares it.
  void declareAll(std::vector<ExportKind>& kinds) {
    std::stable_partition(kinds.begin(), kinds.end(),
                          [this](const ExportKind& kind) { return chart_.isLive(kind.row); });
    for (const auto& kind : kinds) {
      if (kind.upToEnd == 0 || (!kind.row.paid && !request_.pending)) continue;
      post(chart_, kind.row, nullptr, entry_);
      if (kind.row.type == kind::kTransferOut) chart_.special(JournalChart::Special::charges);
    }
    const bool opens =
        request_.from || std::ranges::any_of(chart_.accounts(), [](const JournalAccount& account) {
          return std::ranges::any_of(account.balances, [](const auto& b) { return !b.second.isZero(); });
        });
    if (opens) chart_.special(JournalChart::Special::opening);
    text_ =
        "; Books and accounts of Moniva. After the sign = stands the balance that an account has then.\n"
        "; Expenses and income stand below their book; what is Further is counted in another record.\n\n";
    for (const auto& [symbol, places] : chart_.commodities()) {
      text_ += fmt::format("commodity {}\n", symbol);
      if (places > 0) text_ += fmt::format("    format {} {}\n", Decimal::of(1000)->text(places), symbol);
    }
    text_ += '\n';
    for (const auto tag : kJournalTags) text_ += fmt::format("tag {}\n", tag);
    text_ += '\n';
    std::vector<std::string_view> names;
    for (const auto& account : chart_.accounts()) names.push_back(account.name);
    std::ranges::sort(names);
    for (const auto name : names) text_ += fmt::format("account {}\n", name);
    text_ += '\n';
  }

  Result<> take(const ExportRow& row, const ExportRow* other) {
    const bool isBefore = request_.from && row.datetime < *request_.from;
    if (!row.paid && (!request_.pending || isBefore)) {
      if (!isBefore) ++outcome.pending;
      return {};
    }
    if (isBefore) {
      post(chart_, row, other, entry_);
      for (const auto& posting : entry_.postings) add(posting);
      return {};
    }
    // Dates never go back, also where a zone's clock went back over midnight.
    day_ = std::max(day_, calendar_.dayNumber(row.datetime));
    if (!isOpen_) open(request_.from ? calendar_.dayNumber(*request_.from) : day_);
    post(chart_, row, other, entry_);
    describe(chart_, row, other, entry_);
    print(day_, row.paid);
    outcome.rows += other == nullptr ? 1 : 2;
    return flush(kPiece);
  }

  /// Begins with what there is already.
  void open(std::int64_t day) {
    isOpen_ = true;
    std::vector<Decimal> sums(chart_.commodities().size());
    entry_.postings.clear();
    for (std::size_t account = 0; account < chart_.accounts().size(); ++account) {
      if (!chart_.at(account).carried) continue;
      for (auto& [commodity, balance] : chart_.at(account).balances) {
        if (balance.isZero()) continue;
        entry_.postings.push_back({account, balance, commodity});
        sums[commodity] += balance;
        balance = Decimal();
      }
    }
    if (entry_.postings.empty()) return;
    const std::size_t equity = chart_.special(JournalChart::Special::opening).account;
    for (std::size_t commodity = 0; commodity < sums.size(); ++commodity) {
      if (!sums[commodity].isZero()) entry_.postings.push_back({equity, -sums[commodity], commodity});
    }
    entry_.description = "Opening balances";
    entry_.tags.clear();
    print(day, true);
  }

  const Decimal& add(const JournalPosting& posting) {
    Decimal& balance = chart_.at(posting.account).balance(posting.commodity);
    return balance += posting.amount;
  }

  void print(std::int64_t day, bool settled) {
    const CivilTime date = civilFromDays(day);
    const auto out = std::back_inserter(text_);
    // A bracket would begin a code, so one that is empty goes before it.
    fmt::format_to(out, "{:04}-{:02}-{:02} {} {}{}\n", date.year, date.month, date.day, settled ? '*' : '!',
                   entry_.description.starts_with('(') ? "() " : "", entry_.description);
    for (const auto& [tag, value] : entry_.tags) fmt::format_to(out, "    ; {}: {}\n", tag, value);
    for (const auto& posting : entry_.postings) {
      const JournalAccount& account = chart_.at(posting.account);
      const std::string amount = text(posting.amount, posting.commodity);
      fmt::format_to(out, "    {}{:>{}}{}", account.name, "",
                     2 + (account.width < kNameWidth ? kNameWidth - account.width : 0) +
                         (amount.size() < kAmountWidth ? kAmountWidth - amount.size() : 0),
                     amount);
      if (posting.cost) fmt::format_to(out, " @@ {}", text(posting.cost->first, posting.cost->second));
      const Decimal& balance = add(posting);
      if (account.asserted) fmt::format_to(out, " = {}", text(balance, posting.commodity));
      text_ += '\n';
    }
    text_ += '\n';
    ++outcome.lines;
  }

  std::string text(const Decimal& amount, std::size_t commodity) const {
    const auto& [symbol, places] = chart_.commodities()[commodity];
    return fmt::format("{} {}", amount.text(places), symbol);
  }

  /// Hands over what was written where it is more than so many bytes.
  Result<> flush(std::size_t most) {
    if (text_.size() <= most) return {};
    auto taken = sink_(text_);
    text_.clear();
    return taken;
  }

  Connection& db_;
  const Calendar& calendar_;
  const ExportRequest& request_;
  const ExportSink& sink_;
  ExportRows rows_;
  JournalChart chart_;
  JournalEntry entry_;
  std::string text_;
  std::int64_t day_ = std::numeric_limits<std::int64_t>::min();
  bool isOpen_ = false;
};

}  // namespace

Result<ExportOutcome> exportJournal(MVAppRoot& root, const ExportRequest& request, const ExportSink& sink) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  const ReadTransaction snapshot(*db);
  JournalWriter writer(root, *db, request, sink);
  if (auto written = writer.write(); !written) return tl::make_unexpected(written.error());
  return writer.outcome;
}

}  // namespace moniva
