#include "Platform/Foundation/UserDefaults.h"

#include "Platform/Foundation/IniTexts.h"
#include "Platform/Foundation/PrivateFiles.h"
#include "Platform/Foundation/SharedInstance.h"

#include <QFile>
#include <QSaveFile>
#include <QString>

#include <utility>

namespace velloren {

namespace {

/// None where something is there that cannot be read as a whole.
std::optional<std::string> contentsOf(const std::filesystem::path& file) {
    QFile source(QString::fromStdString(file.string()));
    if (!source.exists())
        return std::string();
    if (!source.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray contents = source.readAll();
    return source.error() == QFile::NoError ? std::optional(contents.toStdString()) : std::nullopt;
}

std::optional<std::string> textIn(const UserDefaults::Registration& values, const std::string& key) {
    const auto entry = values.find(key);
    return entry == values.end() ? std::nullopt : std::optional(entry->second);
}

std::optional<bool> booleanIn(const UserDefaults::Registration& values, const std::string& key) {
    const auto text = textIn(values, key);
    if (text == "true" || text == "1")
        return true;
    if (text == "false" || text == "0")
        return false;
    return std::nullopt;
}

/// As a whole or not at all: somebody may read it meanwhile.
void write(const std::filesystem::path& file, const std::string& contents) {
    QSaveFile saved(QString::fromStdString(file.string()));
    if (createPrivateFolder(file.parent_path()) && saved.open(QIODevice::WriteOnly) &&
        saved.write(contents.data(), qint64(contents.size())) == qint64(contents.size()))
        (void)saved.commit();
}

} // namespace

UserDefaults::UserDefaults(std::filesystem::path file) : file(std::move(file)) {
    values = textsInIni(contentsOf(this->file).value_or(""));
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

void UserDefaults::set(const Changes& changes) {
    const auto contents = contentsOf(file);
    std::string changed = contents.value_or("");
    for (const auto& [key, text] : changes) {
        values.erase(key);
        if (text)
            values.emplace(key, *text);
        changed = iniWithText(changed, key, text);
    }
    if (!file.empty() && contents && changed != contents)
        write(file, changed);
}

} // namespace velloren
