#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace moniva {

/// `text` without the blanks around it: ASCII white space, the no-break, thin and other typographic spaces,
/// the ideographic space and a stray byte order mark. Everything between stays as it was typed.
std::string_view trimBlanks(std::string_view text);

/// `text` as a message quotes it: at most `most` characters (then "…"), control characters shown as blanks,
/// so that a sentence stays one line however long the cell was. Takes UTF-8 and never cuts a character.
std::string excerpt(std::string_view text, std::size_t most = 60);

/// The number of characters (code points) of valid UTF-8.
std::size_t characterCount(std::string_view text);

}  // namespace moniva
