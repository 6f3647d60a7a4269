#pragma once

#include "Platform/Views/Image.h"
#include "Platform/Views/View.h"

#include <optional>

namespace velloren {

/// Shows an image in its middle, at the image's own size. Main thread only.
class ImageView final : public View {
    Q_OBJECT

  public:
    explicit ImageView(QWidget* parent = nullptr) : View(parent) { setWantsLayer(true); }

    [[nodiscard]] const std::optional<Image>& image() const { return shown; }

    /// None shows nothing.
    void setImage(std::optional<Image> image) {
        shown = std::move(image);
        setNeedsDisplay();
    }

  protected:
    void drawRect(QPainter& painter, const QRect&) override {
        if (shown)
            shown->drawInMiddle(painter, rect());
    }

  private:
    std::optional<Image> shown;
};

} // namespace velloren
