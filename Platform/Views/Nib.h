#pragma once

#include <QList>
#include <QWidget>

#include <utility>

namespace velloren {

/// Implemented by what has work to do once an interface form has made it and set its properties.
class AwakesFromNib {
  public:
    AwakesFromNib() = default;
    AwakesFromNib(const AwakesFromNib&) = delete;
    AwakesFromNib& operator=(const AwakesFromNib&) = delete;
    virtual ~AwakesFromNib() = default;

    virtual void awakeFromNib() = 0;
};

/// Awakens `root` and everything below it, in no particular order.
inline void awakeFromNib(QWidget& root) {
    QList<QWidget*> widgets = root.findChildren<QWidget*>();
    widgets.append(&root);
    for (QWidget* widget : std::as_const(widgets)) {
        if (auto* awakening = dynamic_cast<AwakesFromNib*>(widget))
            awakening->awakeFromNib();
    }
}

} // namespace velloren
