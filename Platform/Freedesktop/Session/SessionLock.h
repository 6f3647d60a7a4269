#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <QVariantMap>

#include <functional>
#include <utility>

namespace velloren {

/// Whether the screen is locked, as the login manager and the desktops' screen savers say; unlocked as long
/// as nobody says otherwise. Asks without waiting. Main thread only.
class SessionLock final : public QObject {
    Q_OBJECT

  public:
    /// Called each time the screen was locked, or is about to be.
    void setLockedHandler(std::function<void()> handler) { locked = std::move(handler); }

    /// Starts to listen. A bus that is not connected has nobody who says anything.
    void follow(const QDBusConnection& sessionBus, const QDBusConnection& systemBus);

    [[nodiscard]] bool isLocked() const { return hintedLocked || screenSaverActive; }

    /// Runs it at once, or when the screen is unlocked; of several that wait, the latest.
    void whenUnlocked(std::function<void()> action);

  private Q_SLOTS:
    void screenSaverChanged(bool active);
    void lockRequested();
    void sessionChanged(const QString& interface, const QVariantMap& properties);

  private:
    void followSession(const QDBusConnection& systemBus, const QString& path);
    void set(bool& source, bool now);

    std::function<void()> locked;
    std::function<void()> waiting;
    bool hintedLocked = false; ///< what the locker tells the login manager
    bool screenSaverActive = false;
};

} // namespace velloren
