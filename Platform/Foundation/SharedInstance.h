#pragma once

#include "Platform/Foundation/FatalError.h"

#include <functional>
#include <memory>
#include <mutex>
#include <utility>

namespace velloren {

/// The process-wide instance of a service, made on first use by whatever maker was provided last.
///
/// The program provides its makers before anything asks; asking for a service nobody provides stops the
/// process. `get` may be called from any thread. `provide` and `reset` belong to the main thread, at a time
/// when no other thread uses the instance: the program's start, or a test's set-up and tear-down.
template <class Service>
class SharedInstance {
  public:
    using Maker = std::function<std::unique_ptr<Service>()>;

    static void provide(Maker maker) {
        std::unique_ptr<Service> replaced;
        const std::scoped_lock lock(mutex());
        replaced = std::move(instance());
        storedMaker() = std::move(maker);
    }

    static void reset() { provide(nullptr); }

    static Service& get() {
        const std::scoped_lock lock(mutex());
        if (!instance()) {
            if (!storedMaker())
                fatalError("a shared service was asked for before it was provided");
            instance() = storedMaker()();
        }
        return *instance();
    }

  private:
    static std::mutex& mutex() {
        static std::mutex shared;
        return shared;
    }

    static std::unique_ptr<Service>& instance() {
        static std::unique_ptr<Service> shared;
        return shared;
    }

    static Maker& storedMaker() {
        static Maker shared;
        return shared;
    }
};

} // namespace velloren
