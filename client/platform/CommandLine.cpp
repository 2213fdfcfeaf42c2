#include "CommandLine.h"

#include <QCoreApplication>

namespace {

std::optional<QStringList>& replacement() {
    static std::optional<QStringList> arguments;
    return arguments;
}

QStringList arguments() {
    if (replacement())
        return *replacement();
    if (!QCoreApplication::instance())
        return {};
    return QCoreApplication::arguments().mid(1);
}

} // namespace

namespace CommandLine {

QString Text() {
    return arguments().join(QLatin1Char(' ')).toLower();
}

bool HasIgnoreNetwork() {
    return Text().contains(QLatin1String("/ignorenetwork"));
}

void SetArguments(std::optional<QStringList> arguments) {
    replacement() = std::move(arguments);
}

} // namespace CommandLine
