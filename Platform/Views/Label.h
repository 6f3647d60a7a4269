#pragma once

#include <QStaticText>
#include <QWidget>

#include <optional>
#include <string>

namespace velloren {

/// One line of plain text. A text too long for the label ends in an ellipsis and shows whole as the tool tip;
/// line breaks and other control characters read as blanks. Main thread only.
class Label final : public QWidget {
    Q_OBJECT
    Q_PROPERTY(QString stringValue READ stringValue WRITE setStringValue)
    Q_PROPERTY(int pixelSize READ pixelSize WRITE setPixelSize)
    Q_PROPERTY(int weight READ weight WRITE setWeight)
    Q_PROPERTY(QColor textColor READ textColor WRITE setTextColor)

  public:
    explicit Label(QWidget* parent = nullptr);

    [[nodiscard]] const QString& stringValue() const { return text; }

    void setStringValue(const QString& value);
    void setStringValue(const std::string& utf8);

    [[nodiscard]] int pixelSize() const { return font().pixelSize(); }

    void setPixelSize(int size);

    [[nodiscard]] int weight() const { return font().weight(); }

    /// From 1 to 1000, as fonts count it: 400 is normal, 600 semibold.
    void setWeight(int weight);

    [[nodiscard]] const QColor& textColor() const { return color; }

    void setTextColor(const QColor& color);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    bool event(QEvent* event) override;

  private:
    void updateFont();
    /// Of the whole line.
    [[nodiscard]] int advance() const;
    [[nodiscard]] QString elided() const;

    QString text;
    QString line;
    QStaticText shaped;                      ///< what was drawn last
    mutable std::optional<int> knownAdvance; ///< shaping a text takes longer than drawing it
    QFont ownFont;                           ///< but for its families
    QColor color{Qt::black};
};

} // namespace velloren
