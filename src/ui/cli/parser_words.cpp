#include "ui/cli/parser_words.h"

#include <fmt/ranges.h>

#include <optional>
#include <string_view>
#include <vector>

namespace moniva {
namespace {

using Parts = std::vector<std::string>;

/// What stands between the marks, the first of which begins the text and the last of which ends it. An empty
/// last mark takes the rest.
std::optional<Parts> between(std::string_view text, std::initializer_list<std::string_view> marks) {
  if (!text.starts_with(*marks.begin())) return {};
  text.remove_prefix(marks.begin()->size());
  Parts parts;
  for (const auto* mark = marks.begin() + 1; mark != marks.end(); ++mark) {
    const bool isLast = mark + 1 == marks.end();
    if (isLast && !text.ends_with(*mark)) return {};
    const auto at = isLast ? text.size() - mark->size() : text.find(*mark);
    if (at == std::string_view::npos) return {};
    parts.emplace_back(text.substr(0, at));
    text.remove_prefix(at + mark->size());
  }
  return parts;
}

/// "0" for the "0.000000" of a range of numbers with decimals.
std::string plainNumber(std::string number) {
  if (number.find('.') == std::string::npos) return number;
  number.erase(number.find_last_not_of('0') + 1);
  if (number.back() == '.') number.pop_back();
  return number;
}

/// The commands below the last one that was typed.
Phrase commandMissing(const CLI::App& app) {
  const CLI::App* at = &app;
  while (!at->get_subcommands().empty()) at = at->get_subcommands().back();
  Parts names;
  for (const CLI::App* command : at->get_subcommands(nullptr)) {
    if (!command->get_group().empty()) names.push_back(command->get_name());
  }
  // The program's own are too many for a line; its help has them in order.
  return at->get_parent() == nullptr
             ? phrase("say what to do")
             : phrase("say what to do: {}", fmt::format("{}", fmt::join(names, ", ")));
}

/// What a check said of a value: `name` is the option's.
Phrase refusedValue(const std::string& name, const std::string& why, const Translate& translate) {
  if (const auto said = between(why, {"Value ", " not in range ", " to ", ""})) {
    const std::string &value = (*said)[0], &least = (*said)[1], &most = (*said)[2];
    // The greatest number there is stands for none.
    return most.size() > 20
               ? phrase("{} takes a number from {} on, not '{}'", name, plainNumber(least), value)
               : phrase("{} takes a number from {} to {}, not '{}'", name, least, most, value);
  }
  if (const auto said = between(why, {"'", "' is none of ", ""}))
    return phrase("{}: '{}' is none of {}", name, (*said)[0], (*said)[1]);
  return phrase("{}: {}", name, translate(why));
}

/// How many values an option has: the parser counts those of all the times it was typed.
Phrase wrongCount(const std::string& name, const std::string& wanted, const std::string& given) {
  return wanted == "1" ? phrase("{} is given once only", name)
                       : phrase("{} takes {} values, not {}", name, wanted, given);
}

std::optional<Phrase> sentence(const CLI::ParseError& error, const CLI::App& app,
                               const Translate& translate) {
  const std::string_view text = error.what();
  std::optional<Parts> of;
  const auto says = [&](std::initializer_list<std::string_view> marks) {
    of = between(text, marks);
    return of.has_value();
  };
  // The name of an error of words too many is the command's, so the kind is told by the code.
  switch (static_cast<CLI::ExitCodes>(error.get_exit_code())) {
    case CLI::ExitCodes::RequiredError:
      if (text == "A subcommand is required") return commandMissing(app);
      if (says({"", " is required"})) return phrase("{} is missing", (*of)[0]);
      break;
    case CLI::ExitCodes::ValidationError:
      if (says({"", ": ", ""})) return refusedValue((*of)[0], (*of)[1], translate);
      break;
    case CLI::ExitCodes::ExcludesError:
      if (says({"", " excludes ", ""}))
        return phrase("{} and {} cannot be given together", (*of)[0], (*of)[1]);
      break;
    case CLI::ExitCodes::RequiresError:
      if (says({"", " requires ", ""}))
        return phrase("{} is given together with {} only", (*of)[0], (*of)[1]);
      break;
    case CLI::ExitCodes::ExtrasError:
      if (const auto words = app.remaining(true); !words.empty())
        return phrase("'{}' is a word too many", words.front());
      break;
    case CLI::ExitCodes::ConversionError:
      if (says({"Could not convert: ", " = ", ""}))
        return phrase("{} does not take '{}'", (*of)[0], (*of)[1]);
      break;
    case CLI::ExitCodes::ArgumentMismatch:
      if (says({"", " was given a disallowed flag override"})) return phrase("{} takes no value", (*of)[0]);
      if (says({"", ": At Most ", " required but received ", ""}) ||
          says({"", ": At least ", " required but received ", ""}))
        return wrongCount((*of)[0], (*of)[1], (*of)[2]);
      // Behind a colon the parser says what the values may be; the help does too.
      if (says({"", ": ", " required ", " missing"}))
        return phrase("{} needs {} after it", (*of)[0], (*of)[2].substr(0, (*of)[2].find(':')));
      break;
    default:
      break;
  }
  return {};
}

}  // namespace

std::string parserSays(const CLI::ParseError& error, const CLI::App& app, const Translate& translate) {
  const auto known = sentence(error, app, translate);
  return known ? known->in(translate) : error.what();
}

}  // namespace moniva
