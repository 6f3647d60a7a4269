#pragma once

#include <unistd.h>
#include <utility>

namespace velloren {

/// Owns a file descriptor and closes it. Negative is none.
class UniqueDescriptor {
  public:
    UniqueDescriptor() = default;

    explicit UniqueDescriptor(int descriptor) : descriptor(descriptor) {}

    UniqueDescriptor(UniqueDescriptor&& other) noexcept : descriptor(other.release()) {}

    UniqueDescriptor& operator=(UniqueDescriptor&& other) noexcept {
        reset(other.release());
        return *this;
    }

    UniqueDescriptor(const UniqueDescriptor&) = delete;
    UniqueDescriptor& operator=(const UniqueDescriptor&) = delete;

    ~UniqueDescriptor() { reset(); }

    [[nodiscard]] int get() const { return descriptor; }

    explicit operator bool() const { return descriptor >= 0; }

    /// Hands it over: it is the caller's to close.
    [[nodiscard]] int release() { return std::exchange(descriptor, -1); }

    void reset(int next = -1) {
        if (const int last = std::exchange(descriptor, next); last >= 0)
            ::close(last);
    }

  private:
    int descriptor = -1;
};

} // namespace velloren
