#include "currency/rate_services.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>

#include "currency/rate_table.h"
#include "platform/http_client.h"

namespace moniva {
namespace {

constexpr std::string_view kSecure = "https://";
constexpr std::string_view kPlain = "http://";

std::string setting(const UserDefaults& defaults, std::string_view key, std::string_view usual) {
  return defaults.stringForKey(key).value_or(std::string(usual));
}

/// The address with a path after it, whether or not it ends in a slash; "" for "".
std::string joined(std::string_view address, std::string_view path) {
  while (address.ends_with('/')) address.remove_suffix(1);
  return address.empty() ? std::string() : fmt::format("{}{}", address, path);
}

/// What stands between the scheme and the path: "api.example.org:8080".
std::string_view authorityOf(std::string_view address) {
  const auto begin = address.find("://");
  if (begin == std::string_view::npos) return {};
  address.remove_prefix(begin + 3);
  return address.substr(0, address.find_first_of("/?#"));
}

/// The authority without its port.
std::string_view withoutPort(std::string_view authority) {
  if (authority.starts_with('[')) return authority.substr(0, authority.find(']') + 1);
  return authority.substr(0, authority.find(':'));
}

/// Whether what stands behind the host is nothing, or a port there can be.
bool isPort(std::string_view text) {
  if (text.empty()) return true;
  unsigned port = 0;
  const char* const end = text.data() + text.size();
  const auto read = std::from_chars(text.data() + 1, end, port);
  return text[0] == ':' && read.ec == std::errc() && read.ptr == end && port >= 1 && port <= 65'535;
}

/// Whether the address begins with that scheme, in capitals or not.
bool hasScheme(std::string_view address, std::string_view scheme) {
  const auto isSame = [](char c, char small) {
    return c == small || (c >= 'A' && c <= 'Z' && c - 'A' + 'a' == small);
  };
  return address.size() >= scheme.size() && std::equal(scheme.begin(), scheme.end(), address.begin(),
                                                       [&](char small, char c) { return isSame(c, small); });
}

}  // namespace

RateServices RateServices::of(const UserDefaults& defaults) {
  return {.primary = setting(defaults, kPrimaryKey, kUsualPrimary),
          .secondary = setting(defaults, kSecondaryKey, kUsualSecondary)};
}

Result<> RateServices::check(const std::string& address) {
  if (address.empty()) return {};
  const auto isWritable = [](char c) { return c > ' ' && c < '\x7F'; };
  const std::string_view authority = authorityOf(address);
  const std::string_view host = withoutPort(authority);
  if (host.empty() || !std::all_of(address.begin(), address.end(), isWritable))
    return refuse("'{}' is no address of a service; one looks like 'https://rates.example.org'", address);
  if (authority.find('@') != std::string_view::npos)
    return refuse("'{}' names a user; services are asked without one", address);
  if (address.find_first_of("?#") != std::string::npos)
    return refuse(
        "'{}' has a '?' or '#' in it; an address ends with a path, and what is asked for is added to it",
        address);
  if (!isPort(authority.substr(host.size())))
    return refuse("'{}' has a port that cannot be; ports go from 1 to 65535", address);
  if (!hasScheme(address, kSecure) && !(hasScheme(address, kPlain) && isThisMachine(host)))
    return refuse("'{}' does not begin with https://", address);
  return {};
}

std::string RateServices::tableUrl() const {
  return pairUrl(kBaseCurrency);
}

std::string RateServices::pairUrl(std::string_view code) const {
  return joined(primary, fmt::format("/v4/latest/{}", code));
}

std::string RateServices::secondTableUrl() const {
  return joined(secondary, fmt::format("/latest?base={}", kBaseCurrency));
}

std::string RateServices::hostOf(std::string_view url) {
  return std::string(withoutPort(authorityOf(url)));
}

}  // namespace moniva
