#include "Platform/Nib.h"

#include <QWidget>

namespace velloren {

void awakeFromNib(QWidget& root) {
    for (QWidget* widget : root.findChildren<QWidget*>() << &root) {
        if (auto* awakening = dynamic_cast<AwakesFromNib*>(widget))
            awakening->awakeFromNib();
    }
}

} // namespace velloren
