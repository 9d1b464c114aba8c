#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "model/vendor.h"
#include "reports/transaction_report.h"

namespace moniva {

/// A figure of a report or a breakdown, of which the records are asked for.
struct ExplainQuery {
  /// The book or account, or a group of either.
  MonivaAccount of;
  // Whole days.
  Date from;
  Date to;
  /// As a report's: 1112, 1050 and 2312 for what is left of what came in; 11, 12, 23 and 33 for one figure.
  /// Members of a breakdown take 11 and 12.
  int transactionType = 1112;
  // A member of a breakdown instead of a whole report, one at most. A blank key stands for none.
  std::optional<MVCategory> category = {};
  std::optional<std::string> vendor = {};    ///< its key
  std::optional<std::string> paidFrom = {};  ///< the account's key
  std::string currency = {};                 ///< amounts are then in it
  /// Whether what is still to be paid counts too.
  bool pending = false;
};

/// A row that is part of the figure. Keys are as the row has them.
struct ExplainedRow {
  std::string eid;
  Date datetime;
  int type = 0;
  double amount = 0;  ///< what it adds to the figure: below zero for what it takes off
  std::string category;
  std::string subcategory;
  std::string vendor;
  std::string account;
  std::string book;
  std::string note;
  bool paid = true;
  int advancedType = 0;
};

/// What the rows of a figure come to, beside what the report or breakdown itself says.
struct Explained {
  struct Part {
    std::int64_t count = 0;
    double amount = 0;
  };

  Part rows;
  /// What all rows come to without their signs.
  double moved = 0;
  Part reported;
  // What is not in the figure though it is of that book or account and period.
  Part pending;    ///< still to be paid
  Part refunds;    ///< below zero, which breakdowns leave out
  Part spread;     ///< shares of spread costs, which those by account leave out
  Part transfers;  ///< between accounts, which are of no book

  /// Sums of doubles may differ by what the order of adding makes of them.
  bool agrees() const;
};

/// Hands the rows that make up the figure to `take` one by one, the oldest first, and asks the report's or
/// breakdown for the figure. `take` must not write. On the main thread, outside every transaction; refused
/// when the store cannot be read.
Result<Explained> explain(MVAppRoot& root, const ExplainQuery& query,
                          const std::function<void(const ExplainedRow&)>& take);

}  // namespace moniva
