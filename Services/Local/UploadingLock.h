#pragma once

#include "Platform/Foundation/UniqueDescriptor.h"

#include <filesystem>
#include <memory>
#include <utility>

namespace velloren {

/// Held by a process of the product while it uploads meeting files; releasing it, or the end of the process,
/// ends the uploading. The file itself stays.
class UploadingLock {
  public:
    /// `uploading.lock` in the product's runtime folder; empty when the environment names no such folder.
    [[nodiscard]] static std::filesystem::path usualPath();

    /// Makes the file with its folder where they are missing and locks it. None when that is impossible or
    /// another process holds the lock.
    [[nodiscard]] static std::unique_ptr<UploadingLock> acquire();

    UploadingLock(const UploadingLock&) = delete;
    UploadingLock& operator=(const UploadingLock&) = delete;
    ~UploadingLock() = default;

  private:
    explicit UploadingLock(UniqueDescriptor descriptor) : descriptor(std::move(descriptor)) {}

    UniqueDescriptor descriptor;
};

} // namespace velloren
