#include "ui/cli/csv_out.h"

#include <boost/json.hpp>

#include "exchange/csv_writer.h"
#include "ui/cli/json_out.h"

namespace moniva {
namespace {

namespace json = boost::json;

using Fields = std::vector<std::pair<std::string, std::string>>;

void flatten(const json::object& object, const std::string& prefix, Fields& fields) {
  for (const auto& [name, value] : object) {
    const std::string path = prefix + std::string(name);
    if (value.is_object()) {
      flatten(value.get_object(), path + ".", fields);
    } else if (value.is_string()) {
      fields.emplace_back(path, std::string(value.get_string()));
    } else if (value.is_null()) {
      fields.emplace_back(path, "");
    } else if (!value.is_array()) {
      fields.emplace_back(path, jsonText(value, JsonLayout::compact));
    }
  }
}

}  // namespace

void addCsv(CLI::App& command, bool& csv) {
  command.add_flag("--csv", csv, "Print the rows as comma-separated values");
}

void printCsv(Session& session, const json::array& rows) {
  std::vector<std::string> names;
  std::map<std::string, std::size_t> columns;
  std::vector<Fields> flat;
  for (const auto& row : rows) {
    flatten(row.as_object(), "", flat.emplace_back());
    for (const auto& [name, value] : flat.back()) {
      if (columns.emplace(name, names.size()).second) names.push_back(name);
    }
  }
  if (names.empty()) return;
  session.out() << csvLine(names);
  for (const auto& fields : flat) {
    std::vector<std::string> line(names.size());
    for (const auto& [name, value] : fields) line[columns.at(name)] = value;
    session.out() << csvLine(line);
  }
}

}  // namespace moniva
