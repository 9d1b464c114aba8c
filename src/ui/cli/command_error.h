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

  CommandError(int exitCode, const std::string& why) : std::runtime_error(why), exitCode_(exitCode) {}
  int exitCode() const { return exitCode_; }

 private:
  int exitCode_;
};

/// Something that was understood could not be done: `throw refused("there is no data file '{}'", path);`
template <class... Arguments>
CommandError refused(fmt::format_string<Arguments...> text, Arguments&&... arguments) {
  return {CommandError::kRefused, fmt::format(text, std::forward<Arguments>(arguments)...)};
}

/// Something typed could not be understood.
template <class... Arguments>
CommandError notUnderstood(fmt::format_string<Arguments...> text, Arguments&&... arguments) {
  return {CommandError::kUsage, fmt::format(text, std::forward<Arguments>(arguments)...)};
}

/// The value, or the end of the command: something that was understood could not be done.
template <class T>
T done(Result<T>&& result) {
  if (!result) throw CommandError(CommandError::kRefused, result.error().why);
  if constexpr (!std::is_void_v<T>) return std::move(*result);
}

/// The value of something typed, or the end of the command: it could not be understood.
template <class T>
T typed(Result<T>&& result) {
  if (!result) throw CommandError(CommandError::kUsage, result.error().why);
  if constexpr (!std::is_void_v<T>) return std::move(*result);
}

}  // namespace moniva
