#pragma once

#include <stdexcept>
#include <string>

#include "base/result.h"

namespace moniva {

/// Ends a command; thrown and caught within the command line only.
class CommandError : public std::runtime_error {
 public:
  static constexpr int kRefused = 1;
  static constexpr int kUsage = 2;
  static constexpr int kInterrupted = 130;  ///< what a shell says of a program that Ctrl-C ended

  CommandError(int exitCode, const std::string& why) : std::runtime_error(why), exitCode_(exitCode) {}
  CommandError(int exitCode, const Refusal& refusal)
      : std::runtime_error(refusal.why), exitCode_(exitCode), phrase_(refusal.phrase) {}
  int exitCode() const { return exitCode_; }
  /// The sentence in the person's language.
  std::string in(const Translate& translate) const { return phrase_ ? phrase_->in(translate) : what(); }

 private:
  int exitCode_;
  std::shared_ptr<const Phrase> phrase_;
};

/// Something that was understood could not be done: `throw refused("there is no data file '{}'", path);`
template <class... Arguments>
CommandError refused(fmt::format_string<Arguments...> text, Arguments&&... arguments) {
  return {CommandError::kRefused, Refusal(phrase(text, std::forward<Arguments>(arguments)...))};
}

/// Something typed could not be understood.
template <class... Arguments>
CommandError notUnderstood(fmt::format_string<Arguments...> text, Arguments&&... arguments) {
  return {CommandError::kUsage, Refusal(phrase(text, std::forward<Arguments>(arguments)...))};
}

/// The value, or the end of the command: something that was understood could not be done.
template <class T>
T done(Result<T>&& result) {
  if (!result) throw CommandError(CommandError::kRefused, result.error());
  if constexpr (!std::is_void_v<T>) return std::move(*result);
}

/// The value of something typed, or the end of the command: it could not be understood.
template <class T>
T typed(Result<T>&& result) {
  if (!result) throw CommandError(CommandError::kUsage, result.error());
  if constexpr (!std::is_void_v<T>) return std::move(*result);
}

}  // namespace moniva
