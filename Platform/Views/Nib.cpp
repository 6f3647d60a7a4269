#include "Platform/Views/Nib.h"

#include <QWidget>

#include <utility>

namespace velloren {

void awakeFromNib(QWidget& root) {
    auto widgets = root.findChildren<QWidget*>();
    widgets.append(&root);
    for (QWidget* widget : std::as_const(widgets)) {
        if (auto* awakening = dynamic_cast<AwakesFromNib*>(widget))
            awakening->awakeFromNib();
    }
}

} // namespace velloren
