#include "gateway/AnswerCache.h"

#include "Rows.h"
#include <QtTest>

namespace {

std::shared_ptr<AnswerCache::Answer> answerOf(int bytes) {
    auto answer = std::make_shared<AnswerCache::Answer>();
    answer->xml = QByteArray(bytes, 'x');
    return answer;
}

} // namespace

// The answer cache stays within its budget, drops the least recently used first, and keeps
// nothing made from outdated data.
class TestCache : public QObject {
    Q_OBJECT

private slots:
    void staysWithinItsBudget() {
        AnswerCache cache(1 << 20);
        for (int i = 0; i < 10; ++i) {
            cache.Store(QString::number(i), 1, answerOf(200 * 1024));
            QVERIFY(cache.Bytes() <= std::size_t(1 << 20));
            QVERIFY(cache.Find(QStringLiteral("0"), 1)); // used each time: kept
        }
        QVERIFY(!cache.Find(QStringLiteral("1"), 1)); // the least recently used went first
        QVERIFY(cache.Find(QStringLiteral("9"), 1));
        cache.Store(QStringLiteral("huge"), 1, answerOf(2 << 20)); // more than all: not kept
        QVERIFY(!cache.Find(QStringLiteral("huge"), 1));
        QVERIFY(cache.Find(QStringLiteral("9"), 1));
    }

    void outdatedAnswersGo() {
        AnswerCache cache(1 << 20);
        cache.Store(QStringLiteral("a"), 1, answerOf(1000));
        cache.Store(QStringLiteral("b"), 1, answerOf(1000));
        QVERIFY(!cache.Find(QStringLiteral("a"), 2)); // asked at a newer version: dropped
        cache.Store(QStringLiteral("c"), 2, answerOf(1000));
        QVERIFY(!cache.Find(QStringLiteral("b"), 1));        // a newer store clears the older ones
        cache.Store(QStringLiteral("d"), 1, answerOf(1000)); // made from outdated data
        QVERIFY(!cache.Find(QStringLiteral("d"), 1));
        QVERIFY(cache.Find(QStringLiteral("c"), 2));
    }

    // Where each row's "not a friend" mark stands, so a copy can be marked per reader; none when
    // a row has no mark of its own.
    void friendMarksAreFoundRowByRow_data() {
        columns<QByteArray, int, QList<qsizetype>>("xml", "rows", "marks");
        const QByteArray two = "<z:row a='1' myfriend='0'/>\n<z:row a='2' myfriend='0'/>\n";
        row("two rows", two, 2, QList<qsizetype>{23, 51});
        row("a row without", two, 3, QList<qsizetype>{});
        row("marked already", QByteArray("<z:row myfriend='1'/>"), 1, QList<qsizetype>{});
    }
    void friendMarksAreFoundRowByRow() {
        auto [xml, rows, marks] = fetch<QByteArray, int, QList<qsizetype>>("xml", "rows", "marks");
        const auto found = AnswerCache::FriendMarks(xml, std::size_t(rows));
        QCOMPARE(QList<qsizetype>(found.begin(), found.end()), marks);
        for (qsizetype at : found)
            QCOMPARE(xml.at(at), '0');
    }
};

QTEST_GUILESS_MAIN(TestCache)
#include "tst_cache.moc"
