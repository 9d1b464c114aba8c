#include "model/repeat_rule.h"

#include <algorithm>

namespace moniva {

std::optional<RepeatRule> repeatRuleFrom(std::string_view text) {
  const auto* const found = std::find(kRepeatRules.begin(), kRepeatRules.end(), text);
  if (found == kRepeatRules.end()) return std::nullopt;
  return static_cast<RepeatRule>(found - kRepeatRules.begin());
}

std::string_view textOf(RepeatRule rule) {
  return kRepeatRules[static_cast<std::size_t>(rule)];
}

Result<> checkRepeatRule(std::string_view rule) {
  if (rule == kNotRepeat || repeatRuleFrom(rule)) return {};
  return refuse("'{}' is no rule of repeating", rule);
}

}  // namespace moniva
