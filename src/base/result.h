#pragma once

#include <fmt/format.h>

#include <string>
#include <tl/expected.hpp>
#include <utility>

namespace moniva {

/// Why something that was asked for was not done, in one sentence for the person who asked. It names the
/// thing and, where there is one, the place (file, line, column).
struct Refusal {
  std::string why;
};

/// A value, or the reason there is none. Ordinary refusals travel this way; nothing is thrown between rooms.
template <class T = void>
using Result = tl::expected<T, Refusal>;

/// The failing half of a Result: `return refuse("'{}' is no date", text);`
template <class... Args>
tl::unexpected<Refusal> refuse(fmt::format_string<Args...> text, Args&&... args) {
  return tl::make_unexpected(Refusal{fmt::format(text, std::forward<Args>(args)...)});
}

}  // namespace moniva
