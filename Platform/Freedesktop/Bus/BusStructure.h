#pragma once

#include <QDBusArgument>

#include <tuple>

namespace velloren {

/// What travels over the bus as a structure: `members` has pointers to what is in it, in order.
template <class Type>
concept BusStructure = requires {
    Type::members();
};

template <BusStructure Type>
QDBusArgument& operator<<(QDBusArgument& argument, const Type& structure) {
    argument.beginStructure();
    std::apply([&](auto... member) { (argument << ... << (structure.*member)); }, Type::members());
    argument.endStructure();
    return argument;
}

template <BusStructure Type>
const QDBusArgument& operator>>(const QDBusArgument& argument, Type& structure) {
    argument.beginStructure();
    std::apply([&](auto... member) { (argument >> ... >> (structure.*member)); }, Type::members());
    argument.endStructure();
    return argument;
}

} // namespace velloren
