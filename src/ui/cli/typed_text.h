#pragma once

#include <fmt/format.h>

#include <string>
#include <string_view>

#include "ui/cli/command_error.h"
#include "ui/cli/text_width.h"

namespace moniva {

/// A name or note as typed, or the end of the command when it is no UTF-8: what is kept has to be readable on
/// every other device. `what` names it in the sentence, such as "the note".
inline const std::string& wellFormed(const std::string& text, const Phrase& what) {
  if (wellFormedUtf8(text) == text) return text;
  throw notUnderstood("{} is not UTF-8: {}", what, printable(text));
}

}  // namespace moniva
