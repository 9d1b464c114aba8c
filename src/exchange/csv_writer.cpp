#include "exchange/csv_writer.h"

#include <csv.h>

#include <string_view>

namespace moniva {
namespace {

bool needsQuotes(std::string_view field, char separator) {
  return field.find_first_of("\"\r\n") != std::string_view::npos || field.find(separator) != field.npos ||
         field.starts_with(' ') || field.ends_with(' ') || field.starts_with('\t') || field.ends_with('\t');
}

}  // namespace

std::string csvLine(std::span<const std::string> fields, char separator) {
  std::string line;
  for (const auto& field : fields) {
    if (&field != fields.data()) line += separator;
    if (!needsQuotes(field, separator)) {
      line += field;
      continue;
    }
    const std::size_t start = line.size();
    line.resize(start + csv_write(nullptr, 0, field.data(), field.size()));
    csv_write(line.data() + start, line.size() - start, field.data(), field.size());
  }
  return line += "\r\n";
}

}  // namespace moniva
