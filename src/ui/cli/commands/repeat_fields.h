#pragma once

#include <CLI/App.hpp>
#include <boost/json/object.hpp>
#include <string>

#include "model/mv_transaction.h"
#include "ui/cli/session.h"

/// What the commands that enter records have in common where these repeat.
namespace moniva {

/// What is typed of how a new record repeats.
struct RepeatFields {
  std::string rule;
  std::string until;
};
void addRepeatFields(CLI::App& command, RepeatFields& fields);
/// Sets the rule and the last day typed; false where the record does not repeat. Ends the command for what is
/// no rule or no date, and for a last day without a rule.
bool fillRepeat(Session& session, const RepeatFields& fields, std::string& rule, Date& lastDay);

/// A series that was just entered, as the answer tells of it.
class NewSeries {
 public:
  NewSeries(Session& session, const std::string& seed);

  /// Whether its first day lies ahead, so that there is no record yet.
  bool liesAhead() const { return made_ == 0; }
  /// " It repeats monthly until Dec 31, 2027; 3 records are due and were added; next on Dec 1, 2026." Tells
  /// the person besides when another series says the same.
  std::string course() const;
  /// Ends the command for a series that lies ahead.
  void answerAhead() const;
  /// Adds what is known of the series to its first record.
  void addTo(boost::json::object& record) const;

 private:
  /// Whether another series says the same.
  bool hasTwin() const;
  void tellTwin() const;

  Session& session_;
  MVTransaction seed_;
  std::int64_t made_;
};

}  // namespace moniva
