#pragma once

#include <filesystem>
#include <string_view>

namespace moniva {

/// The cloud document store of the host, as far as a store can be brought back from it.
class CloudContainers {
 public:
  virtual ~CloudContainers() = default;
  /// Whether a person is signed in to the cloud on this device.
  virtual bool isSignedIn() const = 0;
  /// Brings the data file kept in the container to the path; false when the container has none.
  virtual bool restoreDatafile(std::string_view containerID, const std::filesystem::path& to) = 0;
};

/// A host without a cloud document store: nobody is signed in.
class NoCloudContainers final : public CloudContainers {
 public:
  bool isSignedIn() const override { return false; }
  bool restoreDatafile(std::string_view, const std::filesystem::path&) override { return false; }
};

}  // namespace moniva
