#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace moniva {

/// Whether the texts differ in upper and lower case at most, in any script.
bool isSameWord(std::string_view one, std::string_view other);

/// The candidate that was probably meant by `wanted`, or nothing when none is near. Near means a slip of the
/// fingers for each three signs (a sign wrong, missing, added or two swapped), or a candidate that goes on
/// where `wanted` stops ("trans" for "transfer"). Upper and lower case do not matter in any script; of
/// equally near ones the first is taken.
std::optional<std::string> didYouMean(std::string_view wanted, std::span<const std::string> candidates);

}  // namespace moniva
