#pragma once

#include <QObject>

#include <functional>

namespace velloren {

/// Calls `changed` soon after a screen came, went, or took another place or size, perhaps several times for
/// one change, and never once this is gone. What bars leave free of a screen is not meant. Main thread only.
class ScreenWatch final : public QObject {
    Q_OBJECT

  public:
    explicit ScreenWatch(const std::function<void()>& changed);
};

} // namespace velloren
