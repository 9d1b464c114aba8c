#include "reports/vendor_report.h"

#include "model/record_names.h"
#include "model/transaction_type.h"
#include "storage/transaction.h"

namespace moniva {
namespace {

constexpr std::string_view kVendorReport = "MonivaAccount(VendorReport)";

/// What records name that is no vendor any more.
Vendor unnamedVendor(MVAppRoot& root, const std::string& key, int type) {
  Vendor vendor(root);
  vendor.type = Vendor::typeFor(type);
  vendor.pk = vendor.title = key;
  return vendor;
}

/// The rows of one vendor, or of none; for the key there is a slot.
std::string_view vendorCondition(const Vendor& vendor) {
  return vendor.isNoVendor() ? "(vendor = ? or vendor = 'NoPayee' or vendor = 'NoPayer' or vendor = '' or"
                               " vendor is NULL)"
                             : "vendor = ?";
}

Result<TransReportSummary> allVendors(Connection& db, const MonivaAccount& book, int type, Date from, Date to,
                                      bool includePending) {
  const Calendar& calendar = book.root().calendar();
  const ReadTransaction snapshot(db);
  // The plus leaves the index of the book out: that of vendors has the rows in groups.
  const auto sums = memberSums(
      db,
      fmt::format(
          "select sum(amount) as amount, vendor, count(eid) as eid_count from transactions where"
          " amount > 0 and ? <= datetime and datetime <= ? and {} and deleted = 0 and +type = ?{} group"
          " by vendor",
          accountQuerySQL(book), paidCondition(includePending)),
      {calendar.dateBegin(from), calendar.dateEnd(to), book.pk, type});
  if (!sums) return tl::make_unexpected(sums.error());

  Breakdown breakdown(db, book, type, from, to, sums->size());
  RecordNames names(book.root());
  std::vector<TransReportSummary>& rows = breakdown.rows();
  std::size_t none = sums->size();
  for (const MemberSum& sum : *sums) {
    const auto known = names.vendor(sum.key, type);
    const bool isNone = known && known->isNoVendor();
    // All keys that stand for no vendor add up in the first row of them.
    if (isNone && none < rows.size()) {
      const TransReportSummary& soFar = rows[none];
      putAmount(rows[none], type == kind::kIncome, soFar.incomeAmount + soFar.expenseAmount + sum.amount,
                soFar.count + sum.count);
      continue;
    }
    if (isNone) none = rows.size();
    TransReportSummary row = breakdown.emptyRow();
    row.vendor = known ? *known : unnamedVendor(book.root(), sum.key, type);
    row.unnamed = !known;
    row.title = row.vendor->title;
    putAmount(row, type == kind::kIncome, sum.amount, sum.count);
    rows.push_back(std::move(row));
  }
  return breakdown.take();
}

Result<TransReportSummary> vendorPeriods(Connection& db, const MonivaAccount& book, const Vendor& vendor,
                                         int type, const PeriodRange& range) {
  TransReportSummary member;
  member.vendor = vendor;
  member.transactionType = type;
  const PeriodQuery query = {
      fmt::format("select sum(amount) as totalAmount, count(eid) as eid_count from transactions where ? <= "
                  "datetime and datetime <= ? and {} and deleted = 0 and {} and type = ?{}",
                  accountQuerySQL(book), vendorCondition(vendor), paidCondition(range.includePending)),
      {book.pk, vendor.pk, type}};
  return walkPeriods(db, book, query, member, range);
}

void dispatchVendorPeriods(const MonivaAccount& book, const Vendor& vendor, const PeriodRange& range,
                           WalkCompletion completion) {
  reportInBackground<TransReportSummary>(
      book.root(), std::string(kVendorReport),
      [book, vendor, range](Connection& db) {
        return vendorPeriods(db, book, vendor, vendor.type == Vendor::kPayer ? kind::kIncome : kind::kExpense,
                             range);
      },
      std::move(completion));
}

}  // namespace

Result<TransReportSummary> getReportForAllVendor(const MonivaAccount& book, int type, Date fromDate,
                                                 Date toDate, bool includePending) {
  return reportNow<TransReportSummary>(book.root(), kVendorReport, [&](Connection& db) {
    return allVendors(db, book, type, fromDate, toDate, includePending);
  });
}

Result<std::vector<std::string>> getSpendListOfVendor(const MonivaAccount& book, const Vendor& vendor,
                                                      int type, Date from, Date toDate,
                                                      const ListForm& form) {
  const Calendar& calendar = book.root().calendar();
  return reportNow<std::vector<std::string>>(book.root(), kVendorReport, [&](Connection& db) {
    return keysOf(
        db,
        fmt::format("select eid from transactions where ? <= datetime and datetime <= ? and {} and {} and"
                    " deleted = 0 and type = ?{} order by datetime{}",
                    vendorCondition(vendor), accountQuerySQL(book), paidCondition(form.includePending),
                    form.order()),
        {calendar.dateBegin(from), calendar.dateEnd(toDate), vendor.pk, book.pk, type});
  });
}

Result<TransReportSummary> reportForVendor(const MonivaAccount& book, const Vendor& vendor, int type,
                                           const PeriodRange& range) {
  return reportNow<TransReportSummary>(book.root(), kVendorReport, [&](Connection& db) {
    return vendorPeriods(db, book, vendor, type, range);
  });
}

void getReportByMonthForVendor(const MonivaAccount& book, const Vendor& vendor, Date fromDate, Date toDate,
                               WalkCompletion completion) {
  dispatchVendorPeriods(book, vendor, {PeriodUnit::month, fromDate, toDate}, std::move(completion));
}

void getReportByYearForVendor(const MonivaAccount& book, const Vendor& vendor, Date fromDate, Date toDate,
                              WalkCompletion completion) {
  dispatchVendorPeriods(book, vendor, {PeriodUnit::year, fromDate, toDate}, std::move(completion));
}

}  // namespace moniva
