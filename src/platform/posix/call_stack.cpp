#include "platform/call_stack.h"

#include <cxxabi.h>
#include <dlfcn.h>
#include <execinfo.h>

#include <array>
#include <cstdlib>
#include <memory>

namespace moniva {

std::vector<std::string> programFrames() {
  std::array<void*, 64> addresses{};
  const int count = ::backtrace(addresses.data(), static_cast<int>(addresses.size()));
  std::vector<std::string> frames;
  // The first two frames are this function and whoever writes the log.
  for (int i = 2; i < count; ++i) {
    Dl_info info{};
    if (::dladdr(addresses[static_cast<std::size_t>(i)], &info) == 0 || info.dli_sname == nullptr) continue;
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> readable(
        abi::__cxa_demangle(info.dli_sname, nullptr, nullptr, &status), &std::free);
    std::string name = status == 0 ? readable.get() : info.dli_sname;
    if (name.find("moniva::") != std::string::npos) frames.push_back(std::move(name));
  }
  return frames;
}

}  // namespace moniva
