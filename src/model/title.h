#pragma once

#include <string_view>

#include "base/result.h"

namespace moniva {

/// Characters a title may have at most: more than a name needs, and what every list can still show.
inline constexpr std::size_t kLongestTitle = 120;

/// Whether the text will do as the title of something new. Refused: a blank one, one of more than
/// `kLongestTitle` characters, one that is no UTF-8. `what` names the thing in the sentence: "a category".
Result<> checkTitle(std::string_view title, const Phrase& what);

}  // namespace moniva
