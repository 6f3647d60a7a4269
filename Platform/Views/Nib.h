#pragma once

#include <QWidget>

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
    for (QWidget* widget : root.findChildren<QWidget*>() << &root) {
        if (auto* awakening = dynamic_cast<AwakesFromNib*>(widget))
            awakening->awakeFromNib();
    }
}

} // namespace velloren
