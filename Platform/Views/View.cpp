#include "Platform/Views/View.h"

#include <QPaintEvent>
#include <QPainter>

#include <algorithm>
#include <utility>

namespace velloren {

namespace {

constexpr std::chrono::milliseconds animationFrame{16};

Window* windowOf(const QWidget& widget) {
    return qobject_cast<Window*>(widget.window());
}

std::vector<View*> viewsIn(QWidget& root) {
    const auto below = root.findChildren<View*>();
    std::vector<View*> views(below.begin(), below.end());
    if (auto* view = qobject_cast<View*>(&root))
        views.push_back(view);
    return views;
}

} // namespace

View::View(QWidget* parent) : QWidget(parent) {
    animationFrames.setInterval(animationFrame);
    animationFrames.setTimerType(Qt::PreciseTimer);
    connect(&animationFrames, &QTimer::timeout, this, [this] {
        runAnimationsWhileVisible();
        update();
    });
}

void View::setWantsLayer(bool wants) {
    if (wants == wantsLayer())
        return;
    ownLayer = wants ? std::make_shared<Layer>() : nullptr;
    if (ownLayer)
        ownLayer->setChangeHandler([this] { layerChanged(); });
    setNeedsDisplay();
}

void View::setNeedsDisplay() {
    update();
    displayNeeded();
}

Window* View::hostWindow() const {
    return windowOf(*this);
}

QRect View::rectOnScreen(const QRect& rect) const {
    return {mapToGlobal(rect.topLeft()), rect.size()};
}

void View::addTrackingArea(const std::shared_ptr<TrackingArea>& area) {
    areas.push_back(area);
}

void View::removeTrackingArea(const std::shared_ptr<TrackingArea>& area) {
    std::erase(areas, area);
}

void View::displayNeeded() {
    if (auto* superview = qobject_cast<View*>(parentWidget()))
        superview->displayNeeded();
}

void View::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setTransform(layerRotation(), true);
    painting = true;
    drawRect(painter, event->rect());
    painting = false;
    if (ownLayer)
        ownLayer->draw(painter, rect(), backgroundShape());
}

void View::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    updateTrackingAreas();
}

void View::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    runAnimationsWhileVisible();
}

void View::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    animationFrames.stop();
    leaveTrackedArea();
}

void View::enterEvent(QEnterEvent* event) {
    QWidget::enterEvent(event);
    const QPoint position = event->position().toPoint();
    const bool tracked = std::any_of(areas.begin(), areas.end(),
                                     [&](const auto& area) { return area->rect.contains(position); });
    if (tracked && !pointerInside) {
        pointerInside = true;
        mouseEntered();
    }
}

void View::leaveEvent(QEvent* event) {
    QWidget::leaveEvent(event);
    leaveTrackedArea();
}

void View::layerChanged() {
    runAnimationsWhileVisible();
    if (!painting)
        setNeedsDisplay();
}

void View::leaveTrackedArea() {
    if (std::exchange(pointerInside, false))
        mouseExited();
}

void View::runAnimationsWhileVisible() {
    const bool animating = ownLayer && isVisible() && ownLayer->isAnimating(Layer::Clock::now());
    if (animating != animationFrames.isActive())
        animating ? animationFrames.start() : animationFrames.stop();
}

QTransform View::layerRotation() const {
    QTransform transform;
    const auto now = Layer::Clock::now();
    for (const View* view = this; view; view = qobject_cast<const View*>(view->parentWidget())) {
        if (!view->ownLayer || !view->ownLayer->isAnimating(now))
            continue;
        const QPoint centre = view->ownLayer->position().toPoint();
        const QPointF here = view == this ? centre : mapFrom(view, centre);
        transform *= QTransform::fromTranslate(-here.x(), -here.y()) *
                     QTransform().rotateRadians(view->ownLayer->rotation(now)) *
                     QTransform::fromTranslate(here.x(), here.y());
    }
    return transform;
}

std::optional<QPainterPath> View::backgroundShape() const {
    auto own = outline();
    const auto* superview = qobject_cast<const View*>(parentWidget());
    const auto around = superview ? superview->outline() : std::nullopt;
    if (!around)
        return own;
    const QPainterPath shape = around->translated(-pos());
    return own ? own->intersected(shape) : shape; // a view paints within its rectangle anyway
}

void moveToSuperview(QWidget& view, QWidget* superview) {
    Window* const former = windowOf(view);
    Window* const next = superview ? windowOf(*superview) : nullptr;
    const auto moved = former == next ? std::vector<View*>() : viewsIn(view);
    for (View* each : moved)
        each->viewWillMoveToWindow(next);
    view.setParent(superview);
    for (View* each : moved)
        each->viewDidMoveToWindow();
}

} // namespace velloren
