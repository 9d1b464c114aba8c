#pragma once

#include <memory>
#include <string>
#include <tl/expected.hpp>
#include <utility>

#include "base/phrase.h"

namespace moniva {

/// Why something that was asked for was not done, in one sentence for the person who asked. It names the
/// thing and, where there is one, the place (file, line, column).
struct Refusal {
  /// Not for conversions: a refusal is made where something is refused.
  explicit Refusal(Phrase said)
      : why(said.english()), phrase(std::make_shared<const Phrase>(std::move(said))) {}

  std::string why;  ///< in English
  std::shared_ptr<const Phrase> phrase;
};

/// A value, or the reason there is none. Ordinary refusals travel this way; nothing is thrown between rooms.
template <class T = void>
using Result = tl::expected<T, Refusal>;

/// The failing half of a Result: `return refuse("'{}' is no date", text);`
template <class... Args>
tl::unexpected<Refusal> refuse(fmt::format_string<Args...> text, Args&&... args) {
  return tl::make_unexpected(Refusal(phrase(text, std::forward<Args>(args)...)));
}

}  // namespace moniva

template <>
struct fmt::formatter<moniva::Refusal> : fmt::formatter<std::string_view> {
  template <class Context>
  auto format(const moniva::Refusal& refusal, Context& context) const {
    return formatter<std::string_view>::format(refusal.why, context);
  }
};
