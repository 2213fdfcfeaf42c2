#include "wire/LocalOffsets.h"

#include "Rows.h"
#include <QtTest>
#include <ctime>

using namespace wire;

// Local moments on the days a zone moves its clock, read and written as the C library has them.
class LocalOffsetsTest : public QObject {
    Q_OBJECT
private slots:
    void clockChangeDays_data() {
        // quarter hours the clock skips that day
        columns<QByteArray, QDate, int>("zone", "day", "skipped");
        row("Berlin, spring", QByteArray("Europe/Berlin"), QDate(2024, 3, 31), 4);
        row("Berlin, autumn", QByteArray("Europe/Berlin"), QDate(2024, 10, 27), 0);
        row("New York, spring", QByteArray("America/New_York"), QDate(2024, 3, 10), 4);
        row("Lord Howe, half-hour shift", QByteArray("Australia/Lord_Howe"), QDate(2024, 4, 7), 0);
        row("Lord Howe, half-hour gap", QByteArray("Australia/Lord_Howe"), QDate(2024, 10, 6), 2);
        row("Kolkata", QByteArray("Asia/Kolkata"), QDate(2024, 6, 1), 0);
    }
    void clockChangeDays() {
        auto [zone, day, skipped] = fetch<QByteArray, QDate, int>("zone", "day", "skipped");
        if (!QFile::exists("/usr/share/zoneinfo/" + zone))
            QFAIL("the zone data (tzdata) is missing");
        qputenv("TZ", zone); // each row sets its own zone; Qt asks the C library every time
        tzset();
        LocalOffsets offsets;
        int gaps = 0;
        for (int minute = 0; minute < 24 * 60; minute += 15) {
            const QTime time(minute / 60, minute % 60);
            const QDateTime local(day, time);
            const QDateTime fast = offsets.dateTime(day, time);
            QVERIFY(fast.isValid());
            QCOMPARE(fast.date(), day);
            QCOMPARE(fast.time(), time);
            if (local.isValid())
                QCOMPARE(fast.toMSecsSinceEpoch(), local.toMSecsSinceEpoch());
            else
                ++gaps;
        }
        const QDateTime start(day, QTime(0, 0));
        for (qint64 step = -8; step < 4 * 28 + 8; ++step) {
            const QDateTime moment = QDateTime::fromMSecsSinceEpoch(
                start.toMSecsSinceEpoch() + step * 15 * 60000, Qt::UTC);
            const auto [date, time] = offsets.localParts(moment);
            QCOMPARE(date, moment.toLocalTime().date());
            QCOMPARE(time, moment.toLocalTime().time());
        }
        QCOMPARE(gaps, skipped);
    }
};

QTEST_GUILESS_MAIN(LocalOffsetsTest)
#include "LocalOffsetsTest.moc"
