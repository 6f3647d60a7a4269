#pragma once

#include <optional>
#include <string>

namespace velloren {

/// What tells of the bar's appearance. The first that tells anything counts: what is seen is so; a setting of
/// the bar's own is meant for it; a desktop's customary bar stays as it is whatever applications look like,
/// unless somebody gave it another look; and applications are dark or light beside bars of either kind.
enum class AppearanceSource {
    Pixels,       ///< the bar itself, on the screen
    BarSetting,   ///< the desktop's setting for its bar
    CustomaryBar, ///< the bar that such a desktop comes with
    ColorScheme,  ///< what the user wants applications to look like
};

/// How the bar that holds the status items looks. Main thread only.
class Appearance {
  public:
    static const std::string vibrantDark;
    static const std::string vibrantLight;

    /// What the first source says that says anything, else what the palette suggests: one of the two names
    /// above.
    [[nodiscard]] static const std::string& currentName();

    /// Whether that is what the bar looks like. Otherwise it may look the other way, so what stands on it has
    /// to be told from both.
    [[nodiscard]] static bool isSeen();

    /// What the source says, kept until it says otherwise; none where it says nothing. Whether anything of
    /// the above changed.
    static bool setName(AppearanceSource source, const std::optional<std::string>& name);
};

} // namespace velloren
