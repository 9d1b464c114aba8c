#pragma once

#include <boost/json/value.hpp>
#include <string>

namespace moniva {

/// How JSON is laid out: in one line without spaces, or a member a line, indented by two spaces.
enum class JsonLayout { compact, pretty };

/// JSON text for people and programs alike. Numbers are as short as reads back the same and written plainly
/// from 1e-6 up to 1e21 (12.5, 1180, 0.1), so that amounts look like amounts; -0 prints as 0, and what is not
/// finite, which JSON has no word for, as null. Members keep their order. Text stays UTF-8, with control
/// characters escaped and bytes that are no UTF-8 replaced by "\uFFFD". There is no line feed at the end.
std::string jsonText(const boost::json::value& value, JsonLayout layout);

/// The number as jsonText prints it.
std::string jsonNumber(double number);

}  // namespace moniva
