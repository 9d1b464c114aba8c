#pragma once

#include <functional>

namespace moniva {

/// Time granted by the host to finish work after the program has left the foreground.
class BackgroundTasks {
 public:
  virtual ~BackgroundTasks() = default;
  /// Asks for time; answers the task's number, above 0. `onExpire` is called with the seconds that remain
  /// when the host takes the time back before `end`.
  virtual int begin(std::function<void(double remaining)> onExpire) = 0;
  virtual void end(int task) = 0;
};

/// A host that lets a program finish: no task is ever cut short.
class UnlimitedBackgroundTasks final : public BackgroundTasks {
 public:
  int begin(std::function<void(double)>) override { return ++last_; }
  void end(int) override {}

 private:
  int last_ = 0;
};

}  // namespace moniva
