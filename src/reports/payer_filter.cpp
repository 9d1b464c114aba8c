#include "reports/payer_filter.h"

#include <fmt/format.h>

namespace moniva {
namespace {

constexpr std::string_view kBooksOfGroup =
    "in (select title from category where parent=? and type = 8 and deleted = 0)";

/// The items of the row's record all lie in the book or the books of the group; has one slot.
std::string liesWhollyIn(const MonivaAccount& book) {
  return fmt::format(
      "(select min(coalesce(o.book, '') {}) from transactions o where o.transferEID = t.transferEID and"
      " o.deleted = 0 and o.bid is not '10' and +o.type in (11, 12, 13, 14)) = 1",
      book.isGroup ? kBooksOfGroup : "= ?");
}

}  // namespace

PayerFilter payerFilter(const MonivaAccount& book) {
  if (book.isAccount()) return {std::string(accountQuerySQL(book)), {book.pk}};
  // The cases are looked at one after the other: first what the index of accounts has, so that only rows of
  // records with payments cost a look at the others of their record.
  return {
      fmt::format(
          "case when {0} then not case when coalesce(account, '') = '' and bid = 20 and transferEID != ''"
          " and exists (select 1 from transactions p where p.transferEID = t.transferEID and p.deleted = 0"
          " and p.bid = 10 and +p.type = t.type) and {1} then 1 else 0 end"
          " when coalesce(book, '') = '' and bid = 10 and transferEID != '' and amount > 0 and "
          "coalesce(syear, 0) != 1002 "
          "and {1} then 1 else 0 end",
          book.isGroup ? fmt::format("(book {0} or category {0})", kBooksOfGroup)
                       : std::string("(book=? or category=?)"),
          liesWhollyIn(book)),
      {book.pk, book.pk, book.pk, book.pk}};
}

PayerFilter refundFilter(const MonivaAccount& book) {
  if (book.isAccount()) return {"0", {}};
  return {fmt::format("case when bid = 10 and transferEID != '' and amount < 0 and {} then 1 else 0 end",
                      liesWhollyIn(book)),
          {book.pk}};
}

}  // namespace moniva
