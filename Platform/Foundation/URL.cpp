#include "Platform/Foundation/URL.h"

#include <QStringDecoder>
#include <QUrl>

namespace velloren {

std::optional<URL> URL::fromString(const std::string& text) {
    const QUrl url = QUrl::fromEncoded(QByteArray::fromStdString(text), QUrl::StrictMode);
    if (!url.isValid() || url.scheme().isEmpty())
        return std::nullopt;
    return URL(text);
}

std::optional<std::string> percentEncodedForQuery(std::string_view text) {
    const QByteArray bytes(text.data(), qsizetype(text.size()));
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    [[maybe_unused]] const QString decoded = decoder(bytes);
    if (decoder.hasError())
        return std::nullopt;
    return bytes.toPercentEncoding("!$&'()*+,/:;=?@")
        .toStdString(); // and what is never encoded: A-Za-z0-9-._~
}

} // namespace velloren
