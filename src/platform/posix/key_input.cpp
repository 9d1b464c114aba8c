#include "platform/posix/key_input.h"

#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>

namespace moniva {
namespace {

/// Milliseconds within which a terminal sends the rest of what it sends for a key.
constexpr int kRestOfKey = 25;
constexpr std::array kEndingSignals = {SIGHUP, SIGINT, SIGQUIT, SIGTERM};

// What the handler below needs; set while a terminal is switched.
volatile std::sig_atomic_t switchedDescriptor = -1;
termios settingsBefore;
std::array<void (*)(int), kEndingSignals.size()> handlersBefore;

extern "C" void switchBackAndEnd(int signal) {
  if (switchedDescriptor >= 0) ::tcsetattr(switchedDescriptor, TCSANOW, &settingsBefore);
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

/// Continuation bytes that follow a first byte of UTF-8.
int bytesAfter(unsigned char first) {
  if (first >= 0xF0) return 3;
  if (first >= 0xE0) return 2;
  return first >= 0xC0 ? 1 : 0;
}

}  // namespace

KeyInput::KeyInput(int descriptor, bool keyByKey) : descriptor_(descriptor) {
  if (!keyByKey || ::isatty(descriptor) != 1 || ::tcgetattr(descriptor, &settingsBefore) != 0) return;
  isKeyByKey_ = true;
  switchedDescriptor = descriptor;
  for (std::size_t i = 0; i < kEndingSignals.size(); ++i) {
    handlersBefore[i] = std::signal(kEndingSignals[i], switchBackAndEnd);
  }
  termios keys = settingsBefore;
  keys.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO | ISIG | IEXTEN);
  keys.c_iflag &= ~static_cast<tcflag_t>(IXON | ICRNL);
  keys.c_cc[VMIN] = 1;
  keys.c_cc[VTIME] = 0;
  ::tcsetattr(descriptor, TCSADRAIN, &keys);
}

KeyInput::~KeyInput() {
  if (!isKeyByKey_) return;
  ::tcsetattr(descriptor_, TCSADRAIN, &settingsBefore);
  for (std::size_t i = 0; i < kEndingSignals.size(); ++i) std::signal(kEndingSignals[i], handlersBefore[i]);
  switchedDescriptor = -1;
}

std::optional<char> KeyInput::byte() {
  if (at_ == read_.size()) {
    at_ = 0;
    read_.resize(4096);
    ssize_t count = 0;
    do {
      count = ::read(descriptor_, read_.data(), read_.size());
    } while (count < 0 && errno == EINTR);
    read_.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    if (count <= 0) return std::nullopt;
  }
  return read_[at_++];
}

bool KeyInput::hasMore() {
  if (at_ < read_.size()) return true;
  pollfd wanted{.fd = descriptor_, .events = POLLIN, .revents = 0};
  return ::poll(&wanted, 1, kRestOfKey) > 0 && (wanted.revents & POLLIN) != 0;
}

std::optional<std::string> KeyInput::next() {
  const auto first = byte();
  if (!first) return std::nullopt;
  std::string key(1, *first);
  if (isKeyByKey_ && *first == '\x1b') {
    // "\x1b[3~", "\x1bOP": up to a letter or '~'; anything else with Escape or Alt is two signs.
    while (hasMore()) {
      const auto further = byte();
      if (!further) break;
      key += *further;
      const bool isIntroducer = key.size() == 2 && (*further == '[' || *further == 'O');
      if (!isIntroducer && *further >= '@') break;
      if (key.size() == 2 && !isIntroducer) break;
    }
    return key;
  }
  for (int left = bytesAfter(static_cast<unsigned char>(*first)); left > 0; --left) {
    const auto further = byte();
    if (!further) break;
    if ((static_cast<unsigned char>(*further) & 0xC0) != 0x80) {
      --at_;
      break;
    }
    key += *further;
  }
  return key;
}

}  // namespace moniva
