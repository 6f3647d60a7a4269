#pragma once

#include "CrashReporting/Crashlytics.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace velloren {

/// Leaves a report of a crash in a folder of the user's and sends it nowhere. Each start keeps the newest
/// ten.
///
/// A crash is a fatal signal (an uncaught exception and a fatal error end in one). The report tells the time,
/// the version, the signal, the exception or the error, the stack of the thread that crashed and the last log
/// lines; then the signal's default action happens, so that the exit status and the core dump are those of a
/// process without this.
class LocalCrashlytics final : public Crashlytics {
  public:
    /// `folder` is made when needed; none, or one that cannot be made, keeps no reports. `version` is shown
    /// in them; none is unknown.
    LocalCrashlytics(std::optional<std::filesystem::path> folder, const std::optional<std::string>& version);

    /// With the reports in the product's state folder, and the program's own version.
    static std::unique_ptr<LocalCrashlytics> ofThisUser();

    /// Also has exceptions that reach the event loop logged and survived where the user's defaults say so
    /// ("NSApplicationCrashOnExceptions" is false).
    void start() override;

    /// Remembers a log line for the next report. Any thread, also before the start.
    static void recordLine(std::string_view line);

  private:
    std::optional<std::filesystem::path> folder;
    std::string version;
};

} // namespace velloren
