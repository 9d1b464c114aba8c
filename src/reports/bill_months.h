#pragma once

#include "base/result.h"
#include "model/moniva_account.h"

namespace moniva {

/// A month of a credit account's bills, with the days on which it is paid back. All bounds are days.
struct BillMonth {
  int year = 0;
  int month = 0;
  Date begin;
  Date end;
  Date due;
  Date payoffBegin;  ///< above `payoffEnd` where two months are due on one day
  Date payoffEnd;
  // The same by number: the first and the last day, and the calendar month it is called after, by its first.
  std::int64_t first = 0;
  std::int64_t last = 0;
  std::int64_t name = 0;
};

/// The months of an account, such that each day is in one of them: that which it is called after. Where
/// months begin on the 1st to the 28th, of whichever month, those are the book months; where they begin
/// later, the day after a short month begins the next one. What is paid back counts for the month that is due
/// next, so that each day is in one of those stretches too.
class BillMonths {
 public:
  explicit BillMonths(const MonivaAccount& account);

  /// Refused when the calendar has no such month.
  Result<BillMonth> called(int year, int month) const;
  BillMonth holding(Date date) const { return holdingDay(calendar_->dayNumber(date)); }
  BillMonth before(const BillMonth& month) const { return holdingDay(month.first - 1); }
  BillMonth after(const BillMonth& month) const;
  /// The month that a payment of that day counts for.
  BillMonth paidOn(Date date) const;

 private:
  struct Days {
    std::int64_t first;
    std::int64_t last;
    std::int64_t name;
  };
  std::int64_t nameOf(std::int64_t day) const;
  std::int64_t lastOf(std::int64_t day, std::int64_t name) const;
  Days daysAround(std::int64_t day) const;
  BillMonth holdingDay(std::int64_t day) const;
  std::int64_t dueAfter(std::int64_t last) const;
  BillMonth monthOf(const Days& days, std::int64_t dueBefore) const;
  /// The day, or the one before where the zone left it out.
  Date lastDay(std::int64_t day) const;

  const Calendar* calendar_;
  BookPeriods periods_;
};

}  // namespace moniva
