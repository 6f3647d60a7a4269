#pragma once

#include "Platform/Foundation/SharedInstance.h"

#include <memory>

namespace velloren {

/// Base of a fake that stands in for a service of the process.
template <class Fake, class Service>
class Installable : public Service {
  public:
    /// Makes a new fake the process's own and returns it. It goes with the service's next `reset`.
    static Fake& install() {
        SharedInstance<Service>::provide([] { return std::make_unique<Fake>(); });
        return static_cast<Fake&>(SharedInstance<Service>::get());
    }
};

} // namespace velloren
