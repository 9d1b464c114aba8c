#pragma once

#include <array>
#include <optional>
#include <string_view>

#include "base/result.h"
#include "model/transaction_type.h"

namespace moniva {

/// How often a series makes a record.
enum class RepeatRule { daily, weekly, biweekly, monthly, bimonthly, quarterly, halfYearly, yearly };

/// The rules as the store names them, in the order of `RepeatRule`.
inline constexpr std::array<std::string_view, 8> kRepeatRules = {
    "Daily", "Weekly", "Biweekly", "Monthly", "Bimonthly", "Quarterly", "Half-yearly", "Yearly"};

/// The rule of that name; nothing for "Not Repeat", for a blank text and for one that is no rule.
std::optional<RepeatRule> repeatRuleFrom(std::string_view text);
std::string_view textOf(RepeatRule rule);

/// Refused: a text that is neither a rule nor "Not Repeat".
Result<> checkRepeatRule(std::string_view rule);

}  // namespace moniva
