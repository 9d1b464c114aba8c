#pragma once

#include <optional>

#include "model/moniva_account.h"

namespace moniva {

/// The date of the first and of the last settled transaction of a book, an account or a group; nothing when
/// it has none, refused when the store cannot be read. However much there is, only the ends of the indexes
/// are looked at.
Result<std::optional<Date>> getTheDateOfFirstTransaction(const MonivaAccount& account);
Result<std::optional<Date>> getTheDateOfLastTransaction(const MonivaAccount& account);

/// Keeps both in the object. Dates that an older program stored as texts leave a request for their repair
/// with the settings.
Result<> getAllPeriod(MonivaAccount& account);

}  // namespace moniva
