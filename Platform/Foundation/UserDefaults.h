#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace velloren {

/// Settings of one INI file. A key reads "group/key", or "key" outside any group; texts are UTF-8.
///
/// The file is read once, when the object is made; make another to read it again. A file that is missing
/// or unreadable counts as empty, and what cannot be understood in it
/// as not set. An empty path stands for a file that is never there. Main thread only.
class UserDefaults {
  public:
    /// What registerDefaults takes: texts by key; a Boolean is "true" or "false".
    using Registration = std::map<std::string, std::string, std::less<>>;

    explicit UserDefaults(std::filesystem::path file);

    /// The defaults of this process, provided through SharedInstance<UserDefaults>.
    static UserDefaults& standardUserDefaults();

    /// The text set for `key`, else the one registered for it.
    [[nodiscard]] std::optional<std::string> stringForKey(const std::string& key) const;

    /// The Boolean set for `key`, else the one registered for it. A Boolean is true, false, 1 or 0; any other
    /// text counts as not set.
    [[nodiscard]] std::optional<bool> boolForKey(const std::string& key) const;

    /// Adds values for keys that the file does not set. They are never written to the file.
    void registerDefaults(const Registration& defaults);

    /// What `set` takes: texts by key; none removes what was there.
    using Changes = std::map<std::string, std::optional<std::string>, std::less<>>;

    /// Changes these together, here and in the file at once; the file's other contents stay as they are. When
    /// the file cannot be read as a whole or written, the change lasts as long as this object. Keys are of
    /// ASCII letters, digits and "_-.", but for the "/" behind the group.
    void set(const Changes& changes);

  private:
    std::filesystem::path file;
    Registration values;
    Registration registered;
};

} // namespace velloren
