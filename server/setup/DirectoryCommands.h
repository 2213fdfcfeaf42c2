#pragma once

#include <QString>
#include <QStringList>

class QCommandLineParser;

// The commands that keep an office's directory: org add, person add|import|disable|remove|
// rights, group add, location add, status add. Each prints what it did; bad input throws
// BadInput before anything is written.
namespace DirectoryCommands {

// Runs the command the positional arguments name; -1 when they name none of these.
int Run(const QStringList& args, const QCommandLineParser& parser, const QString& dbUrl);
void AddOptions(QCommandLineParser& parser);

} // namespace DirectoryCommands
