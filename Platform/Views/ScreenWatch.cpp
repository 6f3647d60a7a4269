#include "Platform/Views/ScreenWatch.h"

#include <QGuiApplication>
#include <QScreen>

namespace velloren {

ScreenWatch::ScreenWatch(const std::function<void()>& changed) {
    // Qt is still busy with its windows when it says so.
    connect(qApp, &QGuiApplication::screenAdded, this, changed, Qt::QueuedConnection);
    connect(qApp, &QGuiApplication::screenRemoved, this, changed, Qt::QueuedConnection);
    connect(qApp, &QGuiApplication::primaryScreenChanged, this, changed, Qt::QueuedConnection);
    for (const QScreen* screen : QGuiApplication::screens())
        connect(screen, &QScreen::geometryChanged, this, changed, Qt::QueuedConnection);
}

} // namespace velloren
