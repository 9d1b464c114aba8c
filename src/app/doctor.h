#pragma once

#include <string>
#include <vector>

#include "base/phrase.h"
#include "storage/mv_app_root.h"

namespace moniva {

/// One thing looked at in a store, and what was found: nothing or a sentence, also one on what does no harm.
struct DoctorFinding {
  Phrase check;
  bool well = true;
  Phrase found = "";
};

/// Looks a store over, from the file up to what its rows say of each other. Writes nothing.
std::vector<DoctorFinding> examineStore(MVAppRoot& root);

}  // namespace moniva
