#pragma once

#include <QString>
#include <QStringList>
#include <optional>

// The program's command line: the arguments after the program's name, joined by blanks and
// lower-cased. The only switch the program knows is "/ignorenetwork", looked for anywhere in it.
namespace CommandLine {

QString Text();
bool HasIgnoreNetwork();

// Replaces the arguments (tests); std::nullopt restores the process's own.
void SetArguments(std::optional<QStringList> arguments);

} // namespace CommandLine
