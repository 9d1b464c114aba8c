#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace moniva {

/// In-process notifications. They are told by name; the names in use:
namespace notification {
inline constexpr std::string_view kExpenseChanged = "expenseChanged";
inline constexpr std::string_view kNewDatabaseFile = "NewDatabaseFile";
inline constexpr std::string_view kAccountDeleted = "accountDeleted";
inline constexpr std::string_view kDefaultAccountBudgetChanged = "defaultAccountBudgetChanged";
inline constexpr std::string_view kExchangeRateRefreshFinished = "excahngeRateRefreshFinished";
}  // namespace notification

/// Hands a posted notification to whoever observes its name, on the poster's thread, in the order they began.
class NotificationCenter {
 public:
  /// Observes as long as the returned token lives.
  using Token = std::shared_ptr<void>;
  [[nodiscard]] Token observe(std::string_view name, std::function<void()> block);
  void post(std::string_view name);

 private:
  struct Observer {
    std::string name;
    std::function<void()> block;
  };
  std::mutex mutex_;
  std::vector<std::weak_ptr<Observer>> observers_;
};

}  // namespace moniva
