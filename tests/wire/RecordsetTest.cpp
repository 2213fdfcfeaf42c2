#include "wire/Recordset.h"
#include "wire/ComError.h"
#include "wire/RowsetReader.h"

#include "Rows.h"
#include "WireSample.h"
#include <QFile>
#include <QtTest>

using namespace wire;

namespace {

Rowset board() {
    return RowsetReader::read(sample("board.xml"));
}

template <class F> std::optional<ComError> failureOf(F&& f) {
    try {
        f();
    } catch (const ComError& e) {
        return e;
    }
    return std::nullopt;
}

const QString kItemNotFound = "Item cannot be found in the collection corresponding to the "
                              "requested name or ordinal.";
const QString kNoCurrentRecord = "Either BOF or EOF is True, or the current record has been "
                                 "deleted. Requested operation requires a current record.";

} // namespace

class RecordsetTest : public QObject {
    Q_OBJECT
private slots:
    void readsTheWayTheProgramDoes() {
        Recordset rs(board());
        QVERIFY(rs.IsOpen());
        QCOMPARE(rs.RecordCount(), 3L);
        QCOMPARE(rs.FieldCount(), 11);
        QVERIFY(!rs.Bof());
        QStringList names;
        while (!rs.Eof()) {
            names << rs.Fields("LastName").Value().toString();
            rs.MoveNext();
        }
        QCOMPARE(names, QStringList({"O'Neil", "Smith & Sons", "Diaz"}));
        rs.MoveFirst();
        QCOMPARE(rs.Fields("ContactSys").Value().toInt(), 12);
    }

    void fieldNamesMatchWithoutRegardToCase() {
        Recordset rs(board());
        QCOMPARE(rs.Fields("CONTACTSYS").Value().toInt(), 12);
        QCOMPARE(rs.Fields("Comment").Name(), QString("comment"));
        QCOMPARE(rs.Fields("last update").Type(), FieldType::DateTime);
        QVERIFY(rs.HasField("MyFriend"));
        QVERIFY(!rs.HasField("UserSys"));
    }

    void theFirstOfTwoEqualNamesWins() {
        Rowset r;
        r.columns.resize(2);
        r.columns[0].name = "Status";
        r.columns[1].name = "STATUS";
        r.rows = {{QVariant(QString("first")), QVariant(QString("second"))}};
        Recordset rs(r);
        QCOMPARE(rs.Fields("status").Value().toString(), QString("first"));
        QCOMPARE(rs.Fields("STATUS").Value().toString(), QString("second")); // exact spelling
    }

    void nullAndEmptyStayApart() {
        Recordset rs(board());
        QVERIFY(!rs.Fields("comment").Value().isValid());
        QVERIFY(rs.Fields("Ext").Value().isValid());
        QCOMPARE(rs.Fields("Ext").Value().toString(), QString(""));
    }

    void aMissingColumnRaises3265() {
        Recordset rs(board());
        const auto failure = failureOf([&] { rs.Fields("NoSuchColumn"); });
        QVERIFY(failure);
        QCOMPARE(failure->number(), err::ItemNotFound);
        QCOMPARE(failure->description(), kItemNotFound);
        // Even at EOF the name is looked at first.
        while (!rs.Eof())
            rs.MoveNext();
        QCOMPARE(failureOf([&] { rs.Fields("Nope"); })->number(), err::ItemNotFound);
    }

    void readingWithoutACurrentRecordRaises3021_data() {
        columns<bool>("empty");
        row("past the last record", false);
        row("empty recordset", true);
    }
    void readingWithoutACurrentRecordRaises3021() {
        QFETCH(bool, empty);
        Rowset r = board();
        if (empty)
            r.rows.clear();
        Recordset rs(r);
        while (!rs.Eof())
            rs.MoveNext();
        QCOMPARE(rs.Bof(), empty);
        const Field field = rs.Fields("ContactSys"); // the field itself is there
        const auto failure = failureOf([&] { field.Value(); });
        QVERIFY(failure);
        QCOMPARE(failure->number(), err::NoCurrentRecord);
        QCOMPARE(failure->description(), kNoCurrentRecord);
        QCOMPARE(failureOf([&] { rs.MoveNext(); })->number(), err::NoCurrentRecord);
    }

    void closeEmptiesTheRecordset() {
        Recordset rs(board());
        rs.Close();
        QVERIFY(!rs.IsOpen());
        QVERIFY(rs.Eof());
        QCOMPARE(rs.RecordCount(), 0L);
        QCOMPARE(failureOf([&] { rs.Fields("ContactSys"); })->number(), err::ItemNotFound);
        QVERIFY(!Recordset().IsOpen());
    }
};

QTEST_GUILESS_MAIN(RecordsetTest)
#include "RecordsetTest.moc"
