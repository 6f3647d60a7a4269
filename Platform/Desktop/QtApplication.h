#pragma once

#include <QApplication>

#include <functional>
#include <string>

namespace velloren {

/// Qt's application object, which lets somebody decide about exceptions that reach the event loop and about
/// its end. It asks no session to start it again: its autostart entry does. Main thread only.
class QtApplication final : public QApplication {
    Q_OBJECT

  public:
    QtApplication(int& argc, char** argv);

    /// Is told of every such exception, by its description; the loop then goes on. Without a handler an
    /// exception is uncaught, and ends the process where it was thrown.
    static void setExceptionHandler(std::function<void(const std::string& exception)> handler);

    /// Is told when the session or Qt wants the application to end, which then is for it to do. Without a
    /// handler the loop just ends.
    static void setQuitHandler(std::function<void()> handler);

    bool notify(QObject* receiver, QEvent* event) override;

  protected:
    bool event(QEvent* event) override;
};

} // namespace velloren
