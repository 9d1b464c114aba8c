#include "ui/cli/commands/breakdown_member.h"

#include <algorithm>

#include "model/transaction_type.h"
#include "reports/category_report.h"
#include "reports/category_report_query.h"
#include "reports/currency_report.h"
#include "reports/payment_report.h"
#include "reports/vendor_report.h"
#include "ui/cli/categories.h"
#include "ui/cli/command_error.h"
#include "ui/cli/entry_options.h"
#include "ui/cli/rates.h"
#include "ui/cli/records.h"

namespace moniva {
namespace {

/// In a breakdown by subcategory a top-level category stands for the items that chose none below it.
MVCategory meantBy(const BreakdownAsked& asked, MVCategory category) {
  if (asked.by == BreakdownBy::subcategory && !category.isSubCate()) category.parent = category.pk;
  return category;
}

}  // namespace

TransReportSummary breakdownOf(const BreakdownAsked& asked) {
  const auto& [of, by, type, period, pending] = asked;
  switch (by) {
    case BreakdownBy::category:
      return done(getSubCategoryReportFor(MVCategory::rootCateForType(of.root(), type), of, period.first,
                                          period.last, pending));
    case BreakdownBy::subcategory: {
      CategoryReportQuery query(of);
      query.beginDate = period.first;
      query.endDate = period.last;
      query.transactionType = type;
      query.includePending = pending;
      return done(query.reportForAllSubCategory());
    }
    case BreakdownBy::vendor:
      return done(getReportForAllVendor(of, type, period.first, period.last, pending));
    case BreakdownBy::account:
      return done(getReportForPaymentAccount(of, type, period.first, period.last, pending));
    case BreakdownBy::currency:
      break;
  }
  return done(getReportForAllCurrency(of, type, period.first, period.last, pending));
}

std::string memberKey(const TransReportSummary& row) {
  if (row.category) return row.category->pk;
  if (row.vendor) return row.vendor->pk;
  return row.paymentAccount ? row.paymentAccount->pk : row.currency;
}

TransReportSummary memberNamed(Session& session, const BreakdownAsked& asked, const TransReportSummary& list,
                               const std::string& name) {
  const auto isMeant = [&](const TransReportSummary& row) {
    const bool isNone = (row.vendor && row.vendor->isNoVendor()) ||
                        (row.paymentAccount && MonivaAccount::isNoneAccount(row.paymentAccount->pk));
    return row.title == name || memberKey(row) == name || (isNone && name == "none");
  };
  const auto& rows = list.listArray;
  if (std::ranges::count_if(rows, isMeant) == 1) return *std::ranges::find_if(rows, isMeant);
  TransReportSummary member;
  member.transactionType = asked.type;
  switch (asked.by) {
    case BreakdownBy::category:
    case BreakdownBy::subcategory:
      member.category = categoryTyped(session, name, asked.type);
      member.title = member.category->cateString();
      break;
    case BreakdownBy::vendor:
      member.vendor = name == "none" || Vendor::isNoVendorTitle(session.root(), name)
                          ? Vendor::noVendor(session.root(), asked.type)
                          : vendorNamed(session, name, asked.type == kind::kIncome);
      member.title = member.vendor->title;
      break;
    case BreakdownBy::account:
      member.paymentAccount = std::make_shared<const MonivaAccount>(accountNamed(session, name));
      member.title = member.paymentAccount->title;
      break;
    case BreakdownBy::currency:
      member.currency = member.title = currencyCodeTyped(session, name);
      break;
  }
  return member;
}

TransReportSummary periodsOfMember(const BreakdownAsked& asked, const TransReportSummary& member,
                                   PeriodUnit unit, bool includeEmpty) {
  const PeriodRange range{unit, asked.period.first, asked.period.last, includeEmpty, asked.pending};
  if (member.category) return done(reportForCategory(asked.of, meantBy(asked, *member.category), range));
  if (member.vendor) return done(reportForVendor(asked.of, *member.vendor, asked.type, range));
  if (!member.currency.empty()) return done(reportForCurrency(asked.of, member.currency, asked.type, range));
  std::optional<MonivaAccount> payer;
  if (member.paymentAccount) payer = *member.paymentAccount;
  return done(reportForPayment(asked.of, payer, asked.type, range));
}

std::vector<std::string> recordsOfMember(const BreakdownAsked& asked, const TransReportSummary& member) {
  const auto& [of, by, type, period, pending] = asked;
  const ListForm form{true, pending};
  if (member.category)
    return done(transactionListOfCate(of, meantBy(asked, *member.category), period.first, period.last, form));
  if (member.vendor)
    return done(getSpendListOfVendor(of, *member.vendor, type, period.first, period.last, form));
  if (!member.currency.empty())
    return done(getSpendListOfCurrency(of, member.currency, type, period.first, period.last, form));
  return done(getSpendListOfPayment(of, *member.paymentAccount, type, period.first, period.last, form));
}

}  // namespace moniva
