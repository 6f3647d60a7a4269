#include "Platform/Freedesktop/Windowing/Wayland/LayerWindowServer.h"

#include "Platform/Foundation/CurrentLocale.h"
#include "Platform/Freedesktop/Windowing/BarGuess.h"
#include "Platform/Freedesktop/Windowing/OverlayEvents.h"
#include "Platform/Freedesktop/Windowing/QtPrivate.h"
#include "Platform/Freedesktop/Windowing/ScreenPixels.h"
#include "Platform/Freedesktop/Windowing/Wayland/LayerSurface.h"
#include "Platform/Freedesktop/Windowing/Wayland/MaximizedSize.h"
#include "Platform/Freedesktop/Windowing/Wayland/ScreenOverlay.h"

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

// Compositors answer within a frame or two, on a busy machine much later.
constexpr std::chrono::milliseconds patienceWithCompositor{1000};

// From its answer on, for the place of the pointer: some tell it to a surface that appears under a pointer at
// rest only when that moves, and all of them when a pressed button is up again.
constexpr std::chrono::milliseconds patienceWithPointer{200};

// A screen shows within a frame or two what nothing hides.
constexpr std::chrono::milliseconds patienceWithScreen{150};

// From one surface to another the pointer and the keyboard are nowhere; so they are while something hides the
// popover.
constexpr std::chrono::milliseconds longestWayOfFocus{400};

constexpr QSize iconSize(28, 22);

// Plasma's bars float by default since its sixth release: 8 before and 8 behind them.
constexpr int plasmasGap = 16;

/// Has Qt leave windows without a role whose flags say so; it asks at every turn. Set only while the popover
/// is shown: the programs that links open would inherit it, and such windows of theirs never appear.
constexpr auto windowsWithoutRole = "QT_WAYLAND_USE_BYPASSWINDOWMANAGERHINT";

} // namespace

/// What is known of one screen: an invisible surface among the bars tells what those leave free, one above
/// them the rest.
struct LayerWindowServer::ScreenView {
    QPointer<QScreen> screen;
    WaylandOwned<wl_surface> probeSurface;
    std::unique_ptr<LayerSurface> probe;
    std::shared_ptr<void> probePicture;
    std::optional<QSize> free;
    std::unique_ptr<ScreenOverlay> overlay;
};

LayerWindowServer::LayerWindowServer(OverlayEvents& events) : events(events) {
    for (QTimer* timer : {&patience, &hiding, &absence})
        timer->setSingleShot(true);
    hiding.setInterval(patienceWithScreen);
    absence.setInterval(longestWayOfFocus);
    connect(&patience, &QTimer::timeout, this, &LayerWindowServer::answer);
    connect(&hiding, &QTimer::timeout, this, &LayerWindowServer::raiseIfHidden);
    connect(&absence, &QTimer::timeout, this, &LayerWindowServer::closeIfAbsent);
    connect(qApp, &QGuiApplication::focusWindowChanged, this, [this](QWindow* window) {
        if (!window && popover)
            absence.start();
    });
}

LayerWindowServer::~LayerWindowServer() = default;

void LayerWindowServer::preparePopover(QWidget& window, ChangeHandler) {
    window.setWindowFlag(Qt::BypassWindowManagerHint);
}

void LayerWindowServer::findSite(QWidget& window, const QRect& anchor, SiteHandler found) {
    popover = &window;
    siteAnchor = anchor;
    siteHandler = std::move(found);
    if (shell.isReady())
        lookAtScreens();
    else // right after the start
        shellKnown = shell.afterAnswers([this] { lookAtScreens(); });
}

void LayerWindowServer::lookAtScreens() {
    if (!shell.isReady()) { // it went away since somebody asked for it
        popover->winId();
        qtprivate::closeAsUser(*popover->windowHandle());
        return;
    }
    if (views.empty()) {
        for (QScreen* screen : QGuiApplication::screens())
            lookAtScreen(*screen);
        if (shell.windowMaker())
            windowProbe = std::make_unique<MaximizedSize>(shell, [this](QSize size) {
                maximized = size;
                answerWhenKnown();
            });
    }
    patience.start(patienceWithCompositor);
    answerWhenKnown();
}

void LayerWindowServer::lookAtScreen(QScreen& screen) {
    ScreenView& view = *views.emplace_back(std::make_unique<ScreenView>());
    view.screen = &screen;
    view.overlay = std::make_unique<ScreenOverlay>(
        shell, screen, events,
        ScreenOverlay::Handlers{[this] { answerWhenKnown(); },
                                [this] {
                                    // Later: the overlay is still calling.
                                    QMetaObject::invokeMethod(this, &LayerWindowServer::leaveScreens,
                                                              Qt::QueuedConnection);
                                }});
    view.probeSurface = shell.newSurface();
    view.probe = std::make_unique<LayerSurface>(shell, *view.probeSurface, screen, LayerSurface::Bars::Avoid,
                                                LayerSurface::Handlers{[this, &view](QSize size) {
                                                                           view.free = size;
                                                                           appear(view);
                                                                           answerWhenKnown();
                                                                       },
                                                                       nullptr});
}

void LayerWindowServer::appear(ScreenView& view) {
    if (view.probePicture)
        return;
    // Some compositors look where the pointer is when a surface appears, and do not know that one's input
    // yet. This one takes none: the pointer goes to the one above, which is there already.
    shell.letThrough(*view.probeSurface, QRegion(QRect(QPoint(), view.screen->size())));
    view.probePicture = shell.showNothing(*view.probeSurface, QSize(1, 1));
}

void LayerWindowServer::answerWhenKnown() {
    const bool knowsSizes =
        std::all_of(views.begin(), views.end(), [](const auto& view) { return view->free.has_value(); });
    if (!siteHandler || !knowsSizes || (windowProbe && !maximized))
        return;
    if (pointer() || !shell.hasPointer())
        answer();
    else if (!allShown)
        allShown = shell.afterAnswers([this] { patience.start(patienceWithPointer); });
}

std::optional<QPoint> LayerWindowServer::pointer() const {
    for (const auto& view : views) {
        if (const auto place = view->overlay->pointer())
            return place;
    }
    return std::nullopt;
}

void LayerWindowServer::answer() {
    patience.stop();
    allShown.reset();
    openedAtPointer = pointer().has_value();
    if (const SiteHandler found = std::exchange(siteHandler, nullptr))
        found(siteAnchor.isEmpty() ? siteNearby() : siteAtIcon());
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
           !availableAround(place, view->screen->geometry(), freeOf(view, *view->screen), gapAroundBars())
                .contains(place);
}

QSize LayerWindowServer::freeOf(const ScreenView* view, const QScreen& screen) const {
    const QSize whole = screen.geometry().size();
    const QSize free = view && view->free ? *view->free : whole;
    return maximized && !maximized->isEmpty() ? free.boundedTo(*maximized) : free;
}

int LayerWindowServer::gapAroundBars() const {
    const bool isPlasma = qgetenv("XDG_CURRENT_DESKTOP").split(':').contains("KDE");
    return isPlasma && shell.isOfPlasmaSix() ? plasmasGap : 0;
}

std::optional<QPoint> LayerWindowServer::placeIn(QPoint number) const {
    const QPoint inScreensPixels = pixels::toDeviceIndependent(number, pixels::screenAt(number));
    for (const QPoint place : {number, inScreensPixels}) {
        const ScreenView* view = viewAt(place);
        // Some hosts count from the icon's own corner.
        if (isInBar(place) && !QRect(view->screen->geometry().topLeft(), 2 * iconSize).contains(place))
            return place;
    }
    return std::nullopt;
}

std::optional<QPoint> LayerWindowServer::placeOfIcon(QPoint number) const {
    const auto place = pointer();
    if (place && isInBar(*place))
        return place;
    const auto named = placeIn(number);
    return named ? named : place;
}

QPoint LayerWindowServer::likelyPlaceOn(const QScreen& screen) const {
    const QSize free = freeOf(viewAt(screen.geometry().center()), screen);
    return likelyPlaceOfIcon(screen.geometry(), free,
                             CurrentLocale::runsRightToLeft() ? Qt::RightToLeft : Qt::LeftToRight);
}

PopoverSite LayerWindowServer::siteNearby() const {
    const QScreen& main = *QGuiApplication::primaryScreen();
    const QPoint place = pointer().value_or(likelyPlaceOn(main));
    const ScreenView* view = viewAt(place);
    const QScreen& screen = view ? *view->screen : main;
    const QSize bars = screen.size() - freeOf(view, screen);
    // Nobody knows which side they are at.
    const QRect available =
        screen.geometry().adjusted(bars.width(), bars.height(), -bars.width(), -bars.height());
    return {QRect(place, QSize(1, 1)), screen.geometry(), available, PopoverSite::Anchor::Nearby};
}

PopoverSite LayerWindowServer::siteAtIcon() {
    if (const auto place = placeOfIcon(siteAnchor.center()))
        latestPlace = place;
    QPoint place = latestPlace.value_or(QPoint());
    const ScreenView* view = latestPlace ? viewAt(place) : nullptr;
    const QScreen* screen = view ? view->screen.data() : QGuiApplication::primaryScreen();
    if (!view) {
        place = likelyPlaceOn(*screen);
        view = viewAt(place);
    }
    const QSize free = freeOf(view, *screen);
    const QRect available = availableAround(place, screen->geometry(), free, gapAroundBars());
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
        if (isSeen)
            leaveOutOwnWindows();
        return;
    }
    window.setScreen(screen);
    window.winId();
    // On a locked screen nobody tells where the pointer is, and the keyboard is for the password.
    const bool withoutClick = siteAnchor.isEmpty() && openedAtPointer;
    role = std::make_unique<LayerSurface>(
        shell, *qtprivate::surfaceOf(*window.windowHandle()), *screen, onScreen,
        withoutClick ? LayerSurface::Keyboard::AtOnce : LayerSurface::Keyboard::OnDemand,
        LayerSurface::Handlers{[this, &window](QSize) { appear(window); },
                               [&window] { qtprivate::closeAsUser(*window.windowHandle()); }});
    qputenv(windowsWithoutRole, "1");
    qApp->installEventFilter(this);
}

void LayerWindowServer::appear(QWidget& window) {
    if (window.isVisible())
        return;
    // Qt asks for the scale when it shows the window: painted before the answer it would be painted twice.
    window.setUpdatesEnabled(!shell.scalesByFractions());
    window.show();
    wl_surface& surface = *qtprivate::surfaceOf(*window.windowHandle());
    if (shell.scalesByFractions())
        scaleKnown = shell.afterAnswers([this, &window, &surface] {
            shell.countPixelsAsTheyAre(surface);
            window.setUpdatesEnabled(true);
        });
    // A way through to it any sooner would be one to what is behind it, which might take the keyboard.
    seen = shell.whenSeen(surface, [this] {
        isSeen = true;
        hiding.stop();
        leaveOutOwnWindows();
    });
    hiding.start();
}

void LayerWindowServer::raiseIfHidden() {
    if (role && openedAtPointer) // and the screen is not locked
        role->moveTo(LayerSurface::Layer::Overlay);
}

void LayerWindowServer::closeIfAbsent() {
    // The pointer is over one of these surfaces as long as nobody took the whole seat, as those who lock it
    // do.
    if (role && shell.hasPointer() && !pointer() && !underPointer && !QGuiApplication::focusWindow())
        qtprivate::closeAsUser(*popover->windowHandle());
}

bool LayerWindowServer::hidePopover(QWidget& window) {
    qApp->removeEventFilter(this);
    siteHandler = nullptr;
    shellKnown.reset();
    allShown.reset();
    scaleKnown.reset();
    seen.reset();
    isSeen = false;
    underPointer = nullptr;
    for (QTimer* timer : {&patience, &hiding, &absence})
        timer->stop();
    for (const auto& popUp : std::exchange(popUps, {})) {
        if (popUp)
            popUp->windowHandle()->setParent(nullptr); // else it would go with the popover's window
    }
    role.reset();
    window.hide();
    qunsetenv(windowsWithoutRole);
    popover = nullptr;
    leaveScreens();
    return false; // Qt makes its surface when it shows the window, too late for a role
}

void LayerWindowServer::leaveScreens() {
    // As long as the button is down its release is on the way: a bar that got that would take it for a click.
    const bool pressUnderWay =
        std::any_of(views.begin(), views.end(), [](const auto& view) { return view->overlay->isPressed(); });
    if (popover || pressUnderWay)
        return;
    views.clear();
    windowProbe.reset();
    maximized.reset();
}

bool LayerWindowServer::eventFilter(QObject* watched, QEvent* event) {
    if (watched->isWindowType())
        followPointer(*watched, event->type());
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
        if (!popover->childAt(press->position().toPoint()))
            events.handlePress(press->button(), press->globalPosition().toPoint());
    }
    return false;
}

void LayerWindowServer::followPointer(QObject& window, QEvent::Type event) {
    if (event == QEvent::Enter) {
        underPointer = &window;
    } else if (event == QEvent::Leave && underPointer == &window) {
        underPointer = nullptr;
        absence.start();
    }
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
        view->overlay->leaveOut(own);
}

} // namespace velloren
