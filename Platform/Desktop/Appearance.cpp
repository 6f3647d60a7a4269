#include "Platform/Desktop/Appearance.h"

#include <QGuiApplication>
#include <QPalette>

#include <algorithm>
#include <array>

namespace velloren {

namespace {

using NamesBySource = std::array<std::optional<std::string>, 4>;

NamesBySource& namesBySource() {
    static NamesBySource names;
    return names;
}

std::optional<std::string>& nameFrom(AppearanceSource source) {
    return namesBySource().at(std::size_t(source));
}

bool paletteIsDark() {
    const QPalette palette = QGuiApplication::palette();
    return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
}

} // namespace

const std::string Appearance::vibrantDark = "NSAppearanceNameVibrantDark";
const std::string Appearance::vibrantLight = "NSAppearanceNameVibrantLight";

const std::string& Appearance::currentName() {
    const auto& names = namesBySource();
    const auto first =
        std::find_if(names.begin(), names.end(), [](const auto& name) { return name.has_value(); });
    if (first != names.end())
        return **first;
    return paletteIsDark() ? vibrantDark : vibrantLight;
}

bool Appearance::isSeen() {
    return nameFrom(AppearanceSource::Pixels).has_value();
}

bool Appearance::setName(AppearanceSource source, const std::optional<std::string>& name) {
    const std::string formerName = currentName();
    const bool wasSeen = isSeen();
    nameFrom(source) = name;
    return currentName() != formerName || isSeen() != wasSeen;
}

} // namespace velloren
