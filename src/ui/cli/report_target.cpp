#include "ui/cli/report_target.h"

#include <charconv>

#include "calendar/date_texts.h"
#include "model/account_balance.h"
#include "model/account_dates.h"
#include "model/transaction_type.h"
#include "ui/cli/command_error.h"
#include "ui/cli/records.h"

namespace moniva {
namespace {

std::optional<int> number(std::string_view text) {
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

/// "2024" or "2024-03" by the labels of the user's calendar and the book's own starts; nothing for texts that
/// are neither.
std::optional<ParsedPeriod> labelTyped(const Session& session, const BookPeriods& periods,
                                       std::string_view text) {
  const bool isGregorian = session.calendar().days().isGregorian();
  const auto dash = std::min(text.find('-'), text.size());
  const auto year = number(text.substr(0, dash));
  // Other calendars have years of fewer digits: 6 of an era, 41 of sixty.
  if (!year || *year < 1 || dash > 4 || (isGregorian && dash != 4)) return std::nullopt;
  if (dash == text.size()) {
    const ParsedPeriod period{periods.firstDateOfFiscalYear(*year), periods.lastDateOfFiscalYear(*year)};
    // An era begins inside a year, sixty years end with the sixtieth: the label must lead back to itself.
    if (isGregorian || periods.getFiscalYear(period.last) == *year ||
        periods.getFiscalYear(period.first) == *year) {
      return period;
    }
    throw notUnderstood("'{}' is no period: your calendar has no year {} now", text, *year);
  }
  const auto month = number(text.substr(dash + 1));
  if (!month || text.size() - dash > 3) return std::nullopt;
  const Date first = periods.firstDateOfFiscalYear(*year, *month);
  if (periods.getFiscalMonth(first) == *month && periods.getYearForFiscalMonth(first) == *year) {
    return ParsedPeriod{first, periods.lastDateOfMonth(first)};
  }
  if (isGregorian) return std::nullopt;
  throw notUnderstood("'{}' is no period: the year {} of your calendar has no month {}", text, *year, *month);
}

}  // namespace

void HolderOptions::addTo(CLI::App& command) {
  command.add_option("-b,--book", book, "The book, or a group of books (else the current book)")
      ->type_name("NAME")
      ->check(notEmpty());
  command.add_option("-a,--account", account, "An account, or a group of them, instead of a book")
      ->type_name("NAME")
      ->check(notEmpty());
}

MonivaAccount HolderOptions::chosen(Session& session) const {
  if (!book.empty() && !account.empty()) {
    throw notUnderstood("a report is of a book or of an account, not of both");
  }
  return account.empty() ? bookNamed(session, book, Meant::groupsToo)
                         : accountNamed(session, account, Meant::groupsToo);
}

ParsedPeriod periodTyped(Session& session, const MonivaAccount& of, const std::string& text) {
  const BookPeriods periods(session.calendar(), of.periodStarts(), session.now());
  const auto one = [&](const std::string& part) {
    const auto label = labelTyped(session, periods, CLI::detail::trim_copy(part));
    return label ? *label : typed(parsePeriod(part, session.calendar(), session.now()));
  };
  const auto dots = text.find("..");
  const bool isRange = dots != std::string::npos && dots > 0 && dots + 2 < text.size() &&
                       text.find("..", dots + 2) == std::string::npos;
  if (!isRange) return one(text);
  const ParsedPeriod from = one(text.substr(0, dots));
  const ParsedPeriod to = one(text.substr(dots + 2));
  if (to.last < from.first) throw notUnderstood("'{}' ends before it begins", text);
  return {from.first, to.last};
}

ParsedPeriod usualPeriod(Session& session, const MonivaAccount& of, PeriodUnit unit) {
  const BookPeriods periods(session.calendar(), of.periodStarts(), session.now());
  switch (unit) {
    case PeriodUnit::year:
      return {periods.firstDateOfYear(done(getTheDateOfFirstTransaction(of)).value_or(session.now())),
              periods.lastDateOfYear(done(getTheDateOfLastTransaction(of)).value_or(session.now()))};
    case PeriodUnit::month:
    case PeriodUnit::week:
      return {periods.firstDateOfYear(), periods.lastDateOfYear()};
    case PeriodUnit::day:
      break;
  }
  return {periods.firstDateOfMonth(), periods.lastDateOfMonth()};
}

std::string periodText(Session& session, const ParsedPeriod& period) {
  return session.text("{} to {}", stringOfDateMediumStyle(session.calendar(), period.first),
                      stringOfDateMediumStyle(session.calendar(), period.last));
}

int wholeReportType(const MonivaAccount& of) {
  const int code = countedType(of);
  // What leaves a prepaid account by transfer is gone as well.
  return code == 2312 ? 1050 : code;
}

Ink incomeInk(Session& session) {
  return ink::hex(session.root().objectForKey("incomeAmountFontColor"));
}

Ink expenseInk(Session& session) {
  return ink::hex(session.root().objectForKey("expenseAmountFontColor"));
}

}  // namespace moniva
