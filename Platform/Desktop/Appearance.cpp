#include "Platform/Desktop/Appearance.h"

#include <QGuiApplication>
#include <QPalette>

#include <utility>

namespace velloren {

namespace {

std::optional<std::string>& toldByDesktop() {
    static std::optional<std::string> name;
    return name;
}

bool paletteIsDark() {
    const QPalette palette = QGuiApplication::palette();
    return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
}

} // namespace

const std::string Appearance::vibrantDark = "NSAppearanceNameVibrantDark";
const std::string Appearance::vibrantLight = "NSAppearanceNameVibrantLight";

const std::string& Appearance::currentName() {
    if (const auto& name = toldByDesktop())
        return *name;
    return paletteIsDark() ? vibrantDark : vibrantLight;
}

void Appearance::setCurrentName(std::optional<std::string> name) {
    toldByDesktop() = std::move(name);
}

} // namespace velloren
