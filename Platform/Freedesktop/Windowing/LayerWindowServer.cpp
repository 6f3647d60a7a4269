#include "Platform/Freedesktop/Windowing/LayerWindowServer.h"

#include "Platform/Freedesktop/Windowing/BarGuess.h"
#include "Platform/Freedesktop/Windowing/PressCatcher.h"
#include "Platform/Freedesktop/Windowing/QtPrivate.h"

#include <QGuiApplication>
#include <QMouseEvent>
#include <QScopedValueRollback>
#include <QScreen>
#include <QWidget>
#include <QWindow>

#include <algorithm>
#include <utility>

namespace velloren {

namespace {

// Compositors answer within a frame or two, on a busy machine much later. Without the pointer's place the
// host's number counts, and some hosts tell one within the icon. A seat without a pointer never says where it
// is.
constexpr std::chrono::milliseconds patienceWithPointer{10000};
constexpr std::chrono::milliseconds patienceWithoutPointer{1000};

constexpr QSize iconSize(28, 22);

/// Has Qt leave windows without a role whose flags say so; it asks at every turn. Set only while the popover
/// is shown: the programs that links open would inherit it, and such windows of theirs never appear.
constexpr auto windowsWithoutRole = "QT_WAYLAND_USE_BYPASSWINDOWMANAGERHINT";

} // namespace

/// What is known of one screen: a surface among the bars that never shows tells its size, one above them the
/// rest.
struct LayerWindowServer::ScreenView {
    QPointer<QScreen> screen;
    WaylandOwned<wl_surface> probeSurface;
    std::unique_ptr<LayerSurface> probe;
    std::optional<QSize> free;
    std::unique_ptr<PressCatcher> catcher;
};

LayerWindowServer::LayerWindowServer() {
    patience.setSingleShot(true);
    connect(&patience, &QTimer::timeout, this, &LayerWindowServer::answer);
}

LayerWindowServer::~LayerWindowServer() = default;

void LayerWindowServer::preparePopover(QWidget& window, ChangeHandler) {
    window.setWindowFlag(Qt::BypassWindowManagerHint);
}

void LayerWindowServer::findSite(QWidget& window, const QRect& anchor, SiteHandler found) {
    popover = &window;
    askedAnchor = anchor;
    asked = std::move(found);
    if (views.empty() && shell.isReady()) {
        for (QScreen* screen : QGuiApplication::screens())
            lookAtScreen(*screen);
        if (shell.windowMaker())
            windowProbe = std::make_unique<MaximizedSize>(shell, [this](QSize size) {
                maximized = size;
                answerWhenKnown();
            });
    }
    patience.start(shell.hasPointer() ? patienceWithPointer : patienceWithoutPointer);
    answerWhenKnown();
}

void LayerWindowServer::lookAtScreen(QScreen& screen) {
    ScreenView& view = *views.emplace_back(std::make_unique<ScreenView>());
    view.screen = &screen;
    view.catcher =
        std::make_unique<PressCatcher>(shell, screen,
                                       PressCatcher::Handlers{[this] { answerWhenKnown(); },
                                                              [this](Qt::MouseButton button, QPoint place) {
                                                                  if (pressed)
                                                                      pressed(button, place);
                                                              }});
    view.probeSurface = shell.newSurface();
    view.probe = std::make_unique<LayerSurface>(shell, *view.probeSurface, screen, LayerSurface::Bars::Avoid,
                                                LayerSurface::Handlers{[this, &view](QSize size) {
                                                                           view.free = size;
                                                                           answerWhenKnown();
                                                                       },
                                                                       nullptr});
}

void LayerWindowServer::answerWhenKnown() {
    const bool knowsPointer =
        std::any_of(views.begin(), views.end(), [](const auto& view) { return view->catcher->pointer(); });
    const bool knowsSizes =
        std::all_of(views.begin(), views.end(), [](const auto& view) { return view->free.has_value(); });
    if (asked && knowsPointer && knowsSizes && (maximized || !windowProbe))
        answer();
}

void LayerWindowServer::answer() {
    patience.stop();
    if (const SiteHandler found = std::exchange(asked, nullptr))
        found(site());
}

const LayerWindowServer::ScreenView* LayerWindowServer::viewAt(QPoint place) const {
    const auto view = std::find_if(views.begin(), views.end(), [place](const auto& each) {
        return each->screen && each->screen->geometry().contains(place);
    });
    return view == views.end() ? nullptr : view->get();
}

bool LayerWindowServer::isInBar(QPoint place) const {
    const ScreenView* view = viewAt(place);
    return view &&
           !availableAround(place, view->screen->geometry(), freeOf(view, *view->screen)).contains(place);
}

QSize LayerWindowServer::freeOf(const ScreenView* view, const QScreen& screen) const {
    const QSize whole = screen.geometry().size();
    const QSize free = view && view->free ? *view->free : whole;
    return maximized && !maximized->isEmpty() ? free.boundedTo(*maximized) : free;
}

std::optional<QPoint> LayerWindowServer::placeOfUser(const QRect& anchor) const {
    std::optional<QPoint> pointer;
    for (const auto& view : views) {
        if (const auto place = view->catcher->pointer())
            pointer = place;
    }
    if (pointer && isInBar(*pointer))
        return pointer;
    if (anchor.isEmpty())
        return std::nullopt;
    return isInBar(anchor.center()) ? anchor.center() : pointer;
}

PopoverSite LayerWindowServer::site() {
    if (const auto place = placeOfUser(askedAnchor))
        latestPlace = place;
    QPoint place = latestPlace.value_or(QPoint());
    const ScreenView* view = latestPlace ? viewAt(place) : nullptr;
    const QScreen* screen = view ? view->screen.data() : QGuiApplication::primaryScreen();
    if (!view) {
        view = viewAt(screen->geometry().center());
        place = likelyPlaceOfIcon(screen->geometry(), freeOf(view, *screen));
    }
    const QSize free = freeOf(view, *screen);
    const QRect available = availableAround(place, screen->geometry(), free);
    return {anchorAround(place, iconSize, screen->geometry(), available), screen->geometry(), available};
}

void LayerWindowServer::showPopover(QWidget& window, const QRect& frame) {
    QScreen* screen = QGuiApplication::screenAt(frame.center());
    if (!screen)
        screen = QGuiApplication::primaryScreen();
    const QRect onScreen = frame.translated(-screen->geometry().topLeft());
    window.setGeometry(frame);
    if (role) {
        role->moveTo(onScreen);
        leaveOutOwnWindows();
        return;
    }
    if (!shell.isReady())
        return;
    window.setScreen(screen);
    window.winId();
    role = std::make_unique<LayerSurface>(
        shell, *qtprivate::surfaceOf(*window.windowHandle()), *screen, onScreen,
        LayerSurface::Handlers{[&window](QSize) { window.show(); },
                               [&window] { qtprivate::closeAsUser(*window.windowHandle()); }});
    leaveOutOwnWindows();
    qputenv(windowsWithoutRole, "1");
    qApp->installEventFilter(this);
}

bool LayerWindowServer::hidePopover(QWidget& window) {
    qApp->removeEventFilter(this);
    asked = nullptr;
    patience.stop();
    for (const auto& popUp : std::exchange(popUps, {})) {
        if (popUp)
            popUp->windowHandle()->setParent(nullptr); // else it would go with the popover's window
    }
    role.reset();
    window.hide();
    qunsetenv(windowsWithoutRole);
    views.clear();
    windowProbe.reset();
    maximized.reset();
    popover = nullptr;
    return false; // Qt makes its surface when it shows the window, too late for a role
}

bool LayerWindowServer::eventFilter(QObject* watched, QEvent* event) {
    auto* const widget = qobject_cast<QWidget*>(watched);
    if (!widget || !popover)
        return false;
    if (widget->isWindow() && (widget->windowType() == Qt::Popup || widget->windowType() == Qt::ToolTip)) {
        if (event->type() == QEvent::Show || (event->type() == QEvent::Move && widget->isVisible()))
            takeIn(*widget);
        else if (event->type() == QEvent::Hide)
            leaveOutOwnWindows();
    }
    if (event->type() == QEvent::MouseButtonPress && widget == popover) {
        const auto* press = static_cast<QMouseEvent*>(event);
        // The margin around the popover's frame shows what lies behind it.
        if (pressed && !popover->childAt(press->position().toPoint()))
            pressed(press->button(), press->globalPosition().toPoint());
    }
    return false;
}

void LayerWindowServer::takeIn(QWidget& popUp) {
    if (takingIn)
        return;
    const QScopedValueRollback guard(takingIn, true);
    // Qt has placed it on the whole desktop.
    const QPoint place = popUp.pos() - popover->pos();
    popUp.windowHandle()->setParent(popover->windowHandle());
    popUp.move(place);
    if (std::find(popUps.begin(), popUps.end(), &popUp) == popUps.end())
        popUps.emplace_back(&popUp);
    leaveOutOwnWindows();
    popover->update(); // what is below a surface takes its place when that one is drawn
}

void LayerWindowServer::leaveOutOwnWindows() {
    QRegion own = popover->geometry();
    for (const auto& popUp : popUps) {
        if (popUp && popUp->isVisible())
            own += popUp->geometry().translated(popover->pos());
    }
    for (const auto& view : views)
        view->catcher->leaveOut(own);
}

} // namespace velloren
