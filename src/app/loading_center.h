#pragma once

#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace moniva {

/// The loading tasks in progress, joined into one status line for the interface. Safe to use from several
/// threads.
class MVLoadingDataControllerCenter {
 public:
  void beginLoading(std::string_view text);
  /// Ends one task of that text, the one begun first.
  void loadingFinished(std::string_view text);
  /// "Importing, Saving"; empty when nothing is loading.
  std::string convertLoadingString() const;

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> tasks_;
};

}  // namespace moniva
