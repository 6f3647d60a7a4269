#include "Platform/Views/Label.h"

#include "Platform/Views/Fonts.h"
#include "Platform/Views/PlainText.h"

#include <QHelpEvent>
#include <QPainter>
#include <QScreen>
#include <QToolTip>

#include <cmath>

namespace velloren {

namespace {

constexpr qsizetype longestToolTip = 2000;

/// Tool tips wrap at blanks only: a word wider than any screen gets places to wrap at.
QString wrappable(const QString& text) {
    constexpr qsizetype longestWord = 48;
    constexpr QChar invisibleBlank(0x200b);
    QString result;
    qsizetype length = 0;
    for (const QChar unit : text) {
        length = unit.isSpace() ? 0 : length + 1;
        if (length > longestWord && !unit.isLowSurrogate()) {
            result += invisibleBlank;
            length = 1;
        }
        result += unit;
    }
    return result;
}

/// Tool tips take anything that looks like markup for markup, and that they wrap long before the edge of the
/// screen, which is `room` wide.
QString asToolTip(const QString& text, int room) {
    constexpr int padding = 32;
    const QString shown = cut(text, longestToolTip);
    if (QFontMetrics(QToolTip::font()).size(0, shown).width() + padding <= room)
        return QStringLiteral("<p style='white-space: pre'>%1</p>").arg(shown.toHtmlEscaped());
    return QStringLiteral("<p style='white-space: pre-wrap'>%1</p>").arg(wrappable(shown).toHtmlEscaped());
}

} // namespace

Label::Label(QWidget* parent) : QWidget(parent) {
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    QTextOption byScript;
    byScript.setTextDirection(Qt::LayoutDirectionAuto);
    shaped.setTextOption(byScript);
    shaped.setTextFormat(Qt::PlainText);
}

void Label::setStringValue(const QString& value) {
    if (value == text)
        return;
    text = value;
    line = asOneLine(value, longestLine);
    knownAdvance.reset();
    updateFont();
    setAccessibleName(line);
    updateGeometry();
    update();
}

void Label::setStringValue(const std::string& utf8) {
    setStringValue(QString::fromStdString(utf8));
}

void Label::setPixelSize(int size) {
    ownFont.setPixelSize(size);
    updateFont();
    updateGeometry();
}

void Label::setWeight(int weight) {
    ownFont.setWeight(static_cast<QFont::Weight>(weight));
    updateFont();
}

void Label::setTextColor(const QColor& newColor) {
    color = newColor;
    update();
}

QSize Label::sizeHint() const {
    return {advance(), fontMetrics().height()};
}

QSize Label::minimumSizeHint() const {
    return {0, fontMetrics().height()};
}

int Label::advance() const {
    if (!knownAdvance)
        knownAdvance = fontMetrics().horizontalAdvance(line);
    return *knownAdvance;
}

QString Label::elided() const {
    return advance() <= width() ? line : fontMetrics().elidedText(line, Qt::ElideRight, width());
}

void Label::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setPen(color);
    if (const QString visible = elided(); visible != shaped.text()) {
        shaped.setText(visible);
        shaped.prepare({}, font());
    }
    // The list keeps its reading edge; each text runs in the direction of its own script.
    const QSizeF free = size() - shaped.size();
    const double left = layoutDirection() == Qt::RightToLeft ? free.width() : 0;
    painter.drawStaticText(QPointF(std::floor(left), std::floor(free.height() / 2)), shaped);
}

void Label::updateFont() {
    setFont(fonts::withFamiliesFor(line, ownFont));
}

bool Label::event(QEvent* event) {
    if (event->type() == QEvent::ApplicationFontChange)
        updateFont();
    if (event->type() == QEvent::FontChange) {
        knownAdvance.reset();
        shaped.setText({});
    }
    if (event->type() != QEvent::ToolTip)
        return QWidget::event(event);
    const auto* help = static_cast<const QHelpEvent*>(event);
    if (elided() != text)
        QToolTip::showText(help->globalPos(), asToolTip(text, screen()->availableGeometry().width()), this);
    return true;
}

} // namespace velloren
