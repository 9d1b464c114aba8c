#include "ui/cli/commands/repeat_fields.h"

#include <boost/json.hpp>

#include "recurrence/series_view.h"
#include "recurrence/spend_repeat.h"
#include "ui/cli/command_error.h"
#include "ui/cli/command_line.h"
#include "ui/cli/commands/list_lines.h"
#include "ui/cli/commands/repeat_texts.h"
#include "ui/cli/entry_options.h"
#include "ui/cli/record_texts.h"
#include "ui/cli/records.h"

namespace moniva {

void addRepeatFields(CLI::App& command, RepeatFields& fields) {
  command
      .add_option("--repeat", fields.rule,
                  "How often it repeats: Daily, Weekly, Biweekly, Monthly, Bimonthly, Quarterly, Half-yearly "
                  "or Yearly")
      ->type_name("RULE")
      ->check(notEmpty());
  command.add_option("--until", fields.until, "The last day on which it repeats (else for good)")
      ->type_name("DATE")
      ->check(notEmpty());
}

bool fillRepeat(Session& session, const RepeatFields& fields, std::string& rule, Date& lastDay) {
  if (fields.rule.empty()) {
    if (fields.until.empty()) return false;
    throw notUnderstood("--until is the last day of what repeats; say with --repeat how often");
  }
  rule = ruleTyped(session, fields.rule);
  if (!fields.until.empty()) lastDay = boundTyped(session, fields.until, true);
  return true;
}

NewSeries::NewSeries(Session& session, const std::string& seed)
    : session_(session),
      seed_(done(seedOfSeries(session.root(), seed))),
      made_(static_cast<std::int64_t>(done(occurrencesOf(session.root(), seed)).size())) {}

std::string NewSeries::course() const {
  const auto rule = ruleText(session_, seed_.repeat);
  auto text = seed_.repeatEndDate == Date{}
                  ? session_.text("It repeats {}", rule)
                  : session_.text("It repeats {} until {}", rule, shortDate(session_, seed_.repeatEndDate));
  if (made_ > 1) {
    text = session_.text("{}; {}", text,
                         session_.count("{} more record, due since then, was added too",
                                        "{} more records, due since then, were added too", made_ - 1));
  }
  const auto next = seed_.deleted != 0 ? session_.text("it is over with that")
                                       : session_.text("next on {}", shortDate(session_, seed_.datetime));
  tellTwin();
  return " " + session_.text("{}; {}.", text, next);
}

bool NewSeries::hasTwin() const {
  return seed_.deleted == 0 && done(hasDuplicateRepeatSeed(seed_));
}

void NewSeries::tellTwin() const {
  if (hasTwin()) session_.say(session_.text("Another series says the same; see: moniva repeat list"));
}

void NewSeries::answerAhead() const {
  if (session_.options().json) {
    auto object = seriesJson(session_, seed_);
    addTo(object);
    return session_.printJson(object);
  }
  const auto begins = shortDate(session_, seed_.datetime);
  session_.answer(session_.text("Added a series: {}.", seriesText(session_, seed_)) + " " +
                  (seed_.repeatEndDate == Date{}
                       ? session_.text("Its first record comes on {}.", begins)
                       : session_.text("Its first record comes on {}, and it ends on {}.", begins,
                                       shortDate(session_, seed_.repeatEndDate))));
  tellTwin();
}

void NewSeries::addTo(boost::json::object& record) const {
  const auto dateOrNone = [&](bool isThere, Date date) {
    return isoDate(session_, isThere ? std::optional(date) : std::nullopt);
  };
  record["repeat"] = seed_.repeat;
  record["repeatSeed"] = seed_.eid;
  record["repeatEndDate"] = dateOrNone(seed_.repeatEndDate != Date{}, seed_.repeatEndDate);
  record["made"] = made_;
  record["hasDuplicate"] = hasTwin();
  record["next"] = dateOrNone(seed_.deleted == 0, seed_.datetime);
}

}  // namespace moniva
