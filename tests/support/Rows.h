#pragma once

#include <QtTest>
#include <tuple>

// A Qt Test table in few lines: columns<QString, int>("text", "number") names its columns and
// row("name", "7", 7) adds one row, each on one line.
template <class... Types, class... Names> void columns(Names... names) {
    (QTest::addColumn<Types>(names), ...);
}

// Arguments are taken by value so that string literals reach QTest as const char*, which it turns
// into QString.
template <class... Values> void row(const char* name, Values... values) {
    (QTest::newRow(name) << ... << values);
}

// The current row's values in one line: auto [text, number] = fetch<QString, int>("text",
// "number") stands for a QFETCH each.
template <class... Types, class... Names> std::tuple<Types...> fetch(Names... names) {
    return {*static_cast<Types*>(QTest::qData(names, qMetaTypeId<Types>()))...};
}
