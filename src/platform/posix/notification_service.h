#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "base/result.h"

struct sd_bus;

namespace moniva {

/// The desktop's notification service, on the person's session bus. All that is asked of it ends by one
/// deadline, so that a service that hangs holds up nobody.
class NotificationService {
 public:
  /// Refused where there is no session bus, and where no service on it answers.
  static Result<NotificationService> open(std::chrono::milliseconds patience);

  /// Shows a notification. Refused where the service refuses or does not answer.
  Result<> show(const std::string& title, const std::string& body, bool withSound);
  /// Whether the last refusal is one of all there is to show: the service is gone or gave no answer in time.
  bool isLost() const { return isLost_; }

 private:
  using Deadline = std::chrono::steady_clock::time_point;
  using Bus = std::unique_ptr<sd_bus, sd_bus* (*)(sd_bus*)>;
  NotificationService(Bus bus, Deadline deadline) : bus_(std::move(bus)), deadline_(deadline) {}
  Result<> readCapabilities();

  Bus bus_;
  Deadline deadline_;
  bool isLost_ = false;
  bool readsMarkup_ = false;  ///< such as "<b>" in a body
};

}  // namespace moniva
