#include "platform/work_queue.h"

#include <utility>

namespace moniva {

void MainQueue::dispatch(std::function<void()> block) {
  const std::scoped_lock lock(mutex_);
  blocks_.push_back(std::move(block));
}

bool MainQueue::runPending() {
  for (bool ran = false;; ran = true) {
    std::function<void()> block;
    {
      const std::scoped_lock lock(mutex_);
      if (blocks_.empty()) return ran;
      block = std::move(blocks_.front());
      blocks_.pop_front();
    }
    block();
  }
}

WorkQueue::~WorkQueue() {
  {
    const std::scoped_lock lock(mutex_);
    ending_ = true;
  }
  changed_.notify_all();
  if (thread_.joinable()) thread_.join();
}

void WorkQueue::dispatch(std::function<void()> block) {
  const std::scoped_lock lock(mutex_);
  blocks_.push_back(std::move(block));
  if (!thread_.joinable()) thread_ = std::thread([this] { work(); });
  changed_.notify_all();
}

void WorkQueue::runAndWait(const std::function<void()>& block) {
  if (isThisThread()) return block();
  std::mutex doneMutex;
  std::condition_variable doneChanged;
  bool done = false;
  dispatch([&] {
    block();
    const std::scoped_lock lock(doneMutex);
    done = true;
    doneChanged.notify_all();
  });
  std::unique_lock lock(doneMutex);
  doneChanged.wait(lock, [&] { return done; });
}

void WorkQueue::drain() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return blocks_.empty() && !running_; });
}

bool WorkQueue::drainWithin(std::chrono::milliseconds time) {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, time, [this] { return blocks_.empty() && !running_; });
}

bool WorkQueue::isThisThread() const {
  const std::scoped_lock lock(mutex_);
  return thread_.joinable() && thread_.get_id() == std::this_thread::get_id();
}

bool WorkQueue::isBusy() const {
  const std::scoped_lock lock(mutex_);
  return running_ || !blocks_.empty();
}

void WorkQueue::work() {
  std::unique_lock lock(mutex_);
  for (;;) {
    changed_.wait(lock, [this] { return ending_ || !blocks_.empty(); });
    if (blocks_.empty()) return;
    auto block = std::move(blocks_.front());
    blocks_.pop_front();
    running_ = true;
    lock.unlock();
    block();
    block = nullptr;
    lock.lock();
    running_ = false;
    changed_.notify_all();
  }
}

}  // namespace moniva
