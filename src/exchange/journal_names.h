#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>

namespace moniva {

/// The text as plain-text accounting programs take it for a description or for part of an account's name:
/// well-formed UTF-8 in one line, its blanks single, without the signs that begin a comment (";") or, in
/// names, an account below ("Lunch 12:30" is "Lunch 12-30").
std::string journalText(std::string_view text);
std::string journalSegment(std::string_view title);

/// The code of a currency as a commodity: in quotes unless it is of capital letters.
std::string journalCommodity(std::string_view code);

/// Names of accounts, in which things of one title stay two: "Cash" and "Cash 2".
class JournalNames {
 public:
  /// The name below `parent` (at the top for a blank one) of the thing that `key` stands for, with its
  /// parents; the same each time. The first to come has the plain one.
  const std::string& below(const std::string& parent, std::string_view key, std::string_view title);

 private:
  std::map<std::pair<std::string, std::string>, std::string> given_;
  std::set<std::string> taken_;
};

}  // namespace moniva
