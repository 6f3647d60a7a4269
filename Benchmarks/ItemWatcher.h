#pragma once

struct sd_bus;
struct sd_bus_message;

namespace velloren {

/// Stands in for the tray of a panel on the session bus, to learn the moment at which an item registers.
class ItemWatcher {
  public:
    ItemWatcher();
    ItemWatcher(const ItemWatcher&) = delete;
    ItemWatcher& operator=(const ItemWatcher&) = delete;
    ~ItemWatcher();

    /// Returns when the next item registers; stops the program when none does in half a minute.
    void waitForItem();

  private:
    friend struct ItemWatcherMethods;

    sd_bus* bus = nullptr;
    bool registered = false;
};

} // namespace velloren
