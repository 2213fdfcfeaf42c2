#pragma once

#include <QString>

class QCommandLineParser;

// The commands that make the store or read what it keeps: init, demo, outbox, anomalies,
// history, and release (which names a new client release).
namespace StoreCommands {

// Runs one of them; -1 when the command is none of these.
int Run(const QString& command, const QCommandLineParser& parser, const QString& dbUrl);
void AddOptions(QCommandLineParser& parser);

} // namespace StoreCommands
