#pragma once

#include <QString>

// Writes one line on the server's error output. Control characters that came with a request
// (line breaks, escapes) are shown as \xNN, so no request can forge or garble log lines.
void LogLine(const QString& line);
// The text with its control characters escaped that way.
QString LogSafe(const QString& text);
