#include "app/do_db_updater.h"

namespace moniva {

Result<> updateStringTypeDateField(MVAppRoot&) {
  return {};
}

}  // namespace moniva
