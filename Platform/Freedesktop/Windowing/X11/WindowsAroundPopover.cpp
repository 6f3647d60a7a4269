#include "Platform/Freedesktop/Windowing/X11/WindowsAroundPopover.h"

#include "Platform/Freedesktop/Windowing/OverlayEvents.h"
#include "Platform/Freedesktop/Windowing/X11/X11Display.h"

#include <QGuiApplication>
#include <QMouseEvent>
#include <QRegion>
#include <QScopedValueRollback>
#include <QScreen>
#include <QStyleHints>
#include <QTimer>
#include <QWidget>
#include <QWindow>
#include <xcb/xcb.h>

#include <cstdint>
#include <optional>
#include <utility>

namespace velloren {

/// Filled by the X server, with nothing: a picture of that size would be large.
class WindowsAroundPopover::Part final : public QWindow {
  public:
    Part(QScreen& screen, const QRect& place, OverlayEvents& events) : QWindow(&screen), events(events) {
        QSurfaceFormat format;
        format.setAlphaBufferSize(8);
        setFormat(format);
        // Of this type, it is not taken for one that wants the keyboard.
        setFlags(Qt::ToolTip | Qt::FramelessWindowHint | Qt::WindowDoesNotAcceptFocus);
        setGeometry(place);
        show();
    }

    void end() {
        if (!handled) {
            hide();
            deleteLater();
            return;
        }
        // The second half of a double click belongs to the first: the bar is not to take it for a click.
        const int reach = QGuiApplication::styleHints()->mouseDoubleClickDistance();
        setGeometry({*handled - QPoint(reach, reach), *handled + QPoint(reach, reach)});
        QTimer::singleShot(QGuiApplication::styleHints()->mouseDoubleClickInterval(), this,
                           &QObject::deleteLater);
    }

  protected:
    // Where nothing was drawn, compositors know of nothing to press.
    void exposeEvent(QExposeEvent*) override {
        xcb_connection_t* display = x11::connection();
        const auto self = xcb_window_t(winId());
        const xcb_gcontext_t painter = xcb_generate_id(display);
        const std::uint32_t nothing = 0;
        const QSize size = this->size() * devicePixelRatio();
        const xcb_rectangle_t everywhere{0, 0, std::uint16_t(size.width()), std::uint16_t(size.height())};
        xcb_create_gc(display, painter, self, XCB_GC_FOREGROUND, &nothing);
        xcb_poly_fill_rectangle(display, self, painter, 1, &everywhere);
        xcb_free_gc(display, painter);
        xcb_flush(display);
    }

    void mousePressEvent(QMouseEvent* event) override {
        const QScopedValueRollback handling(handled, std::optional(event->globalPosition().toPoint()));
        events.handlePress(event->button(), *handled);
    }

  private:
    OverlayEvents& events;
    std::optional<QPoint> handled; ///< the place of the press that is being handled
};

WindowsAroundPopover::WindowsAroundPopover(QWidget& popover, OverlayEvents& events)
    : popover(popover), events(events) {
    popover.installEventFilter(this);
    surround();
}

WindowsAroundPopover::~WindowsAroundPopover() = default;

bool WindowsAroundPopover::eventFilter(QObject*, QEvent* event) {
    // The window manager may have another place for it than was asked.
    if (event->type() == QEvent::Move || event->type() == QEvent::Resize)
        surround();
    return false;
}

void WindowsAroundPopover::surround() {
    // The margin around the popover's frame shows what lies behind it.
    const QRect shown = popover.childrenRect().translated(popover.pos());
    if (std::exchange(surrounded, shown) == shown)
        return;
    parts.clear();
    for (QScreen* screen : QGuiApplication::screens()) {
        for (const QRect& place : QRegion(screen->geometry()) - shown)
            parts.emplace_back(new Part(*screen, place, events), [](Part* part) { part->end(); });
    }
}

} // namespace velloren
