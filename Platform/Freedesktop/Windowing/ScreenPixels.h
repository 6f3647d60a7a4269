#pragma once

#include <QPoint>
#include <QRect>

class QScreen;

/// Between the pixels that an X server and the hosts on it count in, and Qt's device-independent ones. A
/// screen's top left corner has the same place in both. Main thread only.
namespace velloren::pixels {

/// The screen that shows `place`, in the screens' own pixels; where none does, the primary one.
[[nodiscard]] const QScreen& screenAt(QPoint place);

/// The other way round for a device-independent place.
[[nodiscard]] const QScreen& screenAtDeviceIndependent(QPoint place);

/// What the desktop keeps free on the screen; all of it where a bar on an inner edge leaves nothing.
[[nodiscard]] QRect availableOn(const QScreen& screen);

[[nodiscard]] QPoint toDeviceIndependent(QPoint place, const QScreen& screen);
/// No smaller than `rect`.
[[nodiscard]] QRect toDeviceIndependent(const QRect& rect, const QScreen& screen);

/// The middle of the pixels that `place` stands for.
[[nodiscard]] QPoint fromDeviceIndependent(QPoint place, const QScreen& screen);
[[nodiscard]] QRect fromDeviceIndependent(const QRect& rect, const QScreen& screen);

} // namespace velloren::pixels
