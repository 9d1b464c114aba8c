#pragma once

#include <fmt/format.h>

#include <string>
#include <string_view>

#include "base/text.h"
#include "ui/cli/command_error.h"
#include "ui/cli/text_width.h"

namespace moniva {

/// A note as typed, or the end of the command when it is no UTF-8: what is kept has to be readable on every
/// other device. `what` names it in the sentence, such as "the note".
inline const std::string& asTyped(const std::string& text, const Phrase& what) {
  if (wellFormedUtf8(text) == text) return text;
  throw notUnderstood("{} is not UTF-8: {}", what, printable(text));
}

/// A name: the same without the blanks around it, which nobody sees and which would make two of one name.
inline std::string wellFormed(const std::string& text, const Phrase& what) {
  return std::string(trimBlanks(asTyped(text, what)));
}

}  // namespace moniva
