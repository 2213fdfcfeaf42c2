#pragma once

#include "wire/Recordset.h"
#include <QString>
#include <QVariant>
#include <cstdint>
#include <memory>

// The program's only road to the server: every read and write is one POST of a statement to
// the configured web address. Reads come back as a recordset; writes ignore the answer. Also
// the conversions of values into statements and out of recordsets.
class TLDataAccess {
public:
    // The last gateway work did not end in a reachability failure. Only sign-in and the
    // tray's reset set it True again.
    bool ConnectionEnabled = false;
    // ConnectDB has run.
    bool OnceConnected = false;
    // The user was already told that the server can't be reached; keeps a failing timer from
    // stacking message boxes.
    bool blnErrored = false;

    // Posts a statement and returns its first result, or null when the server can't be
    // reached (after telling the user once) or another failure was reported.
    std::unique_ptr<wire::Recordset> LoadADOFromWeb(const QString& strSQL);
    // Posts a statement and ignores the answer. A failure is lost: reachability failures and
    // everything under ignoreErrors pass silently, others are reported.
    void ExecuteSQLFromWeb(const QString& strSQL, bool ignoreErrors = false);

    // Opens nothing: marks the program connected. The gateway connects per request.
    bool ConnectDB();

    // The next key of a server table, reserved by the server; 0 with a message on failure.
    std::int32_t NewSystemNumber(std::int32_t SysType);

    // The published version and where its update lies; the version text, or "" when none.
    QString CheckLatestVersion();

    // Text made safe for a statement: trimmed, quotes doubled, in single quotes; empty text
    // gives NULL or two quotes; a wildcard makes a prefix pattern.
    QString DBIn(const QString& text, bool nullWhenEmpty = false, bool appendWildcard = false);
    // Recordset values out: Null gives "" and 0.
    QString DBOStr(const QVariant& value);
    std::int32_t DBOLong(const QVariant& value);

private:
    void reachabilityFailure();

    QString m_lastSql; // the statement of the last NewSystemNumber
};
