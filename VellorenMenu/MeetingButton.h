#pragma once

#include "Platform/Views/Nib.h"

#include <QColor>
#include <QPushButton>

#include <optional>

namespace velloren {

/// The push button of the meeting rows. Once loaded from the interface form it shows its title centred, in
/// its own font and in `textColor`; later changes of either are not restyled. Main thread only.
class MeetingButton final : public QPushButton, public AwakesFromNib {
    Q_OBJECT
    Q_PROPERTY(int pixelSize READ pixelSize WRITE setPixelSize)
    Q_PROPERTY(QColor textColor READ textColor WRITE setTextColor)

  public:
    /// A title with the look it is drawn in.
    struct AttributedTitle {
        QString text;
        QColor foregroundColor;
        QFont font;
        Qt::Alignment alignment;
    };

    explicit MeetingButton(QWidget* parent = nullptr);

    /// The size of the title's font.
    [[nodiscard]] int pixelSize() const { return font().pixelSize(); }

    void setPixelSize(int size);

    [[nodiscard]] const QColor& textColor() const { return color; }

    void setTextColor(const QColor& newColor) { color = newColor; }

    /// None until the button was loaded from the form: it then has the platform's title style.
    [[nodiscard]] const std::optional<AttributedTitle>& attributedTitle() const { return styledTitle; }

    void awakeFromNib() override;

    [[nodiscard]] QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QColor color;
    std::optional<AttributedTitle> styledTitle;
};

} // namespace velloren
