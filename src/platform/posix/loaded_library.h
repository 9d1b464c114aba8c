#pragma once

#include <dlfcn.h>

#include <string>

namespace moniva {

/// A shared library that is loaded when it is first needed, for those that take longer to load than most
/// commands take. It stays loaded.
class LoadedLibrary {
 public:
  /// Why the library or one of the functions asked for could not be had; "" when all of them could.
  const std::string& missing() const { return missing_; }

 protected:
  explicit LoadedLibrary(const char* name) : handle_(::dlopen(name, RTLD_NOW | RTLD_LOCAL)) {
    if (handle_ == nullptr) fail(name);
  }
  /// Sets `function` to the one of that name; null, and said by `missing`, where there is none.
  template <class Function>
  void find(const char* name, Function& function) {
    function = handle_ != nullptr ? reinterpret_cast<Function>(::dlsym(handle_, name)) : nullptr;
    if (function == nullptr && missing_.empty()) fail(name);
  }
  void fail(const char* otherwise) {
    const char* why = ::dlerror();
    missing_ = why != nullptr ? why : otherwise;
  }

 private:
  void* handle_;
  std::string missing_;
};

}  // namespace moniva
