#include "Benchmarks/ItemWatcher.h"

#include "Platform/Foundation/FatalError.h"

#include <systemd/sd-bus.h>

#include <chrono>

namespace velloren {

struct ItemWatcherMethods {
    static int registerItem(sd_bus_message* call, void* watcher, sd_bus_error*) {
        static_cast<ItemWatcher*>(watcher)->registered = true;
        return sd_bus_reply_method_return(call, nullptr);
    }

    static int hasHost(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*,
                       sd_bus_error*) {
        return sd_bus_message_append(reply, "b", 1);
    }

    static int version(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*,
                       sd_bus_error*) {
        return sd_bus_message_append(reply, "i", 0);
    }
};

namespace {

const sd_bus_vtable methods[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("RegisterStatusNotifierItem", "s", "", &ItemWatcherMethods::registerItem,
                  SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_PROPERTY("IsStatusNotifierHostRegistered", "b", &ItemWatcherMethods::hasHost, 0, 0),
    SD_BUS_PROPERTY("ProtocolVersion", "i", &ItemWatcherMethods::version, 0, 0),
    SD_BUS_VTABLE_END,
};

} // namespace

ItemWatcher::ItemWatcher() {
    constexpr auto name = "org.kde.StatusNotifierWatcher";
    if (sd_bus_open_user(&bus) < 0 ||
        sd_bus_add_object_vtable(bus, nullptr, "/StatusNotifierWatcher", name, methods, this) < 0 ||
        sd_bus_request_name(bus, name, 0) < 0)
        fatalError("the tray could not be taken over");
}

ItemWatcher::~ItemWatcher() {
    sd_bus_flush_close_unref(bus);
}

void ItemWatcher::waitForItem() {
    registered = false;
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!registered) {
        if (std::chrono::steady_clock::now() > limit)
            fatalError("no item registered");
        if (sd_bus_process(bus, nullptr) == 0)
            sd_bus_wait(bus, 100000);
    }
}

} // namespace velloren
