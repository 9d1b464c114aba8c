#include "exchange/import_record.h"

#include <fmt/format.h>

#include <iterator>
#include <string_view>

namespace moniva {
namespace {

std::string_view nameOf(ImportKind kind) {
  switch (kind) {
    case ImportKind::expense:
      return "expense";
    case ImportKind::income:
      return "income";
    case ImportKind::transfer:
      return "transfer";
  }
  return "";
}

}  // namespace

std::string identityOf(const ImportRecord& record) {
  std::string identity;
  const auto out = std::back_inserter(identity);
  const auto& date = record.date;
  fmt::format_to(out, "{} {:04}-{:02}-{:02}", nameOf(record.kind), date.year, date.month, date.day);
  if (date.hasTime) fmt::format_to(out, "T{:02}:{:02}:{:02}", date.hour, date.minute, date.second);
  // The shortest digits that give the double back: one spelling for one value.
  fmt::format_to(out, " amount={}", record.amount);
  if (record.foreignAmount) fmt::format_to(out, " foreignAmount={}", *record.foreignAmount);
  if (record.toAmount) fmt::format_to(out, " toAmount={}", *record.toAmount);
  // The length keeps a text from running into the next one, whatever it contains.
  const auto part = [&](std::string_view name, const std::string& value) {
    if (!value.empty()) fmt::format_to(out, " {}={}:{}", name, value.size(), value);
  };
  part("book", record.book);
  part("account", record.account);
  part("category", record.category);
  part("subcategory", record.subcategory);
  part("vendor", record.vendor);
  part("toAccount", record.toAccount);
  part("note", record.note);
  part("foreignCurrency", record.foreignCurrency);
  part("currency", record.currency);
  return identity;
}

}  // namespace moniva
