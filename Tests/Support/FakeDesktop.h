#pragma once

#include "Platform/Desktop/GlobalEvents.h"
#include "Platform/Desktop/StatusBar.h"
#include "Platform/Foundation/SharedInstance.h"
#include "Platform/Views/WindowServer.h"

#include <QWidget>

#include <memory>
#include <utility>

namespace velloren {

/// Global events that the test makes.
class FakeGlobalEvents final : public GlobalEvents {
  public:
    static FakeGlobalEvents& install() {
        SharedInstance<GlobalEvents>::provide([] { return std::make_unique<FakeGlobalEvents>(); });
        return static_cast<FakeGlobalEvents&>(GlobalEvents::shared());
    }

    bool clickSeenByMonitor = false;

    [[nodiscard]] std::size_t monitorCount() const { return monitors.handlersFor(~EventMask{0}).size(); }

    void post(const Event& event) {
        for (const Handler& handler : monitors.handlersFor(maskOf(event.type)))
            handler(&event);
    }

    void postWithoutEvent() {
        for (const Handler& handler : monitors.handlersFor(~EventMask{0}))
            handler(nullptr);
    }

    Subscription addMonitorForEventsMatchingMask(EventMask mask, Handler handler) override {
        return monitors.add(mask, std::move(handler));
    }

    bool takeClickSeenByMonitor() override { return std::exchange(clickSeenByMonitor, false); }

  private:
    GlobalEventMonitors monitors;
};

/// A display whose pointer and compositor are the test's.
class FakeWindowServer final : public WindowServer {
  public:
    static FakeWindowServer& install() {
        SharedInstance<WindowServer>::provide([] { return std::make_unique<FakeWindowServer>(); });
        return static_cast<FakeWindowServer&>(WindowServer::shared());
    }

    std::optional<QPoint> pointer;
    bool composited = true;

    std::optional<QPoint> pointerLocation() const override { return pointer; }

    bool isComposited() const override { return composited; }

    void preparePopover(QWidget&) override {}

    void placePopover(QWidget& window, const QRect& frame) override { window.setGeometry(frame); }
};

/// A bar whose item's button is a view nobody shows, or that gives its item no button at all.
class FakeStatusBar final : public StatusBar {
  public:
    static FakeStatusBar& install() {
        SharedInstance<StatusBar>::provide([] { return std::make_unique<FakeStatusBar>(); });
        return static_cast<FakeStatusBar&>(StatusBar::systemStatusBar());
    }

    bool givesButton = true;
    double lengthAskedFor = 0;
    StatusBarButton* latestButton = nullptr;

    std::unique_ptr<StatusItem> statusItemWithLength(double length) override {
        lengthAskedFor = length;
        auto item = std::make_unique<Item>(givesButton, length);
        latestButton = item->button();
        return item;
    }

  private:
    class Item final : public StatusItem {
      public:
        Item(bool givesButton, double length) {
            if (givesButton)
                itemButton = std::make_unique<StatusBarButton>(QSize(qRound(length), 22));
        }

        StatusBarButton* button() override { return itemButton.get(); }

      private:
        std::unique_ptr<StatusBarButton> itemButton;
    };
};

} // namespace velloren
