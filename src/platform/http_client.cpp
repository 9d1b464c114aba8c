#include "platform/http_client.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace moniva {

bool isThisMachine(std::string_view host) {
  constexpr std::string_view kName = "localhost";
  const auto isSame = [](char a, char b) { return a == b || (a >= 'A' && a <= 'Z' && a - 'A' + 'a' == b); };
  if (std::equal(host.begin(), host.end(), kName.begin(), kName.end(), isSame) || host == "[::1]")
    return true;
  std::array<unsigned char, 4> numbers{};
  const char* at = host.data();
  const char* const end = at + host.size();
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    if (i > 0 && (at == end || *at++ != '.')) return false;
    const auto read = std::from_chars(at, end, numbers[i]);
    if (read.ec != std::errc()) return false;
    at = read.ptr;
  }
  return at == end && numbers[0] == 127;
}

}  // namespace moniva
