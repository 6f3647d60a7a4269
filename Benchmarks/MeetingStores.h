#pragma once

#include "Tests/Support/TemporaryDirectory.h"

#include <string>

namespace velloren {

/// Stores of several kinds to measure with, each made once, of which one is in use as the user's own. The
/// user is logged in.
class MeetingStores {
  public:
    enum class Kind {
        Latin,        ///< three upcoming meetings, their titles in Latin letters
        OtherScripts, ///< one each in Latin letters, in Chinese with an emoji, and in Arabic
        ManyUpcoming, ///< a million upcoming ones
        ManyPast      ///< three upcoming ones behind a million past ones
    };

    MeetingStores();

    /// From the agent's next look at its store on.
    void use(Kind kind) const;

  private:
    [[nodiscard]] std::filesystem::path fileOf(Kind kind) const;

    TemporaryDirectory folder;
};

} // namespace velloren
