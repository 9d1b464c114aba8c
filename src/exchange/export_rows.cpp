#include "exchange/export_rows.h"

#include <algorithm>
#include <map>
#include <unordered_map>
#include <utility>

#include "model/account_groups.h"
#include "model/transaction_type.h"
#include "storage/connection.h"

namespace moniva {
namespace {

// Within the first and the last day that the dates of other programs reach, in any zone.
constexpr double kFirstMoment = -17'987'400'000;
constexpr double kLastMoment = 253'402'246'800;

/// A row without a date has none or a text.
constexpr std::string_view kDated = "typeof(datetime) in ('real', 'integer')";

/// The columns that tell kinds of rows apart; `kindOf` takes them in order.
constexpr std::string_view kKindColumns =
    "type, bid = 10, paid = 1 or type = 50, book, account,"
    " case when category = '#NOMVCATEGORY' then '' else category end,"
    " case when subcategory in (category, '#NOMVCATEGORY') then '' else subcategory end,"
    " case when transferEID != '' then 'group' else '' end,"
    " case when type in (24, 25, 34, 35) then vendor else '' end";

ExportRow kindOf(const Run& run) {
  ExportRow row;
  row.type = static_cast<int>(run.integer(0));
  row.isPayment = run.integer(1) != 0;
  row.paid = run.integer(2) != 0;
  row.book = run.text(3);
  row.account = run.text(4);
  row.category = run.text(5);
  row.subcategory = run.text(6);
  row.group = run.text(7);
  row.vendor = run.text(8);
  return row;
}

/// Whether they are the sides A and B of one transfer, to be told together.
bool arePair(const ExportRow& a, const ExportRow& b) {
  return a.type == kind::kTransferOut && b.type == kind::kTransferIn && !a.group.empty() &&
         a.group == b.group && a.datetime == b.datetime && a.paid == b.paid;
}

bool movesNoMoney(int type) {
  return type >= kind::kOneTimeBudget && type <= kind::kInstallmentSeed;
}

}  // namespace

int directionOf(int type) {
  if (type == kind::kIncome || type == kind::kFurtherIncome || type == kind::kBalanceCorrection) return 1;
  if (type == kind::kExpense || type == kind::kFurtherExpense) return -1;
  if (type > 21 && type < 29) return 1;
  return type > 31 && type < 39 ? -1 : 0;
}

Result<std::vector<std::string>> membersOf(const ExportRequest& request) {
  if (!request.of) return std::vector<std::string>();
  if (!request.of->isGroup) return std::vector<std::string>{request.of->pk};
  const auto members = getGroupMembers(*request.of);
  if (!members) return tl::make_unexpected(members.error());
  std::vector<std::string> keys;
  for (const auto& member : *members) keys.push_back(member.pk);
  return keys;
}

ExportRows::ExportRows(Connection& db, const ExportRequest& request) : db_(db), request_(request) {
  isPeriod_ = request.from || request.to;
  if (!request.of) return;
  // A record of several rows comes whole: its items are told by its payments, and the other way round.
  scope_ = fmt::format(
      " and ({0} or (transferEID != '' and type in (11, 12, 13, 14, 23, 33) and exists (select 1 from"
      " transactions r where r.transferEID = t.transferEID and r.deleted = 0 and {0})))",
      accountQuerySQL(*request.of));
}

std::vector<Value> ExportRows::slots(std::initializer_list<Value> bounds) const {
  std::vector<Value> slots;
  if (isPeriod_) slots.assign(bounds);
  if (request_.of) slots.insert(slots.end(), 2, Value(request_.of->pk));
  return slots;
}

Result<std::vector<ExportKind>> ExportRows::survey(ExportOutcome& outcome) {
  // Counted here: the engine would sort all rows by nine texts for it.
  Run run =
      db_.query(fmt::format("select {}, not {}, {}, {} from transactions t where deleted = 0{}", kKindColumns,
                            kDated, isPeriod_ ? fmt::format("{} and datetime <= ?", kDated) : "1",
                            isPeriod_ ? fmt::format("{} and datetime between ? and ?", kDated) : "1", scope_),
                slots({end(), start(), end()}));
  std::unordered_map<std::string, ExportKind> kinds;
  std::string key;
  while (run.next()) {
    const auto inPeriod = run.integer(11);
    if (const auto type = static_cast<int>(run.integer(0)); directionOf(type) == 0) {
      // What budgets and bills carry over follows from other rows.
      if (type == kind::kBudgetCarry || type == kind::kOverpayment) continue;
      (movesNoMoney(type) ? outcome.noMoney : outcome.unknown) += inPeriod;
      continue;
    }
    key.clear();
    for (int column = 0; column < 9; ++column) key.append(run.text(column)) += '\n';
    auto known = kinds.find(key);
    if (known == kinds.end()) known = kinds.emplace(key, ExportKind{kindOf(run)}).first;
    known->second.upToEnd += run.integer(10);
    total_ += static_cast<std::size_t>(run.integer(10));
    if (isPeriod_) outcome.undated += run.integer(9);
  }
  if (!run.ok()) return tl::make_unexpected(db_.refusal());
  std::map<std::string, ExportKind> ordered(kinds.begin(), kinds.end());
  std::vector<ExportKind> list;
  for (auto& [sorted, kind] : ordered) list.push_back(std::move(kind));
  return list;
}

Result<> ExportRows::each(bool fromStart, ExportOutcome& outcome,
                          const std::function<Result<>(const ExportRow&, const ExportRow*)>& take) {
  Run run = db_.query(
      fmt::format(
          "select {}, eid, amount, amount2, currency2, note, vendor, transferEID, case when {} then"
          " datetime when datetime is null then -1e18 else 1e18 end from transactions t where deleted = 0 and"
          " +type > 10 and +type <= 50{}{} order by datetime, transferEID, type desc, eid",
          kKindColumns, kDated, isPeriod_ ? fmt::format(" and {} and datetime between ? and ?", kDated) : "",
          scope_),
      slots({fromStart ? Date{-1e18} : start(), end()}));
  std::optional<ExportRow> held;
  std::size_t done = 0;
  while (run.next()) {
    if (request_.progress && ++done % 1024 == 0) request_.progress(done, total_);
    ExportRow row = kindOf(run);
    if (directionOf(row.type) == 0) continue;
    const auto amount = Decimal::of(run.real(10));
    if (!amount) {
      ++outcome.unmeasured;
      continue;
    }
    row.eid = run.text(9);
    row.amount = *amount;
    row.amount2 = run.real(11);
    row.currency2 = run.text(12);
    row.note = run.text(13);
    row.vendor = run.text(14);
    row.group = run.text(15);
    row.datetime = Date{std::clamp(run.real(16), kFirstMoment, kLastMoment)};
    // Side A waits for side B, which is next if it comes along.
    if (held) {
      const bool pair = arePair(*held, row);
      if (auto taken = take(*held, pair ? &row : nullptr); !taken) return taken;
      held.reset();
      if (pair) continue;
    }
    if (row.type == kind::kTransferOut) {
      held = std::move(row);
    } else if (auto taken = take(row, nullptr); !taken) {
      return taken;
    }
  }
  if (!run.ok()) return tl::make_unexpected(db_.refusal());
  return held ? take(*held, nullptr) : Result<>();
}

}  // namespace moniva
