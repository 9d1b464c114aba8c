#pragma once

#include <string>
#include <vector>

#include "model/moniva_account.h"
#include "storage/value.h"

namespace moniva {

/// Which rows tell what the accounts paid for a book: a condition on `transactions t`, and what its slots
/// take. The texts of the slots live in the book.
struct PayerFilter {
  std::string sql;
  std::vector<Value> slots;
};

/// The rows of a book, or of a group of books: what names it as book or, as payments of older stores do, in
/// the place of a category.
///
/// Where a record has payments its items name the book and no account, its payments the account and no book.
/// So the items of a record that lies wholly in the book are not among the rows; its payments are, those
/// above zero that pay no share of a spread cost. Of a record in several books it cannot be told which
/// account paid which part: its items stay, without an account.
///
/// Of an account or a group of accounts the rows are all its own.
PayerFilter payerFilter(const MonivaAccount& book);
/// The refunds (payments below zero) of records that lie wholly in the book; none are asked for by accounts,
/// whose own rows they are.
PayerFilter refundFilter(const MonivaAccount& book);

}  // namespace moniva
