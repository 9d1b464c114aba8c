#pragma once

#include <optional>

#include "model/moniva_account.h"

namespace moniva {

/// The date of the first and of the last settled transaction of a book, an account or a group; nothing when
/// it has none.
std::optional<Date> getTheDateOfFirstTransaction(const MonivaAccount& account);
std::optional<Date> getTheDateOfLastTransaction(const MonivaAccount& account);

}  // namespace moniva
