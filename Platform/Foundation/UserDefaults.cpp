#include "Platform/Foundation/UserDefaults.h"

#include "Platform/Foundation/IniTexts.h"
#include "Platform/Foundation/SharedInstance.h"

#include <QSettings>
#include <QString>

#include <fcntl.h>
#include <functional>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace velloren {

namespace {

constexpr off_t largestFile = off_t{1024} * 1024;

class Descriptor {
  public:
    explicit Descriptor(int number) : number(number) {}

    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    ~Descriptor() {
        if (number >= 0)
            ::close(number);
    }

    [[nodiscard]] bool isOpen() const { return number >= 0; }

    [[nodiscard]] int get() const { return number; }

  private:
    int number;
};

std::string contentsOf(const std::filesystem::path& file) {
    const Descriptor source(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));

    struct stat status {};

    if (!source.isOpen() || ::fstat(source.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
        status.st_size > largestFile)
        return {};

    std::string contents(static_cast<std::size_t>(status.st_size), '\0');
    std::size_t filled = 0;
    while (filled < contents.size()) {
        const ssize_t count = ::read(source.get(), contents.data() + filled, contents.size() - filled);
        if (count <= 0)
            break;
        filled += static_cast<std::size_t>(count);
    }
    contents.resize(filled);
    return contents;
}

std::optional<std::string> textIn(const UserDefaults::Registration& values, const std::string& key) {
    const auto found = values.find(key);
    if (found == values.end())
        return std::nullopt;
    return found->second;
}

std::optional<bool> booleanIn(const UserDefaults::Registration& values, const std::string& key) {
    const auto text = textIn(values, key);
    if (text == "true" || text == "1")
        return true;
    if (text == "false" || text == "0")
        return false;
    return std::nullopt;
}

void change(const std::filesystem::path& file, const std::function<void(QSettings&)>& edit) {
    std::error_code error;
    const auto type = std::filesystem::status(file, error).type();
    if (file.empty() ||
        (type != std::filesystem::file_type::regular && type != std::filesystem::file_type::not_found))
        return;
    QSettings settings(QString::fromStdString(file.string()), QSettings::IniFormat);
    edit(settings);
    settings.sync();
}

} // namespace

UserDefaults::UserDefaults(std::filesystem::path file) : file(std::move(file)) {
    values = textsInIni(contentsOf(this->file));
}

UserDefaults& UserDefaults::standardUserDefaults() {
    return SharedInstance<UserDefaults>::get();
}

std::optional<std::string> UserDefaults::stringForKey(const std::string& key) const {
    const auto value = textIn(values, key);
    return value ? value : textIn(registered, key);
}

std::optional<bool> UserDefaults::boolForKey(const std::string& key) const {
    const auto value = booleanIn(values, key);
    return value ? value : booleanIn(registered, key);
}

void UserDefaults::registerDefaults(const Registration& defaults) {
    for (const auto& [key, value] : defaults)
        registered.insert_or_assign(key, value);
}

void UserDefaults::setString(const std::string& key, const std::string& value) {
    values.insert_or_assign(key, value);
    change(file, [&](QSettings& settings) {
        settings.setValue(QString::fromStdString(key), QString::fromStdString(value));
    });
}

void UserDefaults::setBool(const std::string& key, bool value) {
    setString(key, value ? "true" : "false");
}

void UserDefaults::removeValue(const std::string& key) {
    values.erase(key);
    change(file, [&](QSettings& settings) { settings.remove(QString::fromStdString(key)); });
}

} // namespace velloren
