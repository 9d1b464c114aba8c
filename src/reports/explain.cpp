#include "reports/explain.h"

#include <algorithm>
#include <cmath>

#include "model/transaction_type.h"
#include "reports/numbered_slots.h"
#include "storage/transaction.h"

namespace moniva {
namespace {

using ExplainedPart = Result<Explained::Part>;

bool comesInByType(int type) {
  return type == kind::kIncome || (type > 21 && type < 29);
}

bool isWhole(int code) {
  return code == 1112 || code == 1050 || code == 2312;
}

/// The conditions and sums of one figure.
class Figure {
 public:
  Figure(MVAppRoot& root, Connection& db, const ExplainQuery& query)
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
                    " paid, syear from transactions where {} order by datetime, eid",
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

  /// What the report or breakdown says.
  ExplainedPart reported() const { return isMember() ? ofBreakdown() : ofReport(); }

  /// What rows like those of the figure, of that sort instead, come to.
  ExplainedPart instead(std::string_view sort) const {
    NumberedSlots slots;
    const auto where = rows(slots, std::string(sort));
    return partOf(
        fmt::format("select sum({}) as amount, count(eid) from transactions where {}", measure(), where),
        slots);
  }
  ExplainedPart pending() const { return instead(" and paid = 0" + memberFilter()); }
  ExplainedPart refunds() const { return instead(paidFilter() + " and amount < 0"); }
  ExplainedPart spread() const { return instead(paidFilter() + " and amount > 0 and syear = 1002"); }
  ExplainedPart transfers() const {
    NumberedSlots slots;
    const auto when = period(slots);
    return partOf(
        "select sum(amount) as amount, count(eid) from transactions where deleted = 0 and paid = 1"
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
    return isWhole(code_) ? "case when type = 11 or (type > 21 and type < 29) then amount else -amount end"
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
    const auto own = withSlot(accountQuerySQL(query_.of), slots.add(query_.of.pk));
    if (!query_.paidFrom || !query_.of.isBook()) return own;
    // Payments of older stores name the book in the place of a category.
    return fmt::format("({} or category{})", own, own.substr(std::string_view("book").size()));
  }
  std::string rows(NumberedSlots& slots, const std::string& sort) const {
    const auto when = period(slots);
    const auto whose = holder(slots);
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
      return fmt::format(" and vendor in ('', 'NoVendor', '{}')", placeholder());
    }
    if (query_.vendor) return " and vendor = " + slots.add(*query_.vendor);
    if (query_.paidFrom) return " and account = " + slots.add(*query_.paidFrom);
    return query_.currency.empty() ? "" : " and currency2 = " + slots.add(query_.currency);
  }
  std::string_view placeholder() const { return code_ == kind::kIncome ? "NoPayer" : "NoPayee"; }

  /// Whether a row of the breakdown is that of the member.
  bool isOfMember(std::string_view key) const {
    if (query_.category) return key == query_.category->pk;
    if (query_.vendor && query_.vendor->empty()) {
      return key.empty() || key == kNoVendorKey || key == placeholder();
    }
    if (query_.vendor) return key == *query_.vendor;
    return key == (query_.paidFrom ? *query_.paidFrom : query_.currency);
  }

  /// By the breakdown's own statement: all its members, of which one is taken.
  ExplainedPart ofBreakdown() const {
    NumberedSlots slots;
    std::string by = "vendor";
    std::string only = fmt::format(" and type = {}", code_);
    if (query_.category) {
      only = fmt::format(" and (type = {} or type = {})", code_, code_ + 2);
      by = query_.category->isSubCate() ? "subcategory" : "category";
      only += query_.category->isSubCate() ? " and category = " + slots.add(query_.category->parent)
                                           : " and category != '' and category not NULL";
    } else if (query_.paidFrom) {
      by = "account";
    } else if (!query_.currency.empty()) {
      by = "currency2";
      only += " and currency2 != '' and currency2 not NULL";
    }
    const auto when = period(slots);
    const auto whose = holder(slots);
    Run run = db_.query(fmt::format("select sum({0}) as amount, count(eid), {1} from transactions where {2}"
                                    " and {3} and deleted = 0{4}{5}{6} group by {1}",
                                    measure(), by, when, whose, paidFilter(), memberFilter(), only),
                        slots.values());
    Explained::Part part;
    while (run.next()) {
      if (!isOfMember(run.text(2))) continue;
      part.amount += run.real(0);
      part.count += run.integer(1);
    }
    if (!run.ok()) return tl::make_unexpected(db_.refusal());
    return part;
  }

  /// Settled by the report; what is pending by the sums of all types.
  ExplainedPart ofReport() const {
    TransactionReport report(root_);
    report.setMonivaAccount(query_.of);
    report.setTransactionType(code_);
    const auto settled = report.getSummaryFrom(query_.from, query_.to);
    if (!settled) return tl::make_unexpected(settled.error());
    const int out = isWhole(code_) ? -1 : 1;
    Explained::Part part{
        settled->incomeCount + settled->expenseCount + settled->transferoutCount,
        settled->incomeAmount + out * settled->expenseAmount + out * settled->transferoutAmount};
    // In a whole report what came in by transfer is income already.
    if (!isWhole(code_)) {
      part.count += settled->transferinCount;
      part.amount += settled->transferinAmount;
    }
    if (!query_.pending) return part;
    NumberedSlots slots;
    const auto when = period(slots);
    const auto whose = holder(slots);
    Run run = db_.query(fmt::format("select sum(amount) as amount, count(eid), type from transactions where"
                                    " {} and {} and deleted = 0 and paid = 0 group by type",
                                    when, whose),
                        slots.values());
    while (run.next()) {
      const auto type = static_cast<int>(run.integer(2));
      if (!counts(type)) continue;
      part.amount += (comesInByType(type) ? 1 : out) * run.real(0);
      part.count += run.integer(1);
    }
    if (!run.ok()) return tl::make_unexpected(db_.refusal());
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
  const Figure figure(root, *db, query);
  const ReadTransaction snapshot(*db);
  Explained explained;
  std::vector<std::pair<Explained::Part*, ExplainedPart>> parts;
  parts.emplace_back(&explained.rows, figure.walk([&](const ExplainedRow& row) {
    explained.moved += std::abs(row.amount);
    take(row);
  }));
  parts.emplace_back(&explained.reported, figure.reported());
  if (!query.pending) parts.emplace_back(&explained.pending, figure.pending());
  if (figure.isMember() && query.currency.empty()) {
    parts.emplace_back(&explained.refunds, figure.refunds());
  }
  if (query.paidFrom) parts.emplace_back(&explained.spread, figure.spread());
  if (!figure.isMember() && query.of.isBook() && query.transactionType == 1112) {
    parts.emplace_back(&explained.transfers, figure.transfers());
  }
  for (auto& [into, part] : parts) {
    if (!part) return tl::make_unexpected(part.error());
    *into = *part;
  }
  return explained;
}

}  // namespace moniva
