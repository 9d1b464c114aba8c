#pragma once

#include <fmt/format.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace moniva {

/// Gives the translation of an English text of the program; the text itself where there is none.
using Translate = std::function<std::string(std::string_view english)>;

/// A text of the program that keeps the form it was made from and what is filled in, so that whoever shows it
/// can say it in the person's language. A part that is itself a Phrase is translated with it.
class Phrase {
 public:
  using Part = std::variant<std::int64_t, std::uint64_t, double, std::string, std::shared_ptr<const Phrase>>;

  /// A text without slots, such as the name of a thing: "a category". It has to be a literal.
  Phrase(const char* text) : english_(text), form_(text) {}  // NOLINT(google-explicit-constructor)
  /// Of a form that is a literal, and what it says in English.
  Phrase(std::string_view form, std::string english, std::vector<Part> parts = {})
      : english_(std::move(english)), form_(form), parts_(std::move(parts)) {}
  /// What somebody else said, such as the system; it stays as it is.
  static Phrase quoted(const std::string& text) { return {"{}", text, {text}}; }

  const std::string& english() const { return english_; }
  /// The text as `translate` has it; the English one when the slots of the translation are not sound.
  std::string in(const Translate& translate) const;

 private:
  std::string english_;
  std::string_view form_;  ///< of a literal
  std::vector<Part> parts_;
};

/// Marks a text that is translated where it is used, not where it stands.
consteval const char* toTranslate(const char* english) {
  return english;
}

/// A filled-in value as a phrase keeps it: numbers, phrases and refusals as what they are, all else as text.
template <class Argument>
Phrase::Part phrasePart(const Argument& argument) {
  if constexpr (std::is_same_v<Argument, Phrase>) {
    return std::make_shared<const Phrase>(argument);
  } else if constexpr (requires { argument.phrase; }) {
    if (argument.phrase) return argument.phrase;
    return argument.why;
  } else if constexpr (std::is_floating_point_v<Argument>) {
    return static_cast<double>(argument);
  } else if constexpr (std::is_integral_v<Argument> && sizeof(Argument) > 1) {
    if constexpr (std::is_signed_v<Argument>)
      return std::int64_t{argument};
    else
      return std::uint64_t{argument};
  } else {
    return fmt::format("{}", argument);
  }
}

/// A phrase of a form and what is filled into it: phrase("{} of {} rows", bad, all).
template <class... Arguments>
Phrase phrase(fmt::format_string<Arguments...> form, Arguments&&... arguments) {
  const fmt::string_view text = form;
  std::vector<Phrase::Part> parts;
  if constexpr (sizeof...(Arguments) > 0) {
    parts.reserve(sizeof...(Arguments));
    (parts.push_back(phrasePart(arguments)), ...);
  }
  return {std::string_view(text.data(), text.size()), fmt::vformat(text, fmt::make_format_args(arguments...)),
          std::move(parts)};
}

}  // namespace moniva

template <>
struct fmt::formatter<moniva::Phrase> : fmt::formatter<std::string_view> {
  template <class Context>
  auto format(const moniva::Phrase& phrase, Context& context) const {
    return formatter<std::string_view>::format(phrase.english(), context);
  }
};
