#include "exchange/text_file.h"

#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <system_error>

namespace moniva {
namespace {

constexpr std::size_t mostBytes = 1'000'000'000;

enum class Encoding { utf8, utf16Little, utf16Big };

struct Detected {
  Encoding encoding;
  std::size_t markSize;
};

/// Every second byte of UTF-16 text is zero for the separators, digits and line ends a table is full of; the
/// other bytes are so for a few characters only (U+4E00 for one). A zero byte alone is no sign of UTF-16: it
/// is a damaged file.
Detected detect(std::string_view bytes) {
  if (bytes.starts_with("\xEF\xBB\xBF")) return {Encoding::utf8, 3};
  if (bytes.starts_with("\xFF\xFE")) return {Encoding::utf16Little, 2};
  if (bytes.starts_with("\xFE\xFF")) return {Encoding::utf16Big, 2};
  const auto sample = bytes.substr(0, 1024);
  std::size_t zeros[2] = {0, 0};
  for (std::size_t i = 0; i < sample.size(); ++i) {
    if (sample[i] == '\0') ++zeros[i % 2];
  }
  const auto enough = std::max<std::size_t>(2, sample.size() / 32);
  if (zeros[1] >= enough && zeros[1] > 2 * zeros[0]) return {Encoding::utf16Little, 0};
  if (zeros[0] >= enough && zeros[0] > 2 * zeros[1]) return {Encoding::utf16Big, 0};
  return {Encoding::utf8, 0};
}

/// The offset of the first byte that is not part of valid UTF-8, or the size.
std::size_t validPrefix(std::string_view text) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  const auto size = text.size();
  std::size_t at = 0;
  while (at < size) {
    std::uint64_t eight = 0;
    while (at + sizeof eight <= size) {
      std::memcpy(&eight, bytes + at, sizeof eight);
      if ((eight & 0x8080808080808080U) != 0) break;
      at += sizeof eight;
    }
    if (at == size) break;
    const auto start = at;
    UChar32 character = 0;
    U8_NEXT(bytes, at, size, character);
    if (character < 0) return start;
  }
  return size;
}

Result<std::string> fromUtf16(std::string_view bytes, const Detected& detected, std::string_view name) {
  const auto unitAt = [&](std::size_t at) {
    const auto first = static_cast<std::uint8_t>(bytes[at]);
    const auto second = static_cast<std::uint8_t>(bytes[at + 1]);
    return detected.encoding == Encoding::utf16Little ? static_cast<char16_t>(second << 8 | first)
                                                      : static_cast<char16_t>(first << 8 | second);
  };
  std::string text;
  text.reserve(bytes.size());
  for (std::size_t at = detected.markSize; at < bytes.size(); at += 2) {
    const auto start = at;
    if (at + 1 == bytes.size())
      return refuse("{} is cut off: its last character is half a UTF-16 unit", name);
    auto character = static_cast<char32_t>(unitAt(at));
    if (U16_IS_SURROGATE_LEAD(character) && at + 3 < bytes.size() && U16_IS_TRAIL(unitAt(at + 2))) {
      at += 2;
      character = static_cast<char32_t>(U16_GET_SUPPLEMENTARY(character, unitAt(at)));
    }
    if (U16_IS_SURROGATE(character)) {
      return refuse("{}, line {}: byte {} starts half a character of UTF-16", name, lineAt(text, text.size()),
                    start);
    }
    std::uint8_t encoded[U8_MAX_LENGTH];
    std::size_t length = 0;
    U8_APPEND_UNSAFE(encoded, length, character);
    text.append(reinterpret_cast<const char*>(encoded), length);
  }
  return text;
}

std::string reasonFor(int error) {
  return std::generic_category().message(error);
}

}  // namespace

std::size_t lineAt(std::string_view text, std::size_t offset) {
  std::size_t line = 1;
  for (std::size_t i = 0; i < offset && i < text.size(); ++i) {
    const bool endOfPair = text[i] == '\n' && i > 0 && text[i - 1] == '\r';
    if ((text[i] == '\n' || text[i] == '\r') && !endOfPair) ++line;
  }
  return line;
}

Result<std::string> decodeText(std::string bytes, std::string_view name) {
  const auto detected = detect(bytes);
  if (detected.encoding == Encoding::utf8) {
    if (const auto valid = validPrefix(bytes); valid < bytes.size()) {
      return refuse("{}, line {}: byte {} starts no character of UTF-8; save the file as UTF-8 or UTF-16",
                    name, lineAt(bytes, valid), valid);
    }
    bytes.erase(0, detected.markSize);
  } else {
    auto text = fromUtf16(bytes, detected, name);
    if (!text) return text;
    bytes = std::move(*text);
  }
  if (bytes.empty()) return refuse("{} is empty", name);
  if (const auto nul = bytes.find('\0'); nul != std::string::npos) {
    return refuse("{}, line {}: there is a NUL character, which no text has", name, lineAt(bytes, nul));
  }
  return bytes;
}

Result<std::string> readTextFile(const std::filesystem::path& path) {
  const auto name = path.string();
  std::error_code error;
  if (std::filesystem::is_directory(path, error)) return refuse("{} is a folder, not a file", name);
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), &std::fclose);
  if (!file) return refuse("{} cannot be opened: {}", name, reasonFor(errno));
  // A pipe has no size to ask for, so the size is only the first guess at the room needed.
  const auto known = std::filesystem::file_size(path, error);
  const auto tooLarge = [&] { return refuse("{} is larger than 1 GB", name); };
  if (!error && known > mostBytes) return tooLarge();
  std::string bytes;
  std::size_t used = 0;
  std::size_t room = error ? 1U << 16U : static_cast<std::size_t>(known) + 1;
  for (;;) {
    bytes.resize(used + room);
    used += std::fread(bytes.data() + used, 1, bytes.size() - used, file.get());
    if (std::ferror(file.get()) != 0) return refuse("{} cannot be read: {}", name, reasonFor(errno));
    if (used > mostBytes) return tooLarge();
    if (used < bytes.size()) break;
    room = used;
  }
  bytes.resize(used);
  return decodeText(std::move(bytes), name);
}

}  // namespace moniva
