#pragma once

#include <termios.h>

#include <optional>
#include <string>

namespace moniva {

/// What is typed, one key or sign at a time. Key by key, a terminal is switched, while this lives, to giving
/// each key at once and without showing it, those that would interrupt or end the program too; it is switched
/// back at the end, and before a signal ends the program. Anything else is read as text. One at a time.
class KeyInput {
 public:
  /// `keyByKey` asks for that where the descriptor is a terminal.
  KeyInput(int descriptor, bool keyByKey);
  ~KeyInput();
  KeyInput(const KeyInput&) = delete;
  KeyInput& operator=(const KeyInput&) = delete;

  /// Whether that is so.
  bool isKeyByKey() const { return isKeyByKey_; }
  /// A sign in UTF-8 (bytes that are none as they come), or all that a terminal sends for a key such as
  /// Delete ("\x1b[3~"). Nothing at the end.
  std::optional<std::string> next();

 private:
  std::optional<char> byte();
  /// Whether a byte is there, or comes at once.
  bool hasMore();

  int descriptor_;
  bool isKeyByKey_ = false;
  std::string read_;
  std::size_t at_ = 0;
};

}  // namespace moniva
