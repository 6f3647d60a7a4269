#include "VellorenMenu/MainContentView.h"

#include "VellorenMenu/Colors.h"

#include <QEvent>
#include <QToolTip>

namespace velloren {

namespace {

/// Follows the size of the view it stands in.
class BackgroundView final : public View {
  public:
    explicit BackgroundView(QWidget& superview) : View(&superview) {
        setGeometry(superview.rect());
        setWantsLayer(true);
        if (layer())
            layer()->setBackgroundColor(colors::popoverGrey);
        superview.installEventFilter(this);
    }

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Resize)
            setGeometry(parentWidget()->rect());
        return View::eventFilter(watched, event);
    }
};

QPalette lightPalette() {
    QPalette palette(QColor(240, 240, 240), colors::popoverGrey);
    palette.setColor(QPalette::WindowText, Qt::black);
    palette.setColor(QPalette::Text, Qt::black);
    palette.setColor(QPalette::ButtonText, Qt::black);
    palette.setColor(QPalette::Base, Qt::white);
    palette.setColor(QPalette::ToolTipBase, Qt::white);
    palette.setColor(QPalette::ToolTipText, QColor(29, 29, 31));
    return palette;
}

} // namespace

MainContentView::MainContentView(QWidget* parent) : View(parent) {
    setPalette(lightPalette());
    QToolTip::setPalette(lightPalette());
}

void MainContentView::viewDidMoveToWindow() {
    const Window* window = hostWindow();
    if (!window)
        return;
    const QWidget* content = window->contentView();
    QWidget* frameView = content ? content->parentWidget() : nullptr;
    if (!frameView)
        return;
    auto* background = new BackgroundView(*frameView);
    background->lower();
    background->show();
}

} // namespace velloren
