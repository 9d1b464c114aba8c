#include "ui/cli/commands/report_source.h"

#include "model/transaction_type.h"
#include "reports/currency_report.h"
#include "reports/vendor_report.h"
#include "ui/cli/categories.h"
#include "ui/cli/command_error.h"
#include "ui/cli/entry_options.h"
#include "ui/cli/rates.h"
#include "ui/cli/records.h"
#include "ui/cli/stop_on_interrupt.h"

namespace moniva {
namespace {

const std::map<std::string, int> kReportTypes = {{"income", kind::kIncome},
                                                 {"expense", kind::kExpense},
                                                 {"transfers", 2333},
                                                 {"transfers-in", kind::kTransferIn},
                                                 {"transfers-out", kind::kTransferOut}};

int typeTyped(const MonivaAccount& of, const std::string& word) {
  if (word == "all") return wholeReportType(of);
  if (of.isBook() && word.starts_with("transfers")) {
    throw refused("'{}' is a book and has no transfers; name an account with --account", of.title);
  }
  return kReportTypes.at(word);
}

}  // namespace

MVCategory reportCategory(Session& session, const std::string& name, const std::string& type) {
  const int first = type == "income" ? kind::kIncome : kind::kExpense;
  try {
    return categoryTyped(session, name, first);
  } catch (const CommandError&) {
    std::optional<MVCategory> other;
    try {
      other = categoryTyped(session, name, first == kind::kIncome ? kind::kExpense : kind::kIncome);
    } catch (const CommandError&) {
    }
    if (!other) throw;
    if (type == "all") return *other;
    throw type == "income" ? refused("'{}' is a category of expenses", name)
                           : refused("'{}' is a category of income", name);
  }
}

ReportSource::ReportSource(Session& session, const MonivaAccount& of, const ReportOptions& options)
    : session_(session), of_(of), report_(session.root()), currency_(options.currency) {
  const bool isOfOne = !options.category.empty() || !options.vendor.empty() || !currency_.empty();
  if (isOfOne && options.type.starts_with("transfers")) {
    throw notUnderstood("transfers have no category, no vendor and no foreign money");
  }
  if (!options.category.empty() + !options.vendor.empty() + !currency_.empty() > 1) {
    throw notUnderstood("say one of --category, --vendor and --currency");
  }
  report_.setMonivaAccount(of);
  report_.setTransactionType(typeTyped(of, options.type));
  report_.setIncludePending(options.pending);
  if (!options.category.empty()) report_.setCategory(reportCategory(session, options.category, options.type));
  if (!currency_.empty()) currencyCodeTyped(session, currency_);
  if (!options.vendor.empty()) {
    const bool isIncome = options.type == "income";
    vendor_ = options.vendor == "none" || Vendor::isNoVendorTitle(session.root(), options.vendor)
                  ? Vendor::noVendor(session.root(), isIncome ? kind::kIncome : kind::kExpense)
                  : vendorNamed(session, options.vendor, isIncome);
  }
  if (!isOfMember()) return;
  if (options.pending) throw notUnderstood("--pending goes with neither --vendor nor --currency");
  if (options.type == "all") {
    report_.setTransactionType(vendor_ && vendor_->type == Vendor::kPayer ? kind::kIncome : kind::kExpense);
  }
}

TransReportSummary ReportSource::list(PeriodUnit unit, const ParsedPeriod& period, bool withEmpty) {
  const StopOnInterrupt stop;
  const auto* flag = &StopOnInterrupt::flag();
  if (isOfMember()) return listOfMember(unit, {period.first, period.last}, withEmpty, flag);
  report_.setStopFlag(flag);
  report_.setBeginDate(period.first);
  report_.setEndDate(period.last);
  report_.setIncludeEmpty(withEmpty);
  return done(report_.reportBy(unit));
}

TransReportSummary ReportSource::listOfMember(PeriodUnit unit, const PeriodWalk::Period& period,
                                              bool withEmpty, const std::atomic<bool>* stop) {
  const PeriodRange range{unit, period.begin, period.end, withEmpty, false, stop};
  return done(vendor_ ? reportForVendor(of_, *vendor_, report_.transactionType(), range)
                      : reportForCurrency(of_, currency_, report_.transactionType(), range));
}

TransReportSummary ReportSource::day(Date date) {
  return done(report_.dailySummary(date));
}

std::vector<TransReportSummary> ReportSource::comparedWith(PeriodUnit unit, const TransReportSummary& list,
                                                           ComparedWith with) {
  const BookPeriods periods(session_.calendar(), of_.periodStarts(), session_.now());
  std::vector<PeriodWalk::Period> others;
  for (const auto& period : list.listArray) {
    others.push_back(
        periodComparedWith(session_.calendar(), periods, unit, {period.beginDate, period.endDate}, with));
  }
  std::vector<TransReportSummary> found;
  if (isOfMember()) {
    for (const auto& other : others)
      found.push_back(listOfMember(unit, other, true, nullptr).listArray.at(0));
  } else {
    found = done(report_.summariesOf(others));
  }
  for (auto& summary : found) {
    PeriodWalk(session_.calendar(), periods, unit, summary.beginDate, summary.endDate).name(summary);
  }
  return found;
}

}  // namespace moniva
