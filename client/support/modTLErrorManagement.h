#pragma once

#include <QString>
#include <cstdint>

// The end of every error trap: a line in the local log, a box for the user, and the same facts
// sent to the server.
namespace modTLErrorManagement {

// The log file, relative to the current folder; deleted once each report was sent.
inline const QString kLogFileName = QStringLiteral("brelo.log");

// Reports the failure in flight. errorText becomes the text that was reported (the caller's
// text, ": " and the failure's description, cut to 250 characters). Always answers 0.
std::int32_t ReportAnomaly(const QString& procedureName, QString& errorText,
                           std::int32_t errorNumber);

// The end of a trap: reports the failure in flight (call it inside a catch block) under the
// procedure's place, with its own description and number.
void ReportTrapped(const QString& procedureName);

} // namespace modTLErrorManagement
