#include "Platform/Views/Accessibility.h"

#include "Platform/Views/Label.h"
#include "Platform/Views/PopoverWindow.h"

#include <QAccessible>
#include <QAccessibleWidget>

namespace velloren {

namespace {

// Qt owns what this returns and lets it go with the widget.
QAccessibleInterface* describe(const QString&, QObject* object) {
    if (auto* label = qobject_cast<Label*>(object))
        return new QAccessibleWidget(label, QAccessible::StaticText);
    if (auto* window = qobject_cast<PopoverWindow*>(object))
        return new QAccessibleWidget(window, QAccessible::Dialog);
    return nullptr;
}

} // namespace

void describeWidgetsToAssistivePrograms() {
    QAccessible::installFactory(describe);
}

} // namespace velloren
