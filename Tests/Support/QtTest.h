#pragma once

#include "Platform/Desktop/QtApplication.h"
#include "Platform/Foundation/QtRunLoop.h"
#include "Platform/Foundation/SharedInstance.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <gtest/gtest.h>

#include <functional>
#include <memory>

namespace velloren {

/// The application object of a test program, on a display nobody sees.
class QtEnvironment final : public ::testing::Environment {
  public:
    void SetUp() override {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        application = std::make_unique<QtApplication>(count, arguments);
        QApplication::setQuitOnLastWindowClosed(false);
    }

    void TearDown() override { application.reset(); }

  private:
    char name[6] = "tests";
    char* arguments[2] = {name, nullptr};
    int count = 1;
    std::unique_ptr<QtApplication> application;
};

inline ::testing::Environment* const qtEnvironment = ::testing::AddGlobalTestEnvironment(new QtEnvironment);

/// A test of what needs an application object.
class QtTest : public ::testing::Test {
  protected:
    /// Runs the loop until `condition` holds. Whether it did within a generous limit.
    static bool waitUntil(const std::function<bool()>& condition) {
        constexpr int limit = 30000; // milliseconds
        QElapsedTimer elapsed;
        elapsed.start();
        while (!condition()) {
            if (elapsed.elapsed() > limit)
                return false;
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents, 20);
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        }
        return true;
    }

    static void runPendingEvents() {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
};

} // namespace velloren
