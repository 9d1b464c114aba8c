#include "reports/vendor_report.h"

#include "model/transaction_type.h"

namespace moniva {
namespace {

constexpr std::string_view kVendorReport = "MonivaAccount(VendorReport)";

/// The rows of one vendor, or of none; for the key there is a slot.
std::string_view vendorCondition(const Vendor& vendor) {
  return vendor.isNoVendor() ? "(vendor = ? or vendor = 'NoPayee' or vendor = 'NoPayer' or vendor = '' or"
                               " vendor is NULL)"
                             : "vendor = ?";
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
