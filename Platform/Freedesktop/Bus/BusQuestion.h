#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QObject>

#include <functional>
#include <utility>

namespace velloren {

/// Asks somebody on the bus without waiting. `answered` gets the answer if that is of this type; anything
/// else is as good as no answer, and so is one that comes after `owner` has gone. Main thread only.
template <class Answer>
void ask(const QDBusConnection& bus, const QDBusMessage& question, QObject& owner,
         std::function<void(const Answer&)> answered) {
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(question), &owner);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, &owner,
                     [watcher, answered = std::move(answered)] {
                         const QDBusPendingReply<Answer> reply = *watcher;
                         if (reply.isValid())
                             answered(reply.value());
                         watcher->deleteLater();
                     });
}

} // namespace velloren
