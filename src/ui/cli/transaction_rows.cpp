#include "ui/cli/transaction_rows.h"

#include <boost/json.hpp>

#include "reports/keyword_forms.h"
#include "ui/cli/entry_options.h"
#include "ui/cli/record_texts.h"
#include "ui/cli/records.h"
#include "ui/cli/text_width.h"

namespace moniva {
namespace {

namespace json = boost::json;

template <class Row>
json::value referred(const std::shared_ptr<const Row>& row) {
  if (!row) return nullptr;
  return json::object{{"pk", row->pk}, {"title", row->title}};
}

std::string currencyOf(Session& session, const MVTransaction& row) {
  return row.currency.empty() ? session.defaultCurrency() : row.currency;
}

/// The text, of a long one what is around the first hit.
std::string aroundHit(const std::string& text, const std::vector<std::string>& hits) {
  constexpr std::size_t kBefore = 20;
  const auto place = findForm(text, hits).first;
  if (place == std::string::npos || place <= kBefore) return text;
  std::size_t begin = place - kBefore;
  while ((static_cast<unsigned char>(text[begin]) & 0xC0U) == 0x80U) --begin;
  return "…" + text.substr(begin);
}

bool isBudget(const MVTransaction& row) {
  return row.type() >= kind::kOneTimeBudget && row.type() <= kind::kCategoryAllocation;
}

std::string marksOf(const Session& session, const MVTransaction& row) {
  std::string marks;
  const auto mark = [&](const std::string& text) { marks += (marks.empty() ? "" : ", ") + text; };
  if (row.recordKind == RecordKind::repeatSeed) mark(session.text("series"));
  if (row.recordKind == RecordKind::recordTemplate) mark(session.text("template"));
  if (row.isPayment && !row.transferEID.empty() && !row.isTransfer() && !row.isDebt() && !row.isRepayment()) {
    mark(session.text("payment"));
  }
  // A budget is neither settled nor pending; its mark says whether it carries on what is left.
  if (!row.paid && !isBudget(row)) mark(session.text("pending"));
  if (row.deleted != 0) mark(session.text("deleted"));
  return marks;
}

}  // namespace

int recordTypeOf(const MVTransaction& row) {
  if (row.type() == kind::kRepeatSeed) return row.advancedType;
  return row.type() == kind::kIncomeTemplate ? kind::kIncome : row.type();
}

std::string whatText(const Session& session, const MVTransaction& row) {
  if (row.type() == kind::kBalanceCorrection) return session.text("correction of a balance");
  if (isBudget(row)) return session.text("budget");
  // A transfer's and a debt's text says between whom.
  if (row.isTransfer() || row.isDebt() || row.isRepayment()) return printable(row.noteString);
  if (!row.categoryString.empty()) return printable(row.categoryString);
  if (!row.noteString.empty()) return printable(row.noteString);
  return row.isPayment ? session.text("payment") : session.text("no category");
}

std::string withText(const MVTransaction& row) {
  // The text of what moves money between two says who they are.
  const bool isBetween = row.isTransfer() || row.isDebt() || row.isRepayment() || row.paymentAccountB;
  if (isBetween) return printable(row.note);
  const bool isNobody = row.vendorString.empty() || (row.vendor && row.vendor->isNoVendor());
  if (!isNobody) return printable(row.vendorString);
  return row.categoryString.empty() ? std::string() : printable(row.note);
}

bool comesIn(int type) {
  return type == kind::kIncome || type == kind::kFurtherIncome || (type > 21 && type < 29);
}

json::object jsonOf(Session& session, const MVTransaction& row) {
  return {{"eid", row.eid},
          {"type", row.type()},
          {"isPayment", row.isPayment},
          {"advancedType", row.advancedType},
          {"amount", row.amount},
          {"currency", currencyOf(session, row)},
          {"foreignAmount", row.foreignAmount},
          {"foreignCurrency", row.foreignCurrency},
          {"datetime", isoDate(session, row.datetime)},
          {"editedDate", isoDate(session, row.editedDate)},
          {"note", row.note},
          {"categoryString", row.categoryString},
          {"noteString", row.noteString},
          {"vendorString", row.vendorString},
          {"paymentAccount", referred(row.paymentAccount)},
          {"paymentAccountB", referred(row.paymentAccountB)},
          {"bookAccount", referred(row.bookAccount)},
          {"mvCategory", referred(row.mvCategory)},
          {"vendor", referred(row.vendor)},
          {"people", row.people},
          {"paid", row.paid},
          {"deleted", row.deleted},
          {"transferEID", row.transferEID}};
}

std::string amountText(Session& session, const MVTransaction& row) {
  const auto currency = currencyOf(session, row);
  return comesIn(recordTypeOf(row)) ? session.amounts().formatSigned(row.amount, currency)
                                    : session.amounts().format(row.amount, currency);
}

TransactionRows::TransactionRows(Session& session, bool csv)
    : session_(session),
      csv_(csv),
      names_(session.root()),
      table_({{.title = session.text("Record"), .isWhole = true},
              {.title = session.text("Date"), .isWhole = true},
              {.title = session.text("What"), .maxWidth = 60, .isSearched = true},
              {.title = session.text("With"), .maxWidth = 40, .isSearched = true},
              {.title = session.text("Account or book")},
              {.title = session.text("Amount"), .align = Align::right},
              {.title = ""}}) {}

void TransactionRows::markHits(std::vector<std::string> forms) {
  hits_ = std::move(forms);
  table_.markHits(hits_);
}

void TransactionRows::add(const MVTransaction& row, const std::optional<std::string>& mark) {
  if (csv_ || session_.options().json) {
    auto object = jsonOf(session_, row);
    // The columns are the same whatever the rows refer to.
    for (const char* name : {"paymentAccount", "paymentAccountB", "bookAccount", "mvCategory", "vendor"}) {
      if (csv_ && object[name].is_null()) object[name] = json::object{{"pk", ""}, {"title", ""}};
    }
    return void(rows_.push_back(std::move(object)));
  }
  const auto& holder = row.paymentAccount ? row.paymentAccount : row.bookAccount;
  // Templates and budgets are of no day.
  const auto day = row.datetime == Date{} ? std::string() : shortDate(session_, row.datetime);
  std::string what = whatText(session_, row);
  std::string with = withText(row);
  if (const auto note = printable(row.note); findForm(note, hits_).second > 0) {
    const auto shown = aroundHit(note, hits_);
    if (what == note) {
      what = shown;
    } else if (with != note) {
      with += (with.empty() ? "" : " · ") + shown;
    }
  }
  table_.addRow({Cell(shortEid(row.eid), ink::dim), day, what, with,
                 printable(holder ? holder->title : std::string()),
                 Cell(amountText(session_, row), comesIn(recordTypeOf(row)) ? ink::green : ink::plain),
                 Cell(mark ? *mark : marksOf(session_, row), ink::dim)});
}

void TransactionRows::addRow(std::string_view eid) {
  if (const auto row = MVTransaction::transactionFromEID(session_.root(), eid, &names_)) add(*row);
}

void TransactionRows::addHeading(const std::string& text, const Ink& ink) {
  if (csv_ || session_.options().json) return;
  if (!table_.empty()) table_.addRow({});
  table_.addRow({"", "", Cell(text, ink::bold | ink)});
}

void TransactionRows::addSum(const std::string& text, const std::string& amount) {
  if (csv_ || session_.options().json) return;
  table_.addRow({"", "", Cell(text, ink::dim), "", "", Cell(amount, ink::dim)});
}

void TransactionRows::addTotal(const std::string& text, const std::string& amount) {
  if (csv_ || session_.options().json) return;
  if (!hasTotal_) table_.addRule();
  hasTotal_ = true;
  table_.addRow({"", "", Cell(text, ink::bold), "", "", Cell(amount, ink::bold)});
}

void TransactionRows::print(const std::string& none) {
  if (csv_) {
    if (rows_.empty()) session_.say(none);
    return printCsv(session_, rows_);
  }
  if (session_.options().json) return session_.printJson(rows_);
  if (table_.empty()) return session_.say(none);
  session_.out() << table_.render(session_.style(), session_.width());
}

}  // namespace moniva
