#include "ui/cli/commands/repeat_texts.h"

#include <algorithm>
#include <boost/json.hpp>

#include "model/repeat_rule.h"
#include "recurrence/series_view.h"
#include "ui/cli/command_error.h"
#include "ui/cli/commands/list_lines.h"
#include "ui/cli/did_you_mean.h"
#include "ui/cli/entry_options.h"
#include "ui/cli/records.h"
#include "ui/cli/text_width.h"
#include "ui/cli/transaction_rows.h"

namespace moniva {
namespace {

/// Rules are words of plain letters.
char plainLower(char sign) {
  return sign >= 'A' && sign <= 'Z' ? static_cast<char>(sign - 'A' + 'a') : sign;
}

}  // namespace

MVTransaction seriesTyped(Session& session, const std::string& text, std::string* eid) {
  const auto found = recordTyped(session, text);
  if (eid != nullptr) *eid = found;
  return done(seedOfSeries(session.root(), found));
}

std::string ruleTyped(const std::string& text) {
  const auto isIt = [&](std::string_view rule) {
    return std::ranges::equal(rule, text, {}, plainLower, plainLower);
  };
  if (const auto* const rule = std::ranges::find_if(kRepeatRules, isIt); rule != kRepeatRules.end()) {
    return std::string(*rule);
  }
  const std::vector<std::string> rules(kRepeatRules.begin(), kRepeatRules.end());
  if (const auto meant = didYouMean(text, rules)) {
    throw notUnderstood("'{}' is no rule of repeating; did you mean '{}'?", printable(text), *meant);
  }
  throw notUnderstood("'{}' is no rule of repeating; there are {}", printable(text),
                      fmt::format("{}", fmt::join(rules, ", ")));
}

std::string seriesText(Session& session, const MVTransaction& seed) {
  std::string text = whatText(session, seed);
  if (const auto with = withText(seed); !with.empty()) text += ", " + with;
  return fmt::format("{}, {}, {}", text, amountText(session, seed), ruleText(session, seed.repeat));
}

std::string repeatsText(Session& session, const std::string& seed) {
  if (seed.empty()) return {};
  const auto series = seedOfSeries(session.root(), seed);
  if (!series) return {};
  const auto rule = ruleText(session, series->repeat);
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
