#include "ui/cli/commands/list_lines.h"

#include <algorithm>
#include <boost/json.hpp>

#include "calendar/date_texts.h"
#include "model/record_list.h"
#include "model/transfer.h"
#include "ui/cli/command_error.h"
#include "ui/cli/record_texts.h"
#include "ui/cli/records.h"

namespace moniva {
namespace {

namespace json = boost::json;

std::string sumText(const Session& session, const UnpaidDay::Sum& sum) {
  if (sum.type == kind::kIncome) return session.count("{} income entry", "{} income entries", sum.count);
  if (sum.type == kind::kExpense) return session.count("{} expense", "{} expenses", sum.count);
  return session.count("{} transfer", "{} transfers", sum.count);
}

std::string sumAmount(Session& session, const UnpaidDay::Sum& sum) {
  const auto currency = sum.currency.empty() ? session.defaultCurrency() : sum.currency;
  return comesIn(sum.type) ? session.amounts().formatSigned(sum.amount, currency)
                           : session.amounts().format(sum.amount, currency);
}

json::array sumsJson(Session& session, const std::vector<UnpaidDay::Sum>& sums) {
  json::array array;
  for (const auto& sum : sums) {
    array.push_back({{"type", sum.type},
                     {"currency", sum.currency.empty() ? session.defaultCurrency() : sum.currency},
                     {"amount", sum.amount},
                     {"count", sum.count}});
  }
  return array;
}

void addDayHeading(Session& session, TransactionRows& rows, Date date) {
  const Calendar& calendar = session.calendar();
  const std::string day =
      fmt::format("{} {}", stringOfDateMediumStyle(calendar, date), stringOfWeekdayName(calendar, date));
  if (calendar.isToday(date, session.now()))
    return rows.addHeading(session.text("{}, today", day), ink::cyan);
  if (calendar.isHistory(date, session.now())) {
    return rows.addHeading(session.text("{}, overdue", day), ink::yellow);
  }
  rows.addHeading(day);
}

}  // namespace

std::optional<ListLine> ListedRecords::record(const std::string& eid) {
  MVAppRoot& root = session_.root();
  const auto whole = done(RecordWhole::of(root, eid));
  auto row = MVTransaction::transactionFromEID(root, whole ? whole->head.eid : eid, &names_);
  if (row && row->type() == kind::kTransferIn) {
    const auto transfer = Transfer::transferFromEIDB(root, eid);
    // The side the money leaves may have gone by itself.
    auto other = transfer ? MVTransaction::transactionFromEID(root, transfer->eidA, &names_) : std::nullopt;
    if (other && other->deleted == row->deleted) row = std::move(other);
  }
  if (!row || !given_.insert(row->eid).second) return std::nullopt;
  if (!whole || !whole->isCompound()) return ListLine{std::move(*row), std::nullopt};
  const RecordTexts texts(session_, names_, *whole);
  row->amount = whole->total();
  row->currency = whole->currency(names_);
  row->categoryString = texts.categories();
  row->vendorString = texts.vendors();
  if (const auto accounts = whole->accounts(); accounts.size() == 1) {
    row->paymentAccount = names_.holder(accounts.front());
  }
  return ListLine{std::move(*row), texts.marks()};
}

std::optional<ListLine> ListedRecords::row(const std::string& eid) {
  auto row = MVTransaction::transactionFromEID(session_.root(), eid, &names_);
  if (!row) return std::nullopt;
  if (row->isPayment && !row->transferEID.empty() && !row->isTransfer()) {
    const auto item = MVTransaction::transactionFromConnectUUID(session_.root(), row->transferEID);
    if (item) {
      if (row->categoryString.empty()) row->categoryString = item->categoryString;
      row->vendorString = item->vendorString;
      if (!row->bookAccount) row->bookAccount = item->bookAccount;
      if (row->currency.empty()) row->currency = item->currency;
      if (row->note.empty()) row->note = item->note;
    }
  }
  return ListLine{std::move(*row), std::nullopt};
}

std::optional<ListLine> ListedRecords::row(const UnpaidEntry& entry) {
  auto line = row(entry.eid);
  if (line && !entry.currency.empty()) line->row.currency = entry.currency;
  // Being pending is what the whole list is about.
  if (line) line->mark = "";
  return line;
}

std::optional<ListLine> ListedRecords::installment(const std::string& eid) {
  auto line = row(eid);
  const auto whole = line ? done(RecordWhole::of(session_.root(), eid)) : std::nullopt;
  if (!whole) return line;
  const auto& items = whole->group.items;
  const auto at = std::ranges::find(items, eid, &TransactionItem::eid);
  line->row.currency = whole->currency(names_);
  if (const auto accounts = whole->accounts(); accounts.size() == 1) {
    line->row.paymentAccount = names_.holder(accounts.front());
  }
  line->mark = session_.text("{} of {}", at - items.begin() + 1, items.size());
  return line;
}

std::optional<ListLine> ListedRecords::series(const std::string& eid) {
  auto line = row(eid);
  if (line) line->mark = ruleText(session_, line->row.repeat);
  return line;
}

std::vector<ListLine> ListedRecords::pendingBefore(Date end) {
  MVAppRoot& root = session_.root();
  std::vector<ListLine> lines;
  const auto take = [&](std::optional<ListLine> line) {
    if (!line || line->row.datetime >= end) return;
    if (line->mark.value_or("").empty()) line->mark = session_.text("pending");
    lines.push_back(std::move(*line));
  };
  for (const auto& day : done(unpaidTransactions(root))) {
    for (const auto& entry : day.entries) take(row(entry));
  }
  for (const int type : {kind::kExpense, kind::kIncome}) {
    for (const auto& eid : done(installmentTransactions(root, type))) take(installment(eid));
  }
  return lines;
}

std::string ruleText(const Session& session, std::string_view rule) {
  if (rule == "Daily") return session.text("daily");
  if (rule == "Weekly") return session.text("weekly");
  if (rule == "Biweekly") return session.text("every two weeks");
  if (rule == "Monthly") return session.text("monthly");
  if (rule == "Bimonthly") return session.text("every two months");
  if (rule == "Quarterly") return session.text("quarterly");
  if (rule == "Half-yearly") return session.text("half-yearly");
  if (rule == "Yearly") return session.text("yearly");
  return {};
}

void printDays(Session& session, bool csv, std::vector<ListDay> days,
               const std::vector<UnpaidDay::Sum>& totals, const std::string& none) {
  const Calendar& calendar = session.calendar();
  TransactionRows rows(session, csv);
  json::array array;
  for (const auto& day : days) {
    addDayHeading(session, rows, day.date);
    for (const auto& line : day.lines) rows.add(line.row, line.mark);
    if (day.lines.size() > 1) {
      for (const auto& sum : day.sums) rows.addSum(sumText(session, sum), sumAmount(session, sum));
    }
    if (csv || !session.options().json) continue;
    json::object object{{"date", isoDate(session, calendar.dateBegin(day.date))},
                        {"isToday", calendar.isToday(day.date, session.now())},
                        {"isOverdue", calendar.isHistory(day.date, session.now())}};
    if (day.sday != 0) object["sday"] = day.sday;
    if (!day.sums.empty()) object["sums"] = sumsJson(session, day.sums);
    object["transactions"] = rows.takeJson();
    array.push_back(std::move(object));
  }
  if (!csv && session.options().json) return session.printJson(array);
  for (const auto& sum : totals) rows.addTotal(sumText(session, sum), sumAmount(session, sum));
  rows.print(none);
}

void printLines(Session& session, bool csv, const std::vector<ListLine>& lines, const std::string& none) {
  TransactionRows rows(session, csv);
  for (const auto& line : lines) rows.add(line.row, line.mark);
  rows.print(none);
}

}  // namespace moniva
