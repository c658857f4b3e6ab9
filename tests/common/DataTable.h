#pragma once

#include <QTest>

#include <tuple>

// A data table's columns, declared in one call: columns<QString, int>("name", "count").
template <typename... T, typename... Names> void columns(Names... names)
{
    static_assert(sizeof...(T) == sizeof...(Names));
    (QTest::addColumn<T>(names), ...);
}

// The current row's values, in one call: const auto [name, count] = row<QString, int>("name", "count").
template <typename... T, typename... Names> std::tuple<T...> row(Names... names)
{
    static_assert(sizeof...(T) == sizeof...(Names));
    return {*static_cast<T *>(QTest::qData(names, qMetaTypeId<T>()))...};
}
