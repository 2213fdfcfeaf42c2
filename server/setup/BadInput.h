#pragma once

#include <QString>
#include <stdexcept>

// Input the directory turns away, with the reason for whoever typed it. Thrown before a write
// or inside one, where it rolls the whole transaction back: nothing is changed.
class BadInput : public std::runtime_error {
public:
    explicit BadInput(const QString& reason) : std::runtime_error(reason.toStdString()) {}
    QString reason() const { return QString::fromStdString(what()); }
};
