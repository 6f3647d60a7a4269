#include "VellorenMenu/MenubarIcon.h"

#include "Platform/Desktop/Appearance.h"
#include "Platform/Foundation/FatalError.h"

#include <QPointer>

#include <cmath>

namespace velloren {

namespace {

constexpr RunLoop::Seconds blinkInterval{2.0};
constexpr double preferredScale = 2.0;
const QColor highlightBlue = QColor::fromRgb(0, 80, 255);

} // namespace

MenubarIcon::MenubarIcon(const QRect& frame) {
    setGeometry(frame);
    setWantsLayer(true);
}

MenubarIcon::~MenubarIcon() {
    if (syncLayer)
        syncLayer->removeFromSuperlayer();
}

void MenubarIcon::awakeFromNib() {
    View::awakeFromNib();
    setWantsLayer(true);
}

void MenubarIcon::setHighlighted(bool highlight) {
    highlighted = highlight;
    applyHighlight();
}

void MenubarIcon::mouseDown(const Event&) {
    if (pressDelegate)
        pressDelegate->didMouseDown(*this);
}

void MenubarIcon::drawRect(QPainter&, const QRect&) {
    applyAppearance();
}

void MenubarIcon::applyState() {
    if (syncState == State::notSyncing) {
        syncIconBlink = SyncIconBlink::notSyncingBlink;
        if (timer)
            timer->invalidate();
        timer = nullptr;
        rebuildSyncLayer();
        return;
    }
    syncIconBlink = SyncIconBlink::syncingBlink;
    rebuildSyncLayer();
    // A timer that is already there goes on beside the new one; the icon may go before such a timer does.
    timer = RunLoop::main().scheduleRepeating(blinkInterval, [icon = QPointer(this)] {
        if (icon)
            icon->syncIconBlinking();
    });
}

Image MenubarIcon::currentImage() const {
    const bool white = darkMode || highlighted;
    const bool inSync = syncState == State::syncing && syncIconBlink == SyncIconBlink::syncingBlink;
    const QString name = QStringLiteral("menuIcon%1%2")
                             .arg(white ? QStringLiteral("White") : QStringLiteral("Black"),
                                  inSync ? QStringLiteral("InSync") : QStringLiteral("Default"));
    auto image = Image::named(name);
    if (!image)
        fatalError("the image " + name.toStdString() + " is missing");
    return *image;
}

void MenubarIcon::rebuildSyncLayer() {
    if (syncLayer)
        syncLayer->removeFromSuperlayer();
    syncImage = currentImage();

    syncLayer = std::make_shared<Layer>();
    syncLayer->setBounds(QRectF(QPointF(), syncImage->size()));
    syncLayer->setAnchorPoint({0.5, 0.5});
    syncLayer->setPosition({std::round(width() * 0.5), std::round(height() * 0.5)});
    syncLayer->setRasterizationScale(syncImage->recommendedLayerContentsScale(preferredScale));
    syncLayer->setContents(syncImage);
    if (layer())
        layer()->addSublayer(syncLayer);
}

void MenubarIcon::applyHighlight() {
    if (layer())
        layer()->setBackgroundColor(highlighted ? std::optional(highlightBlue) : std::nullopt);
    rebuildSyncLayer();
}

void MenubarIcon::applyAppearance() {
    darkMode = Appearance::currentName() == Appearance::vibrantDark;
    rebuildSyncLayer();
}

void MenubarIcon::syncIconBlinking() {
    toggleBlink();
}

void MenubarIcon::toggleBlink() {
    syncIconBlink = syncIconBlink == SyncIconBlink::syncingBlink ? SyncIconBlink::notSyncingBlink
                                                                 : SyncIconBlink::syncingBlink;
    rebuildSyncLayer();
}

} // namespace velloren
