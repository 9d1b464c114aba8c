#include "ui/cli/month_typed.h"

#include <algorithm>
#include <charconv>

#include "model/entry_checks.h"
#include "ui/cli/record_texts.h"
#include "ui/cli/report_target.h"
#include "ui/cli/text_width.h"

namespace moniva {
namespace {

CommandError noMonth(const std::string& text) {
  return notUnderstood("'{}' is no month; a month is written like 2026-10", printable(text));
}

/// A whole number of digits alone.
std::optional<int> digitsTyped(std::string_view text) {
  int value = 0;
  const bool isNumber =
      !text.empty() && std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return isNumber && error == std::errc() ? std::optional(value) : std::nullopt;
}

/// The period typed; what is none is no month either.
ParsedPeriod periodOf(Session& session, const MonivaAccount& of, const std::string& text) {
  try {
    return periodTyped(session, of, text);
  } catch (const CommandError&) {
    throw noMonth(text);
  }
}

}  // namespace

std::optional<MonthTyped> monthLabelTyped(const Session& session, const std::string& text) {
  // Other calendars have years of fewer digits, and some have a thirteenth month.
  const bool isGregorian = session.calendar().days().isGregorian();
  const int months = isGregorian ? 12 : 13;
  const std::string label = CLI::detail::trim_copy(text);
  const auto cut = std::min(label.find_first_of("-/"), label.size());
  const auto year = digitsTyped(std::string_view(label).substr(0, cut));
  if (!year || cut > 4 || cut == label.size() || (isGregorian && cut != 4)) return std::nullopt;
  const auto month = digitsTyped(std::string_view(label).substr(cut + 1));
  if (!month || label.size() - cut > 3) return std::nullopt;
  if (*year < 1 || *month < 1 || *month > months) throw noMonth(text);
  return MonthTyped{*year, *month};
}

MonthTyped monthTyped(Session& session, const std::string& text) {
  if (const auto label = monthLabelTyped(session, text)) return *label;
  throw noMonth(text);
}

MonthTyped monthTypedOf(Session& session, const MonivaAccount& of, const std::string& text) {
  const Calendar& calendar = session.calendar();
  const BookPeriods periods(calendar, of.periodStarts(), session.now());
  if (const auto label = monthLabelTyped(session, text)) {
    done(checkRecordDate(calendar, periods.firstDateOfCalendarYear(label->year, label->month)));
    return *label;
  }
  const ParsedPeriod period = periodOf(session, of, text);
  if (!calendar.isSameDay(periods.firstDateOfMonth(period.first), period.first) ||
      !calendar.isSameDay(periods.lastDateOfMonth(period.first), period.last)) {
    throw noMonth(text);
  }
  return {periods.getYearForFiscalMonth(period.first), periods.getFiscalMonth(period.first)};
}

CommandError monthAhead(Session& session, const MonivaAccount& of, const std::string& name, Date begin) {
  return refused("{} lies ahead: for '{}' it begins on {}", name, printable(of.title),
                 shortDate(session, begin));
}

}  // namespace moniva
