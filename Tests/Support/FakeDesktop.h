#pragma once

#include "Platform/Desktop/GlobalEvents.h"
#include "Platform/Desktop/StatusBar.h"
#include "Platform/Views/WindowServer.h"
#include "Tests/Support/Installable.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

#include <utility>

namespace velloren {

/// Global events that the test makes.
class FakeGlobalEvents final : public Installable<FakeGlobalEvents, GlobalEvents> {
  public:
    bool clickSeenByMonitor = false;
    EventMask maskAskedFor = 0;

    [[nodiscard]] std::size_t monitorCount() const { return monitors.handlersFor(~EventMask{0}).size(); }

    void post(const Event& event) { tell(maskOf(event.type), &event); }

    void postWithoutEvent() { tell(~EventMask{0}, nullptr); }

    Subscription addMonitorForEventsMatchingMask(EventMask mask, Handler handler) override {
        maskAskedFor = mask;
        return monitors.add(mask, std::move(handler));
    }

    bool takeClickSeenByMonitor() override { return std::exchange(clickSeenByMonitor, false); }

  private:
    void tell(EventMask mask, const Event* event) {
        for (const Handler& handler : monitors.handlersFor(mask))
            handler(event);
    }

    GlobalEventMonitors monitors;
};

/// A display whose pointer is where the test says, and that has a compositor and keeps the windows of
/// popovers if the test does not say otherwise.
class FakeWindowServer final : public Installable<FakeWindowServer, WindowServer> {
  public:
    std::optional<QPoint> pointer;
    bool composited = true;
    bool keepsWindows = true;
    QRect latestAnchor;

    std::optional<QPoint> pointerLocation() const override { return pointer; }

    bool isComposited() const override { return composited; }

    void preparePopover(QWidget&, ChangeHandler) override {}

    void findSite(QWidget&, const QRect& anchor, SiteHandler found) override {
        latestAnchor = anchor;
        const QScreen& screen = *QGuiApplication::primaryScreen();
        found({anchor, screen.geometry(), screen.availableGeometry()});
    }

    void showPopover(QWidget& window, const QRect& frame) override {
        window.setGeometry(frame);
        window.show();
    }

    bool hidePopover(QWidget& window) override {
        window.hide();
        return keepsWindows;
    }
};

/// A bar whose item's button is a view nobody shows.
class FakeStatusBar final : public Installable<FakeStatusBar, StatusBar> {
  public:
    bool toolTipAllowed = true;
    StatusBarButton* latestButton = nullptr;
    StatusMenu* latestMenu = nullptr;
    std::function<void()> asked = [] {}; ///< called when an item is asked for its button

    std::unique_ptr<StatusItem> statusItemWithLength(double length) override {
        auto item = std::make_unique<Item>(*this);
        item->given = std::make_unique<StatusBarButton>(QSize(qRound(length), 22));
        latestButton = item->given.get();
        latestMenu = &item->menu();
        return item;
    }

  private:
    struct Item final : StatusItem {
        explicit Item(FakeStatusBar& bar) : bar(bar) {}

        FakeStatusBar& bar;
        std::unique_ptr<StatusBarButton> given;

        StatusBarButton* button() override {
            bar.asked();
            return given.get();
        }

        void setToolTipAllowed(bool allowed) override { bar.toolTipAllowed = allowed; }
    };
};

} // namespace velloren
