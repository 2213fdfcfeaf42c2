#pragma once

#include <QDate>
#include <QString>

// When someone is back, in the words the client's board uses: nothing for someone who is In;
// "TODAY", "TOMORROW", a weekday within the week or the date, and the time ("2:30 PM");
// "Unspecified" when no moment was given.
struct ReturningWords {
    QString date;
    QString time;

    // returningText: the board's text of the moment ("M/d/yyyy h:mm AM", or the literal for
    // nothing given).
    static ReturningWords Of(qint64 statusSys, const QString& returningText, const QDate& today);
    // The moment in that text as "yyyy-MM-ddTHH:mm" (for a date and a time field), or empty.
    static QString MomentOf(const QString& returningText);
};
