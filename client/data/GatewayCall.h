#pragma once

#include <QByteArray>
#include <QString>

// One round trip to the gateway as the program makes it: the statement posted to the
// configured address with the present moment in "lastCached". Raises 0x800C0005 when the
// server can't be reached; the body and the text of the answer stay readable for reports.
class GatewayCall {
public:
    // A server that doesn't take the connection within the first, or hasn't answered whole
    // within the second, counts as unreachable: the program never waits for ever.
    static inline int ConnectTimeoutMs = 5000;
    static inline int AnswerTimeoutMs = 30000;

    explicit GatewayCall(const QString& sql);

    void Send();
    QByteArray Body() const { return m_body; }     // "strSQL=" and the encoded statement
    QByteArray Answer() const { return m_answer; } // as far as it was read
    // The report text of a failure: description, the posted body, the answer.
    QString ReportText(const QString& description) const;

private:
    QString m_sql;
    QByteArray m_body;
    QByteArray m_answer;
};
