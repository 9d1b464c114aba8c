#pragma once

#include <concepts>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

#include "calendar/date.h"

namespace moniva {

/// An argument bound to a slot of a statement. Texts are viewed, not copied: a Value lives no longer than the
/// call it is an argument of. A date is bound as its seconds since 1970.
class Value {
 public:
  Value(std::nullptr_t) : held_(nullptr) {}  // NOLINT(google-explicit-constructor)
  template <std::integral T>
  Value(T number) : held_(static_cast<std::int64_t>(number)) {}      // NOLINT(google-explicit-constructor)
  Value(double number) : held_(number) {}                            // NOLINT(google-explicit-constructor)
  Value(Date date) : held_(date.secondsSince1970) {}                 // NOLINT(google-explicit-constructor)
  Value(std::string_view text) : held_(text) {}                      // NOLINT(google-explicit-constructor)
  Value(const std::string& text) : held_(std::string_view(text)) {}  // NOLINT(google-explicit-constructor)
  Value(const char* text) : held_(std::string_view(text)) {}         // NOLINT(google-explicit-constructor)

  using Held = std::variant<std::nullptr_t, std::int64_t, double, std::string_view>;
  const Held& held() const { return held_; }

 private:
  Held held_;
};

}  // namespace moniva
