#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

namespace moniva {

/// The main thread's queue: blocks handed to it from anywhere run on the thread that made it, when that
/// thread asks for them.
class MainQueue {
 public:
  MainQueue() : thread_(std::this_thread::get_id()) {}

  bool isMainThread() const { return std::this_thread::get_id() == thread_; }
  void dispatch(std::function<void()> block);
  /// Runs what is waiting, and what that adds; only on the main thread. False when nothing was waiting.
  bool runPending();

 private:
  std::thread::id thread_;
  std::mutex mutex_;
  std::deque<std::function<void()>> blocks_;
};

/// A serial queue with a thread of its own, started with the first block.
class WorkQueue {
 public:
  WorkQueue() = default;
  /// Waits for the blocks handed in so far.
  ~WorkQueue();
  WorkQueue(const WorkQueue&) = delete;
  WorkQueue& operator=(const WorkQueue&) = delete;

  void dispatch(std::function<void()> block);
  /// Runs the block on the queue's thread and waits for its end; called on that thread, runs it at once.
  void runAndWait(const std::function<void()>& block);
  /// Waits until nothing is left to do. Not to be called on the queue's thread.
  void drain();
  /// The same for that long at most; whether nothing is left.
  bool drainWithin(std::chrono::milliseconds time);
  bool isThisThread() const;
  /// True while blocks wait or run.
  bool isBusy() const;

 private:
  void work();

  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<std::function<void()>> blocks_;
  bool running_ = false;
  bool ending_ = false;
  std::thread thread_;
};

}  // namespace moniva
