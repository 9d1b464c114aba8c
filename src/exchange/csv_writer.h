#pragma once

#include <span>
#include <string>

namespace moniva {

/// A line of comma-separated values (RFC 4180), ended by CR LF. A field is quoted where it has to be: with a
/// separator, a quote, a line break, or a blank at either end. Other programs take a semicolon or a
/// tab between the fields.
std::string csvLine(std::span<const std::string> fields, char separator = ',');

}  // namespace moniva
