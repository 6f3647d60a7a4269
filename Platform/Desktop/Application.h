#pragma once

#include <string>

namespace velloren {

/// Told about the application's life; all on the main thread.
class ApplicationDelegate {
  public:
    enum class TerminateReply { TerminateCancel = 0, TerminateNow = 1 };

    ApplicationDelegate() = default;
    ApplicationDelegate(const ApplicationDelegate&) = delete;
    ApplicationDelegate& operator=(const ApplicationDelegate&) = delete;
    virtual ~ApplicationDelegate() = default;

    virtual void applicationDidFinishLaunching() = 0;
    /// The user started the application once more, or asked for it in another way.
    virtual void applicationShouldHandleReopen() = 0;
    /// `sender` is the printed description of what asked.
    [[nodiscard]] virtual TerminateReply applicationShouldTerminate(const std::string& sender) = 0;
    virtual void applicationWillTerminate() = 0;
};

/// The application object on top of Qt's: it owns nothing, runs the loop and drives its delegate.
/// Main thread only; one per process, made after Qt's application object.
class Application {
  public:
    Application();
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;
    ~Application();

    /// The one there is; its absence stops the process.
    static Application& shared();

    [[nodiscard]] ApplicationDelegate* delegate() const { return currentDelegate; }

    /// Held weakly; none is allowed.
    void setDelegate(ApplicationDelegate* delegate) { currentDelegate = delegate; }

    /// Tells the delegate of the launch once the loop runs, and returns the process's exit status when it
    /// ends.
    int run();

    /// Tells the delegate, after the launch, that the user asked for the application again.
    void reopen();

    /// Asks the delegate, tells it, and ends the loop. The end of the desktop's session does it as well.
    void terminate(const std::string& sender);

    /// Whether it was terminated: the loop ends, or has ended.
    [[nodiscard]] bool isTerminating() const { return terminating; }

    [[nodiscard]] std::string description() const;

  private:
    ApplicationDelegate* currentDelegate = nullptr;
    bool terminating = false;
};

} // namespace velloren
