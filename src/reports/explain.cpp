#include "reports/explain.h"

#include <algorithm>
#include <cmath>

#include "model/transaction_type.h"
#include "reports/category_report.h"
#include "reports/currency_report.h"
#include "reports/numbered_slots.h"
#include "reports/payer_filter.h"
#include "reports/payment_report.h"
#include "reports/vendor_report.h"
#include "storage/transaction.h"

namespace moniva {
namespace {

using ExplainedPart = Result<Explained::Part>;

bool comesInByType(int type) {
  return type == kind::kIncome || (type > 21 && type < 29);
}

bool isWholeCode(int code) {
  return code == 1112 || code == 1050 || code == 2312;
}

/// The conditions and sums of one figure.
class ExplainedFigure {
 public:
  ExplainedFigure(MVAppRoot& root, Connection& db, const ExplainQuery& query)
      : root_(root),
        db_(db),
        query_(query),
        code_(query.transactionType),
        begin_(root.calendar().dateBegin(query.from)),
        end_(root.calendar().dateEnd(query.to)) {}

  bool isMember() const {
    return query_.category || query_.vendor || query_.paidFrom || !query_.currency.empty();
  }

  ExplainedPart walk(const std::function<void(const ExplainedRow&)>& take) const {
    NumberedSlots slots;
    const auto where = rows(slots, paidFilter() + memberFilter());
    Run run = db_.query(
        fmt::format("select {}, eid, datetime, type, category, subcategory, vendor, account, book, note,"
                    " paid, syear from transactions t where {} order by datetime, eid",
                    measure(), where),
        slots.values());
    Explained::Part part;
    while (run.next()) {
      ExplainedRow row;
      row.amount = run.real(0);
      row.eid = run.text(1);
      row.datetime = run.date(2);
      row.type = static_cast<int>(run.integer(3));
      row.category = run.text(4);
      row.subcategory = run.text(5);
      row.vendor = run.text(6);
      row.account = run.text(7);
      row.book = run.text(8);
      row.note = run.text(9);
      row.paid = run.integer(10) != 0;
      row.advancedType = static_cast<int>(run.integer(11));
      take(row);
      part.amount += row.amount;
      ++part.count;
    }
    if (!run.ok()) return tl::make_unexpected(db_.refusal());
    return part;
  }

  /// What the report or breakdown says; the latter is made on the database queue, in a snapshot of its own.
  ExplainedPart reported() const { return isMember() ? ofBreakdown() : ofReport(); }

  /// What rows like those of the figure, of that sort instead, come to.
  ExplainedPart instead(const std::string& sort, bool isRefund = false) const {
    NumberedSlots slots;
    const auto where = rowsOf(slots, sort, isRefund ? holderOfRefunds(slots) : holder(slots));
    return partOf(
        fmt::format("select sum({}) as amount, count(eid) from transactions t where {}", measure(), where),
        slots);
  }
  ExplainedPart pending() const { return instead(" and paid = 0" + memberFilter()); }
  ExplainedPart refunds() const { return instead(paidFilter() + " and amount < 0", true); }
  ExplainedPart spread() const { return instead(paidFilter() + " and amount > 0 and syear = 1002"); }
  ExplainedPart transfers() const {
    NumberedSlots slots;
    const auto when = period(slots);
    return partOf(
        "select sum(amount) as amount, count(eid) from transactions t where deleted = 0 and paid = 1"
        " and type = 23 and " +
            when,
        slots);
  }

 private:
  ExplainedPart partOf(const std::string& sql, const NumberedSlots& slots) const {
    Run run = db_.query(sql, slots.values());
    Explained::Part part;
    if (run.next()) part = {run.integer(1), run.real(0)};
    if (!run.ok()) return tl::make_unexpected(db_.refusal());
    return part;
  }

  std::string_view measure() const {
    if (!query_.currency.empty()) return "amount2";
    return isWholeCode(code_)
               ? "case when type = 11 or (type > 21 and type < 29) then amount else -amount end"
               : "amount";
  }
  std::string paidFilter() const { return query_.pending ? "" : " and paid = 1"; }
  /// What breakdowns leave out besides.
  std::string memberFilter() const {
    if (!isMember() || !query_.currency.empty()) return {};
    return query_.paidFrom ? " and amount > 0 and syear != 1002" : " and amount > 0";
  }

  std::string period(NumberedSlots& slots) const {
    const auto begin = slots.add(begin_);
    return fmt::format("{} <= datetime and datetime <= {}", begin, slots.add(end_));
  }
  std::string holder(NumberedSlots& slots) const {
    if (!query_.paidFrom) return withSlot(accountQuerySQL(query_.of), slots.add(query_.of.pk));
    const auto own = payerFilter(query_.of);
    return withSlots(own.sql, own.slots, slots);
  }
  /// What came back to the accounts that paid for a book is payments of their own.
  std::string holderOfRefunds(NumberedSlots& slots) const {
    if (!query_.paidFrom) return holder(slots);
    const auto refunds = refundFilter(query_.of);
    const auto own = holder(slots);
    return fmt::format("({} or {})", own, withSlots(refunds.sql, refunds.slots, slots));
  }
  std::string rows(NumberedSlots& slots, const std::string& sort) const {
    return rowsOf(slots, sort, holder(slots));
  }
  std::string rowsOf(NumberedSlots& slots, const std::string& sort, const std::string& whose) const {
    const auto when = period(slots);
    const auto kinds = types();
    // Of several types the index of books would not have the order of dates.
    const bool isInOrder = kinds.starts_with("type =") || query_.of.isAccount();
    return fmt::format("deleted = 0{} and {} and {}{} and {}{}", sort, when, isInOrder ? "" : "+", whose,
                       kinds, member(slots));
  }

  /// Whether rows of the type are part of the figure.
  bool counts(int type) const {
    const bool isOut = type == kind::kExpense || (type > 31 && type < 39);
    const bool isTransferOut = type == kind::kTransferOut;
    switch (code_) {
      case 1112:
        return type == kind::kIncome || type == kind::kExpense;
      case 1050:
        return comesInByType(type) || (isOut && (!isTransferOut || query_.of.isAccount()));
      case 2312:
        return comesInByType(type) || (isOut && !isTransferOut);
      case kind::kTransferIn:
      case kind::kTransferOut:
        return type == code_ && query_.of.isAccount();
      default:
        return type == code_ || (query_.category && type == code_ + 2);
    }
  }
  std::string types() const {
    std::string any;
    int many = 0;
    for (int type = kind::kIncome; type < 40; ++type) {
      if (!counts(type)) continue;
      any += fmt::format("{}{}", many == 0 ? "" : ",", type);
      ++many;
    }
    if (many == 0) return "0";
    return many == 1 ? "type = " + any : fmt::format("+type in ({})", any);
  }

  std::string member(NumberedSlots& slots) const {
    if (query_.category && query_.category->isSubCate()) {
      const auto above = slots.add(query_.category->parent);
      return fmt::format(" and category = {} and subcategory = {}", above, slots.add(query_.category->pk));
    }
    if (query_.category) return " and category = " + slots.add(query_.category->pk);
    if (query_.vendor && query_.vendor->empty()) {
      return " and (vendor is NULL or vendor in ('', 'NoVendor', 'NoPayee', 'NoPayer'))";
    }
    if (query_.vendor) return " and vendor = " + slots.add(*query_.vendor);
    if (query_.paidFrom && query_.paidFrom->empty()) return " and coalesce(account, '') = ''";
    if (query_.paidFrom) return " and account = " + slots.add(*query_.paidFrom);
    return query_.currency.empty() ? "" : " and currency2 = " + slots.add(query_.currency);
  }
  /// Whether a row of the breakdown is that of the member.
  bool isOfMember(const TransReportSummary& row) const {
    if (row.category) return query_.category && row.category->pk == query_.category->pk;
    if (row.vendor)
      return query_.vendor->empty() ? row.vendor->isNoVendor() : row.vendor->pk == *query_.vendor;
    if (!row.paymentAccount) return row.currency == query_.currency;
    return query_.paidFrom->empty() ? MonivaAccount::isNoneAccount(row.paymentAccount->pk)
                                    : row.paymentAccount->pk == *query_.paidFrom;
  }

  Result<TransReportSummary> breakdown() const {
    if (query_.vendor) return getReportForAllVendor(query_.of, code_, query_.from, query_.to, query_.pending);
    if (query_.paidFrom) {
      return getReportForPaymentAccount(query_.of, code_, query_.from, query_.to, query_.pending);
    }
    if (!query_.category) {
      return getReportForAllCurrency(query_.of, code_, query_.from, query_.to, query_.pending);
    }
    MVCategory above = MVCategory::rootCateForType(root_, code_);
    if (query_.category->isSubCate()) above.title = above.pk = query_.category->parent;
    return getSubCategoryReportFor(above, query_.of, query_.from, query_.to, query_.pending);
  }

  /// What the breakdown has for the member.
  ExplainedPart ofBreakdown() const {
    const auto all = breakdown();
    if (!all) return tl::make_unexpected(all.error());
    Explained::Part part;
    for (const auto& row : all->listArray) {
      if (!isOfMember(row)) continue;
      // A currency's figure is there whichever the type, and among the income besides.
      part.amount += query_.currency.empty() ? row.incomeAmount + row.expenseAmount : row.expenseAmount;
      part.count += row.count;
    }
    return part;
  }

  ExplainedPart ofReport() const {
    TransactionReport report(root_);
    report.setMonivaAccount(query_.of);
    report.setTransactionType(code_);
    const auto queries = report.queries();
    TransReportSummary sum;
    auto read = queries.sum(db_, begin_, end_, Paid::yes, sum);
    if (read && query_.pending) read = queries.sum(db_, begin_, end_, Paid::no, sum);
    if (!read) return tl::make_unexpected(read.error());
    const int out = isWholeCode(code_) ? -1 : 1;
    Explained::Part part{sum.incomeCount + sum.incomePendingCount + sum.expenseCount +
                             sum.expensePendingCount + sum.transferoutCount,
                         sum.incomeAmount + sum.incomePendingAmount +
                             out * (sum.expenseAmount + sum.expensePendingAmount + sum.transferoutAmount)};
    // In a whole report what came in by transfer is income already.
    if (!isWholeCode(code_)) {
      part.count += sum.transferinCount;
      part.amount += sum.transferinAmount;
    }
    return part;
  }

  MVAppRoot& root_;
  Connection& db_;
  const ExplainQuery& query_;
  int code_;
  Date begin_;
  Date end_;
};

}  // namespace

bool Explained::agrees() const {
  // Half of the last decimal an amount has; of large sums what their doubles cannot tell apart.
  const double noise = std::max(5e-7, 1e-12 * moved);
  return rows.count == reported.count && std::abs(rows.amount - reported.amount) <= noise;
}

Result<Explained> explain(MVAppRoot& root, const ExplainQuery& query,
                          const std::function<void(const ExplainedRow&)>& take) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  const ExplainedFigure figure(root, *db, query);
  Explained explained;
  const auto read = [](const ExplainedPart& from, Explained::Part& into) -> Result<> {
    if (!from) return tl::make_unexpected(from.error());
    into = *from;
    return {};
  };
  const auto readRows = [&]() -> Result<> {
    const ReadTransaction snapshot(*db);
    std::vector<std::pair<Explained::Part*, ExplainedPart>> parts;
    parts.emplace_back(&explained.rows, figure.walk([&](const ExplainedRow& row) {
      explained.moved += std::abs(row.amount);
      take(row);
    }));
    if (!figure.isMember()) parts.emplace_back(&explained.reported, figure.reported());
    if (!query.pending) parts.emplace_back(&explained.pending, figure.pending());
    if (figure.isMember() && query.currency.empty()) {
      parts.emplace_back(&explained.refunds, figure.refunds());
    }
    if (query.paidFrom) parts.emplace_back(&explained.spread, figure.spread());
    if (!figure.isMember() && query.of.isBook() && query.transactionType == 1112) {
      parts.emplace_back(&explained.transfers, figure.transfers());
    }
    for (const auto& [into, part] : parts) {
      if (auto done = read(part, *into); !done) return done;
    }
    return {};
  };
  auto done = figure.isMember() ? read(figure.reported(), explained.reported) : Result<>();
  if (done) done = readRows();
  // Another program may have written between the two.
  if (done && figure.isMember() && !explained.agrees()) done = read(figure.reported(), explained.reported);
  if (!done) return tl::make_unexpected(done.error());
  return explained;
}

}  // namespace moniva
