#include "platform/posix/host.h"

#include <sys/ioctl.h>
#include <sys/random.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <regex>
#include <system_error>

namespace moniva {
namespace {

/// The zone base keeps each zone with and without leap seconds under the same name; clocks here have none.
std::string withoutVariant(const std::string& name) {
  return name.starts_with("posix/") || name.starts_with("right/") ? name.substr(6) : name;
}

/// "/usr/share/zoneinfo/Europe/Berlin" is the file of Europe/Berlin.
std::optional<std::string> zoneOfPath(const std::string& path) {
  const std::string_view base = "zoneinfo/";
  const auto at = path.find(base);
  if (at == std::string::npos) return std::nullopt;
  return withoutVariant(path.substr(at + base.size()));
}

/// "JST-9" and "<+0530>-5:30": a zone without summer time written as its distance, which counts west of
/// Greenwich.
std::optional<std::string> fixedZone(const std::string& text) {
  static const std::regex form("(?:[A-Za-z]{3,}|<[A-Za-z0-9+-]{3,}>)([+-]?)([0-9]{1,2})(?::([0-5][0-9]))?");
  std::smatch part;
  if (!std::regex_match(text, part, form)) return std::nullopt;
  if (part[2].str().find_first_not_of('0') == std::string::npos && !part[3].matched) return "UTC";
  return "GMT" + std::string(part[1] == "-" ? "+" : "-") + part[2].str() + ":" +
         (part[3].matched ? part[3].str() : "00");
}

}  // namespace

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

std::optional<std::string> environmentZone() {
  const char* value = std::getenv("TZ");
  if (value == nullptr) return std::nullopt;
  const std::string zone = *value == ':' ? value + 1 : value;
  if (zone.empty()) return "UTC";
  if (zone == "/etc/localtime") return systemZone();
  if (zone.front() == '/') {
    if (const auto name = zoneOfPath(zone)) return name;
    std::error_code error;
    if (const auto name = zoneOfPath(std::filesystem::read_symlink(zone, error).string())) return name;
  }
  return fixedZone(zone).value_or(withoutVariant(zone));
}

std::string systemZone() {
  std::error_code error;
  if (const auto name = zoneOfPath(std::filesystem::read_symlink("/etc/localtime", error).string()))
    return *name;
  std::ifstream file("/etc/timezone");
  std::string line;
  if (std::getline(file, line) && !line.empty()) return line;
  return "UTC";
}

std::string systemLocale() {
  for (const char* name : {"LC_ALL", "LC_TIME", "LANG"}) {
    auto value = environment(name);
    if (!value) continue;
    // The portable locales name no language; a person who has only those gets English, of no country.
    if (value->rfind("C", 0) == 0 && (value->size() == 1 || (*value)[1] == '.')) break;
    if (*value == "POSIX") break;
    return *value;
  }
  return "en";
}

std::filesystem::path temporaryFolder() {
  return environment("TMPDIR").value_or("/tmp");
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
