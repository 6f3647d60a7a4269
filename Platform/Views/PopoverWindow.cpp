#include "Platform/Views/PopoverWindow.h"

#include "Platform/Views/PopoverSurroundings.h"

#include <QAbstractButton>
#include <QCloseEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QPainter>
#include <QScreen>

#include <algorithm>

namespace velloren {

namespace {

constexpr int rimMargin = 1;
constexpr QColor rimColor(0, 0, 0, 46);

/// The margin of the arrow's side alone; none without an arrow.
QMargins marginAt(std::optional<ArrowEdge> side, int width) {
    const auto at = [&](ArrowEdge each) { return side == each ? width : 0; };
    return {at(ArrowEdge::Left), at(ArrowEdge::Top), at(ArrowEdge::Right), at(ArrowEdge::Bottom)};
}

/// None on the arrow's side: a window that reaches into the panel gets moved away by window managers.
QMargins marginsAround(std::optional<ArrowEdge> arrowEdge, int margin) {
    return QMargins(margin, margin, margin, margin) - marginAt(arrowEdge, margin);
}

/// How far the middle of the arrow's foot is from its tip, along the arrow as it is drawn for a top edge.
double arrowLean(ArrowEdge edge, int tip, QSize frame) {
    constexpr int margin = PopoverMetrics::cornerRadius + PopoverMetrics::arrowHalfWidth;
    const bool horizontal = edge == ArrowEdge::Top || edge == ArrowEdge::Bottom;
    const int length = horizontal ? frame.width() : frame.height();
    const int lean = std::clamp(tip, margin, std::max(margin, length - margin)) - tip;
    // The turn to these two edges reverses the direction.
    return edge == ArrowEdge::Bottom || edge == ArrowEdge::Left ? -lean : lean;
}

/// The keyboard comes a moment after the window: looking another way from then on it would be drawn twice.
QPalette lookingActive(QPalette palette) {
    for (int role = 0; role < QPalette::NColorRoles; ++role) {
        const auto each = static_cast<QPalette::ColorRole>(role);
        palette.setBrush(QPalette::Inactive, each, palette.brush(QPalette::Active, each));
    }
    return palette;
}

} // namespace

void PopoverFrameView::setArrow(std::optional<ArrowEdge> edge, int centre) {
    arrowEdge = edge;
    arrowCentre = centre;
    updateShape();
    update();
}

QRect PopoverFrameView::contentRect() const {
    return rect().marginsRemoved(marginAt(arrowEdge, PopoverMetrics::arrowLength));
}

void PopoverFrameView::resizeEvent(QResizeEvent* event) {
    View::resizeEvent(event);
    updateShape();
}

void PopoverFrameView::updateShape() {
    QPainterPath bubble;
    bubble.addRoundedRect(contentRect(), PopoverMetrics::cornerRadius, PopoverMetrics::cornerRadius);
    arrowShape = arrowEdge ? shapeOfArrow(*arrowEdge) : QPainterPath();
    shape = bubble.united(arrowShape);
}

QPainterPath PopoverFrameView::shapeOfArrow(ArrowEdge edge) const {
    constexpr double halfWidth = PopoverMetrics::arrowHalfWidth;
    constexpr double length = PopoverMetrics::arrowLength;
    // Drawn as the arrow of a top edge, its tip at the origin, then turned to the edge it stands on. Near a
    // corner it leans: its foot keeps clear of the rounding.
    const double foot = arrowLean(edge, arrowCentre, size());
    QPainterPath arrow;
    arrow.moveTo(foot - halfWidth, length + 1);
    arrow.lineTo(foot - halfWidth, length);
    arrow.cubicTo(foot - halfWidth / 2, length, -halfWidth / 4, 0, 0, 0);
    arrow.cubicTo(halfWidth / 4, 0, foot + halfWidth / 2, length, foot + halfWidth, length);
    arrow.lineTo(foot + halfWidth, length + 1);
    arrow.closeSubpath();

    const bool isHorizontal = edge == ArrowEdge::Top || edge == ArrowEdge::Bottom;
    QTransform toEdge;
    if (isHorizontal)
        toEdge.translate(arrowCentre, edge == ArrowEdge::Top ? 0 : height());
    else
        toEdge.translate(edge == ArrowEdge::Left ? 0 : width(), arrowCentre);
    return toEdge.rotate(90 * int(edge)).map(arrow);
}

PopoverWindow::PopoverWindow()
    : composited(WindowServer::shared().isComposited()), pixelsPerPoint(screen()->devicePixelRatio()) {
    setWindowFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint |
                   Qt::NoDropShadowWindowHint);
    setAttribute(Qt::WA_TranslucentBackground, composited);
    WindowServer::shared().preparePopover(*this, [this] {
        // A window made without an alpha channel stays so.
        composited = composited && WindowServer::shared().isComposited();
        place();
    });
    setWindowTitle(QGuiApplication::applicationDisplayName());
    setPalette(lookingActive(palette()));
}

bool PopoverWindow::suitsDisplay() const {
    const bool now = WindowServer::shared().isComposited();
    // What Qt paints into is not enlarged with the window when the scale changes while that is hidden.
    return composited == now && testAttribute(Qt::WA_TranslucentBackground) == now &&
           pixelsPerPoint == screen()->devicePixelRatio();
}

void PopoverWindow::setContent(QWidget& view) {
    content = &view;
    content->installEventFilter(this);
    frame = std::make_unique<PopoverFrameView>(this);
    moveToSuperview(*content, frame.get());
    content->show();
    frame->show();
    watchScreens();
    setFocus(); // else the first button has it, and looks pressed to somebody with a mouse
}

void PopoverWindow::watchScreens() {
    // Later: Qt is still busy with its windows when it says so. Never once this showing's frame is gone.
    const auto changed = [this] { requestClose(); };
    connect(qApp, &QGuiApplication::screenAdded, frame.get(), changed, Qt::QueuedConnection);
    connect(qApp, &QGuiApplication::screenRemoved, frame.get(), changed, Qt::QueuedConnection);
    connect(qApp, &QGuiApplication::primaryScreenChanged, frame.get(), changed, Qt::QueuedConnection);
    for (const QScreen* screen : QGuiApplication::screens())
        connect(screen, &QScreen::geometryChanged, frame.get(), changed, Qt::QueuedConnection);
}

void PopoverWindow::releaseContent() {
    content->removeEventFilter(this);
    moveToSuperview(*content, nullptr);
    content = nullptr;
    frame.reset();
    site.reset();
}

void PopoverWindow::showAt(const QRect& anchor) {
    focusesFirst = anchor.isEmpty();
    WindowServer::shared().findSite(*this, anchor, [this](const PopoverSite& found) {
        site = found;
        place();
    });
}

void PopoverWindow::place() {
    if (!site || !content)
        return;
    const QSize size =
        content->sizeHint().expandedTo(content->minimumSize()).boundedTo(content->maximumSize());
    const PopoverPlacement placement = placePopover(*site, size);

    const QMargins margins = marginsAround(placement.arrowEdge, composited ? popoverShadowMargin : rimMargin);
    // A window that reaches over the screen's edge gets moved away, too.
    const QRect geometry = placement.frame.marginsAdded(margins).intersected(site->screen);
    frame->setGeometry(placement.frame.translated(-geometry.topLeft()));
    frame->setArrow(placement.arrowEdge, placement.arrowCentre);
    content->setGeometry(frame->contentRect());
    if (!composited) {
        QPainterPathStroker rim;
        rim.setWidth(2 * rimMargin);
        const QPainterPath outline = frame->outline()->translated(frame->pos());
        setMask(outline.united(rim.createStroke(outline)).toFillPolygon().toPolygon());
    }
    WindowServer::shared().showPopover(*this, geometry);
    if (focusesFirst)
        focusFirst();
}

/// Once more for each layout: rows come and go until the main app has answered.
void PopoverWindow::focusFirst() {
    setFocus();
    Window::focusNextPrevChild(true);
}

bool PopoverWindow::focusNextPrevChild(bool next) {
    focusesFirst = false;
    return Window::focusNextPrevChild(next);
}

void PopoverWindow::paintEvent(QPaintEvent*) {
    if (!frame)
        return;
    QPainter painter(this);
    if (!composited) // what is translucent shows black in a window that was made to be blended
        painter.fillRect(rect(), palette().window());
    painter.setRenderHint(QPainter::Antialiasing);
    drawPopoverSurroundings(painter, frame->contentRect().translated(frame->pos()));
    QPainterPathStroker rim;
    rim.setWidth(2 * rimMargin);
    painter.fillPath(rim.createStroke(frame->arrow().translated(frame->pos())), rimColor);
}

void PopoverWindow::requestClose() {
    if (closeRequested)
        closeRequested();
}

void PopoverWindow::closeEvent(QCloseEvent* event) {
    event->ignore();
    if (event->spontaneous())
        requestClose();
}

void PopoverWindow::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Escape:
        requestClose();
        return;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (auto* button = qobject_cast<QAbstractButton*>(focusWidget()))
            button->click();
        return;
    case Qt::Key_Down:
    case Qt::Key_Up: // a button with the focus sees to them itself
        focusNextPrevChild(event->key() == Qt::Key_Down);
        return;
    default:
        Window::keyPressEvent(event);
    }
}

bool PopoverWindow::eventFilter(QObject* watched, QEvent* event) {
    if (watched == content && event->type() == QEvent::LayoutRequest)
        place();
    return Window::eventFilter(watched, event);
}

} // namespace velloren
