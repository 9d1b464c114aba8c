// What the calendar costs beside plain ICU, as the ratio of both in the same run.

#include <benchmark/benchmark.h>
#include <unicode/gregocal.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "calendar/book_periods.h"
#include "calendar/date_texts.h"
#include "side_by_side.h"

namespace moniva {
namespace {

constexpr const char* kZone = "Europe/Berlin";
constexpr int kMonthStartsOn = 25;

/// A thousand dates over forty years, each at noon UTC: what a report of a large book goes through.
std::vector<Date> someDates() {
  std::vector<Date> dates;
  for (int i = 0; i < 1000; ++i) dates.push_back({946'728'000.0 + (i * 7919 % 14600) * 86'400.0});
  return dates;
}

/// The same operations as calls of ICU.
class PlainIcu {
 public:
  PlainIcu() : icu_(icu::TimeZone::createTimeZone(kZone), status_) {}

  double dayStart(double seconds) {
    icu_.setTime(seconds * 1000, status_);
    for (const auto field : {UCAL_HOUR_OF_DAY, UCAL_MINUTE, UCAL_SECOND, UCAL_MILLISECOND})
      icu_.set(field, 0);
    return icu_.getTime(status_) / 1000;
  }
  double nextMonth(double seconds) {
    icu_.setTime(seconds * 1000, status_);
    icu_.add(UCAL_MONTH, 1, status_);
    return icu_.getTime(status_) / 1000;
  }
  double bookMonth(double seconds) {
    const double day = dayStart(seconds);
    icu_.set(UCAL_DATE, kMonthStartsOn);
    if (icu_.getTime(status_) / 1000 > day) icu_.add(UCAL_MONTH, -1, status_);
    return icu_.getTime(status_) / 1000;
  }

 private:
  UErrorCode status_ = U_ZERO_ERROR;
  icu::GregorianCalendar icu_;
};

template <class Ours, class Theirs>
void compare(benchmark::State& state, const Ours& ours, const Theirs& theirs) {
  const std::vector<Date> dates = someDates();
  for (const Date date : dates) {
    if (ours(date) == theirs(date)) continue;
    state.SkipWithError("the results differ");
    return;
  }
  const auto each = [&dates](const auto& work) {
    return [&dates, &work] {
      for (const Date date : dates) benchmark::DoNotOptimize(work(date));
    };
  };
  bench::sideBySide(state, static_cast<std::int64_t>(dates.size()), each(ours), each(theirs));
}

std::shared_ptr<const Calendar> berlin() {
  return Calendar::make(kZone, "de_DE").value();
}

void dayStart(benchmark::State& state) {
  const auto calendar = berlin();
  PlainIcu icu;
  compare(
      state, [&](Date date) { return calendar->dateBegin(date).secondsSince1970; },
      [&](Date date) { return icu.dayStart(date.secondsSince1970); });
}
BENCHMARK(dayStart)->UseManualTime();

void monthStep(benchmark::State& state) {
  const auto calendar = berlin();
  PlainIcu icu;
  compare(
      state, [&](Date date) { return calendar->dateWithMonth(date, 1).secondsSince1970; },
      [&](Date date) { return icu.nextMonth(date.secondsSince1970); });
}
BENCHMARK(monthStep)->UseManualTime();

void bookMonth(benchmark::State& state) {
  const auto calendar = berlin();
  const BookPeriods book(*calendar, {.monthStartsOn = kMonthStartsOn}, {});
  PlainIcu icu;
  compare(
      state, [&](Date date) { return book.firstDateOfMonth(date).secondsSince1970; },
      [&](Date date) { return icu.bookMonth(date.secondsSince1970); });
}
BENCHMARK(bookMonth)->UseManualTime();

/// What every start of the program pays: a calendar and its first day.
void makeCalendar(benchmark::State& state) {
  for (auto round : state) {
    static_cast<void>(round);
    benchmark::DoNotOptimize(berlin()->dateBegin({1.7e9}));
  }
}
BENCHMARK(makeCalendar);

}  // namespace
}  // namespace moniva
