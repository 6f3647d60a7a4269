#include "Platform/Foundation/SharedInstance.h"
#include "Services/VLogger.h"
#include "Tests/Support/RecordingLogger.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>

namespace velloren {
namespace {

TEST(SharedLogger, WritesEachLevelAndNilForNoMessage) {
    RecordingLogger::install();
    auto& logger = dynamic_cast<RecordingLogger&>(Logger::sharedInstance());
    logger.info("one", {"Shared/VApp", "launch()"});
    logger.debug(std::nullopt, {"Shared/VApp", "launch()"});
    logger.error("", {"Shared/VApp", "launch()"});
    EXPECT_THAT(logger.lines(),
                testing::ElementsAre("info Shared/VApp launch() one", "debug Shared/VApp launch() nil",
                                     "error Shared/VApp launch() "));
    SharedInstance<Logger>::reset();
}

TEST(LogOrigins, KnowTheLineOfTheCall) {
    const LogOrigin origin("Shared/VApp", "launch()");
    EXPECT_EQ(origin.line, static_cast<unsigned>(__LINE__ - 1));
}

} // namespace
} // namespace velloren
