#pragma once

class Database;
class QCommandLineParser;

// `tavlo-server serve`: answers the clients, the web site and the administration until
// stopped; delivers mail when --smtp is given and sweeps old data once a day.
int Serve(const QCommandLineParser& parser, Database& db);
// The options only `serve` reads.
void AddServeOptions(QCommandLineParser& parser);
