#include "ui/cli/commands/repeat_texts.h"

#include <algorithm>
#include <boost/json.hpp>

#include "base/text.h"
#include "model/repeat_rule.h"
#include "recurrence/series_view.h"
#include "ui/cli/command_error.h"
#include "ui/cli/commands/list_lines.h"
#include "ui/cli/did_you_mean.h"
#include "ui/cli/entry_options.h"
#include "ui/cli/record_texts.h"
#include "ui/cli/records.h"
#include "ui/cli/text_width.h"
#include "ui/cli/transaction_rows.h"

namespace moniva {
MVTransaction seriesTyped(Session& session, const std::string& text, std::string* eid) {
  const auto found = recordTyped(session, text);
  if (eid != nullptr) *eid = found;
  return done(seedOfSeries(session.root(), found));
}

std::string ruleTyped(Session& session, const std::string& text) {
  const auto isIt = [&](std::string_view rule) {
    return isSameWord(rule, text) || isSameWord(ruleText(session, rule), text);
  };
  if (const auto* const rule = std::ranges::find_if(kRepeatRules, isIt); rule != kRepeatRules.end()) {
    return std::string(*rule);
  }
  std::vector<std::string> rules(kRepeatRules.begin(), kRepeatRules.end());
  std::vector<std::string> told;
  for (const auto rule : kRepeatRules) {
    auto word = ruleText(session, rule);
    told.push_back(isSameWord(word, rule) ? std::string(rule) : fmt::format("{} ({})", word, rule));
    rules.push_back(std::move(word));
  }
  if (const auto meant = didYouMean(text, rules)) {
    throw notUnderstood("'{}' is no rule of repeating; did you mean '{}'?", printable(text), *meant);
  }
  throw notUnderstood("'{}' is no rule of repeating; there are {}", printable(text),
                      fmt::format("{}", fmt::join(told, ", ")));
}

std::string shownRule(const Session& session, const std::string& rule) {
  if (auto text = ruleText(session, rule); !text.empty()) return text;
  return rule.empty() ? session.text("by no rule") : printable(excerpt(rule));
}

std::string currencyNotes(Session& session, const MVTransaction& row) {
  std::string notes;
  const auto currency = row.currency.empty() ? session.defaultCurrency() : row.currency;
  for (const auto& holder : {row.paymentAccount, row.bookAccount}) {
    if (!holder || holder->currency == currency) continue;
    notes += " " + session.text("'{}' is kept in {}; the amount counts there as it stands.",
                                printable(holder->title), holder->currency);
  }
  return notes;
}

std::string seriesText(Session& session, const MVTransaction& seed) {
  std::string text = excerpt(whatText(session, seed));
  if (const auto with = withText(seed); !with.empty()) text += ", " + excerpt(with);
  text += ", " + amountText(session, seed) + foreignText(session, seed.foreignAmount, seed.foreignCurrency);
  if (const auto rule = ruleText(session, seed.repeat); !rule.empty()) text += ", " + rule;
  return text;
}

std::string repeatsText(Session& session, const std::string& seed) {
  if (seed.empty()) return {};
  const auto series = seedOfSeries(session.root(), seed);
  if (!series) return {};
  const auto rule = shownRule(session, series->repeat);
  const auto eid = shortEid(series->eid);
  return series->deleted == 0 ? session.text("{}; see: moniva repeat show {}", rule, eid)
                              : session.text("{}, until it ended; see: moniva repeat show {}", rule, eid);
}

boost::json::object seriesJson(Session& session, const MVTransaction& seed) {
  auto object = jsonOf(session, seed);
  const auto dateOrNone = [&](Date date) {
    return isoDate(session, date == Date{} ? std::nullopt : std::optional(date));
  };
  object["repeat"] = seed.repeat;
  object["repeatBeginDate"] = dateOrNone(seed.repeatBeginDate);
  object["repeatEndDate"] = dateOrNone(seed.repeatEndDate);
  return object;
}

void changeOrTry(Session& session, bool isTrial, const std::function<void()>& work,
                 const std::function<void()>& answer) {
  if (!isTrial) {
    changeStore(session, work);
    return answer();
  }
  tryStore(session, work, answer);
  session.say(session.text("Nothing was written."));
}

}  // namespace moniva
