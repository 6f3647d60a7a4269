#include "Platform/Foundation/Bundle.h"

#include "Platform/Foundation/SharedInstance.h"

#include <QCoreApplication>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

namespace velloren {

namespace {

Bundle::Info::mapped_type valueOf(const QJsonValue& value) {
    if (value.isBool())
        return value.toBool();
    if (value.isDouble())
        return value.toDouble();
    if (value.isString())
        return value.toString().toStdString();
    return {};
}

std::optional<Bundle::Info> infoIn(const QString& fileName) {
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll());
    if (!document.isObject())
        return std::nullopt;
    const QJsonObject object = document.object();
    Bundle::Info info;
    for (auto entry = object.begin(); entry != object.end(); ++entry)
        info.emplace(entry.key().toStdString(), valueOf(entry.value()));
    return info;
}

} // namespace

const Bundle& Bundle::mainBundle() {
    return SharedInstance<Bundle>::get();
}

std::unique_ptr<Bundle> Bundle::inFolder(const std::string& folder) {
    return std::unique_ptr<Bundle>(
        new Bundle(infoIn(QString::fromStdString(folder) + QStringLiteral("/Info.json"))));
}

std::string Bundle::localizedString(const std::string& key, const std::string& comment) const {
    return QCoreApplication::translate("Bundle", key.c_str(), comment.c_str()).toStdString();
}

} // namespace velloren
