#pragma once

#include <string>
#include <string_view>

namespace moniva {

/// The text with "%41" written as "A"; a percent sign that is followed by no two hexadecimal digits stays.
std::string percentDecoded(std::string_view text);

}  // namespace moniva
