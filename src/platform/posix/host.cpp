#include "platform/posix/host.h"

#include <sys/ioctl.h>
#include <sys/random.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace moniva {

Date SystemClock::now() const {
  std::timespec time{};
  std::timespec_get(&time, TIME_UTC);
  return Date{static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9};
}

void SystemRandom::fill(std::span<std::uint8_t> bytes) {
  while (!bytes.empty()) {
    const ssize_t n = ::getrandom(bytes.data(), bytes.size(), 0);
    if (n > 0) bytes = bytes.subspan(static_cast<std::size_t>(n));
  }
}

std::optional<std::string> environment(const char* name) {
  const char* value = std::getenv(name);
  if (value == nullptr || *value == '\0') return std::nullopt;
  return std::string(value);
}

std::string systemZone() {
  const std::string marker = "zoneinfo/";
  if (auto zone = environment("TZ")) {
    if (zone->front() == ':') zone->erase(0, 1);
    if (const auto at = zone->find(marker); at != std::string::npos) zone->erase(0, at + marker.size());
    if (!zone->empty()) return *zone;
  }
  std::error_code error;
  const std::string link = std::filesystem::read_symlink("/etc/localtime", error).string();
  if (const auto at = link.find(marker); at != std::string::npos) return link.substr(at + marker.size());
  std::ifstream file("/etc/timezone");
  std::string line;
  if (std::getline(file, line) && !line.empty()) return line;
  return "UTC";
}

std::string systemLocale() {
  for (const char* name : {"LC_ALL", "LC_TIME", "LANG"}) {
    auto value = environment(name);
    if (!value) continue;
    // The portable locales name no language; a person who has only those gets the default.
    if (value->rfind("C", 0) == 0 && (value->size() == 1 || (*value)[1] == '.')) break;
    if (*value == "POSIX") break;
    return *value;
  }
  return "en_US";
}

bool isTerminal(int descriptor) {
  return ::isatty(descriptor) == 1;
}

int terminalWidth(int descriptor) {
  winsize size{};
  if (::ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
  return 80;
}

std::string programFolder() {
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self/exe", error).parent_path().string();
}

}  // namespace moniva
