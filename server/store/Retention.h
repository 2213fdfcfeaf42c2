#pragma once

class Database;

// What the server keeps and for how long: error reports 90 days, mail 30 days after it went
// (or was given up), the status history 400 days, spent or expired reset links and lapsed
// sessions not at all. Run daily.
namespace Retention {

struct Swept {
    int anomalies = 0;
    int mails = 0;
    int history = 0;
    int resetTokens = 0;
    int sessions = 0;
};

Swept Sweep(Database& db);

} // namespace Retention
