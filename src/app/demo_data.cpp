#include "app/demo_data.h"

namespace moniva {

Result<ImportOutcome> insertDemoData(MVAppRoot& root,
                                     std::function<void(std::size_t, std::size_t)> progress) {
  ImportRequest request;
  request.currency = "EUR";
  request.progress = std::move(progress);
  return importFile(root, root.platform().directories.resources / "household.csv", request);
}

}  // namespace moniva
