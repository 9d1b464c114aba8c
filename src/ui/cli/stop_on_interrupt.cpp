#include "ui/cli/stop_on_interrupt.h"

#include <csignal>

namespace moniva {
namespace {

std::atomic<bool> interrupted = false;
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may not wait for a lock");

extern "C" void noteInterrupt(int signal) {
  interrupted = true;
  std::signal(signal, SIG_DFL);
}

}  // namespace

StopOnInterrupt::StopOnInterrupt() {
  interrupted = false;
  before_ = std::signal(SIGINT, noteInterrupt);
}

StopOnInterrupt::~StopOnInterrupt() {
  std::signal(SIGINT, before_);
}

const std::atomic<bool>& StopOnInterrupt::flag() {
  return interrupted;
}

}  // namespace moniva
