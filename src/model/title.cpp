#include "model/title.h"

#include <unicode/utf8.h>

#include "base/text.h"

namespace moniva {

Result<> checkTitle(std::string_view title, const Phrase& what) {
  if (trimBlanks(title).empty()) return refuse("{} needs a title", what);
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(title.data());
  const auto size = static_cast<std::int32_t>(title.size());
  for (std::int32_t at = 0; at < size;) {
    UChar32 character = 0;
    U8_NEXT(bytes, at, size, character);
    if (character < 0) return refuse("the title of {} is not UTF-8", what);
  }
  if (const auto count = characterCount(title); count > kLongestTitle) {
    return refuse("the title '{}' has {} characters; {} are the most", excerpt(title), count, kLongestTitle);
  }
  return {};
}

}  // namespace moniva
