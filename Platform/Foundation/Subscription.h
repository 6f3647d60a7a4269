#pragma once

#include <functional>
#include <utility>

namespace velloren {

/// Keeps something subscribed for as long as it lives: destroying it, or assigning another over it,
/// unsubscribes. An empty subscription does nothing. Belongs to the thread that subscribed.
class [[nodiscard]] Subscription {
  public:
    Subscription() = default;

    explicit Subscription(std::function<void()> unsubscribe) : unsubscribe(std::move(unsubscribe)) {}

    Subscription(Subscription&& other) noexcept : unsubscribe(std::exchange(other.unsubscribe, nullptr)) {}

    Subscription(const Subscription&) = delete;

    ~Subscription() { end(); }

    Subscription& operator=(Subscription&& other) noexcept {
        if (this != &other) {
            end();
            unsubscribe = std::exchange(other.unsubscribe, nullptr);
        }
        return *this;
    }

    Subscription& operator=(const Subscription&) = delete;

    /// Leaves it subscribed for good.
    void abandon() { unsubscribe = nullptr; }

    explicit operator bool() const { return unsubscribe != nullptr; }

  private:
    void end() {
        if (const auto last = std::exchange(unsubscribe, nullptr))
            last();
    }

    std::function<void()> unsubscribe;
};

} // namespace velloren
