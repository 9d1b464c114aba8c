#pragma once

#include <boost/json/value.hpp>
#include <string>

#include "model/mv_category.h"
#include "ui/cli/session.h"

namespace moniva {

/// The category by its fields, with the children that were loaded.
boost::json::object jsonOf(Session& session, const MVCategory& category);

/// The category as it can be typed: "Food", "Food/Bakery".
std::string pathOf(const MVCategory& category);

/// The live category of the type by what was typed: "Food", "Food/Bakery", "Food - Bakery", or "Bakery" where
/// only one category has it below. Ends the command for none, with the nearest there is, and for several,
/// with all of them.
MVCategory categoryTyped(Session& session, const std::string& name, int type);

}  // namespace moniva
