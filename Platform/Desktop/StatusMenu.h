#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace velloren {

/// One line of a status item's menu.
struct StatusMenuEntry {
    enum class Kind { Item, Separator };

    Kind kind = Kind::Item;
    /// What the entry stands for: one with the same key in the next content is the same entry, perhaps under
    /// another title.
    std::string key;
    std::string title;            ///< UTF-8 from anybody; shown as plain text, on one line
    std::function<void()> action; ///< none: the entry is shown and cannot be chosen
};

/// The menu that a status item's host shows by itself, where it does. Whoever fills it does so when it is
/// about to show, from then on also when its content changes, as hosts lay it out early; it costs nothing
/// before. Main thread only.
class StatusMenu {
  public:
    [[nodiscard]] const std::vector<StatusMenuEntry>& entries() const { return shownEntries; }

    /// May be called at any time, also while the menu shows.
    void setEntries(std::vector<StatusMenuEntry> entries) {
        shownEntries = std::move(entries);
        if (changed)
            changed();
    }

    /// Called each time before a host shows the menu, which takes the entries that are set on return.
    void setAboutToShowHandler(std::function<void()> handler) { showing = std::move(handler); }

    /// For the bar: the host is about to show the menu.
    void aboutToShow() const {
        if (showing)
            showing();
    }

    /// For the bar: called after the entries were set.
    void setChangedHandler(std::function<void()> handler) { changed = std::move(handler); }

  private:
    std::vector<StatusMenuEntry> shownEntries;
    std::function<void()> showing;
    std::function<void()> changed;
};

} // namespace velloren
