#include "wire/RowsetReader.h"
#include "wire/ComError.h"

#include "Rows.h"
#include "WireSample.h"
#include <QDateTime>
#include <QFile>
#include <QtTest>

using namespace wire;

namespace {

int columnOf(const Rowset& r, const QString& name) {
    for (std::size_t i = 0; i < r.columns.size(); ++i) {
        if (r.columns[i].name == name)
            return int(i);
    }
    return -1;
}

QVariant value(const Rowset& r, std::size_t row, const QString& name) {
    const int c = columnOf(r, name);
    if (c < 0)
        qFatal("no column %s", qPrintable(name));
    return r.rows.at(row).at(std::size_t(c));
}

// The failure a read raises, or nullopt when it succeeds.
std::optional<ComError> failureOf(const QByteArray& bytes) {
    try {
        RowsetReader::read(bytes);
    } catch (const ComError& e) {
        return e;
    }
    return std::nullopt;
}

const char* kHead = "<xml xmlns:s='uuid:BDC6E3F0-6DA3-11d1-A2A3-00AA00C14882'\n"
                    "\txmlns:dt='uuid:C2F41010-65B3-11d1-A29F-00AA00C14882'\n"
                    "\txmlns:rs='urn:schemas-microsoft-com:rowset'\n"
                    "\txmlns:z='#RowsetSchema'>\n"
                    "<s:Schema id='RowsetSchema'>\n"
                    "\t<s:ElementType name='row' content='eltOnly'>\n"
                    "\t\t<s:AttributeType name='comment' rs:number='1' rs:nullable='true'>\n"
                    "\t\t\t<s:datatype dt:type='string' dt:maxLength='255'/>\n"
                    "\t\t</s:AttributeType>\n"
                    "\t\t<s:extends type='rs:rowbase'/>\n"
                    "\t</s:ElementType>\n"
                    "</s:Schema>\n";

// A one-column rowset whose data part is the given text.
QByteArray withData(const QByteArray& data) {
    return QByteArray(kHead) + data + "\n</xml>";
}

} // namespace

class RowsetReaderTest : public QObject {
    Q_OBJECT
private slots:
    void boardColumnsComeInNumberOrderWithRealNames() {
        const Rowset r = RowsetReader::read(sample("board.xml"));
        QStringList names;
        for (const auto& c : r.columns)
            names << c.name;
        QCOMPARE(names,
                 QStringList({"ContactSys", "FirstName", "LastName", "Ext", "StatusSys", "Status",
                              "ColorCode", "comment", "returningtext", "myfriend", "Last Update"}));
        const Column& last = r.columns.back();
        QCOMPARE(last.attribute, QString("c10"));
        QCOMPARE(last.type, FieldType::DateTime);
        QCOMPARE(last.dbType, QString("variantdate"));
        QCOMPARE(last.number, 11);
        QCOMPARE(r.columns[0].type, FieldType::Int);
        QCOMPARE(r.columns[0].maxLength, 4);
        QVERIFY(!r.columns[0].nullable);
        QVERIFY(r.columns[1].nullable);
        QCOMPARE(r.columns[1].dbType, QString("str"));
    }

    void boardValuesKeepEscapesControlsAndNulls() {
        const Rowset r = RowsetReader::read(sample("board.xml"));
        QCOMPARE(r.rows.size(), std::size_t(3));
        QCOMPARE(value(r, 0, "ContactSys").typeId(), QMetaType::LongLong);
        QCOMPARE(value(r, 0, "ContactSys").toLongLong(), 12);
        QCOMPARE(value(r, 0, "LastName").toString(), QString("O'Neil"));
        QCOMPARE(value(r, 1, "LastName").toString(), QString("Smith & Sons"));
        // Raw TAB, CR and LF inside attribute values come through untouched.
        QCOMPARE(value(r, 1, "comment").toString(), QString("Lunch\tthen bank"));
        QCOMPARE(value(r, 2, "comment").toString(), QString("line one\r\nline two"));
        // An absent attribute is Null; an empty one is empty text.
        QVERIFY(!value(r, 0, "comment").isValid());
        QCOMPARE(value(r, 0, "Ext").typeId(), QMetaType::QString);
        QCOMPARE(value(r, 0, "Ext").toString(), QString(""));
        QVERIFY(!value(r, 2, "Last Update").isValid());
        QCOMPARE(value(r, 0, "Last Update").toDateTime(),
                 QDateTime(QDate(2024, 1, 1), QTime(9, 13)));
        QCOMPARE(value(r, 1, "Last Update").toDateTime(),
                 QDateTime(QDate(2024, 1, 2), QTime(12, 30, 5, 250)));
    }

    void otherControlCharactersSurviveToo() {
        const Rowset r = RowsetReader::read(withData("<rs:data>\n\t<z:row comment='a\x01"
                                                     "b\x1f"
                                                     "c\x7f'/>\n</rs:data>"));
        QCOMPARE(r.rows.at(0).at(0).toString(), QString("a\x01"
                                                        "b\x1f"
                                                        "c\x7f"));
    }

    void characterReferencesAreDecoded() {
        const Rowset r = RowsetReader::read(
            withData("<rs:data><z:row comment='&#x9;&#xA;&#xD;&#65;&#x20AC;&lt;&gt;&quot;'/>"
                     "</rs:data>"));
        QCOMPARE(r.rows.at(0).at(0).toString(), QString("\t\n\rA\u20AC<>\""));
    }

    void emptyDataPartGivesColumnsAndNoRows_data() {
        columns<QByteArray, int>("bytes", "columns");
        row("sign-in that found nobody", sample("empty.xml"), 6);
        row("open and close", withData("<rs:data>\n</rs:data>"), 1);
        row("only foreign elements", withData("<rs:data><z:other a='1'/></rs:data>"), 1);
    }
    void emptyDataPartGivesColumnsAndNoRows() {
        QFETCH(QByteArray, bytes);
        QFETCH(int, columns);
        const Rowset r = RowsetReader::read(bytes);
        QCOMPARE(int(r.columns.size()), columns);
        QVERIFY(r.rows.empty());
    }

    void everyTypeReadsAsItsValue_data() {
        columns<QString, int, QVariant>("column", "type", "expected");
        const auto ll = [](qlonglong v) { return QVariant(v); };
        row("int", "int", int(FieldType::Int), ll(-2147483648LL));
        row("i1", "i1", int(FieldType::I1), ll(-128));
        row("i2", "i2", int(FieldType::I2), ll(-32768));
        row("i4", "i4", int(FieldType::I4), ll(2147483647));
        row("i8", "i8", int(FieldType::I8), ll(std::numeric_limits<qlonglong>::min()));
        row("ui1", "ui1", int(FieldType::UI1), ll(255));
        row("ui2", "ui2", int(FieldType::UI2), ll(65535));
        row("ui4", "ui4", int(FieldType::UI4), ll(4294967295LL));
        row("ui8", "ui8", int(FieldType::UI8), QVariant(std::numeric_limits<qulonglong>::max()));
        row("r4", "r4", int(FieldType::R4), QVariant(3.1400001));
        row("float", "float", int(FieldType::Float), QVariant(-0.0025));
        row("currency", "money", int(FieldType::Number), QVariant(1234.5678));
        row("numeric", "numeric", int(FieldType::Number), QVariant(-12.5));
        row("decimal", "decimal", int(FieldType::Number), QVariant(99999999999999.9999));
        row("boolean", "bit", int(FieldType::Boolean), QVariant(true));
        row("dateTime", "stamp", int(FieldType::DateTime),
            QVariant(QDateTime(QDate(2024, 2, 29), QTime(23, 59, 59, 997))));
        row("date", "day", int(FieldType::Date), QVariant(QDate(2024, 2, 29)));
        row("time", "clock", int(FieldType::Time), QVariant(QTime(9, 13)));
        row("uuid", "guid", int(FieldType::Uuid),
            QVariant(QString("{6F9619FF-8B86-D011-B42D-00C04FC964FF}")));
        row("string", "text", int(FieldType::String), QVariant(QString("plain")));
        row("bin.hex", "blob", int(FieldType::BinHex), QVariant(QByteArray::fromHex("00ff10ab")));
        row("type on AttributeType", "flag", int(FieldType::Boolean), QVariant(false));
        row("unknown type is text", "odd", int(FieldType::String), QVariant(QString("42")));
    }
    void everyTypeReadsAsItsValue() {
        QFETCH(QString, column);
        QFETCH(int, type);
        QFETCH(QVariant, expected);
        static const Rowset r = RowsetReader::read(sample("alltypes.xml"));
        const int c = columnOf(r, column);
        QVERIFY(c >= 0);
        QCOMPARE(int(r.columns[std::size_t(c)].type), type);
        const QVariant v = r.rows.at(0).at(std::size_t(c));
        QCOMPARE(v.typeId(), expected.typeId());
        QCOMPARE(v, expected);
    }

    void currencyAndNumericKeepTheirDbType() {
        const Rowset r = RowsetReader::read(sample("alltypes.xml"));
        QCOMPARE(r.columns[std::size_t(columnOf(r, "money"))].dbType, QString("currency"));
        QCOMPARE(r.columns[std::size_t(columnOf(r, "numeric"))].dbType, QString("numeric"));
        QCOMPARE(r.columns[std::size_t(columnOf(r, "decimal"))].dbType, QString("decimal"));
        // The second row leaves most columns out: they are Null.
        QVERIFY(!value(r, 1, "money").isValid());
        QCOMPARE(value(r, 1, "bit"), QVariant(false));
    }

    void valuesThatDoNotReadAsTheirTypeStayText_data() {
        columns<QByteArray, QByteArray>("type", "text");
        row("int with letters", QByteArray("int"), QByteArray("12abc"));
        row("int beyond 64 bits", QByteArray("i8"), QByteArray("9223372036854775808"));
        row("empty int", QByteArray("int"), QByteArray(""));
        row("float with comma", QByteArray("float"), QByteArray("1,5"));
        row("boolean maybe", QByteArray("boolean"), QByteArray("maybe"));
        row("13th month", QByteArray("dateTime"), QByteArray("2024-13-01T00:00:00"));
        row("US date", QByteArray("dateTime"), QByteArray("01/02/2024 9:00 AM"));
        row("odd hex", QByteArray("bin.hex"), QByteArray("abc"));
    }
    void valuesThatDoNotReadAsTheirTypeStayText() {
        QFETCH(QByteArray, type);
        QFETCH(QByteArray, text);
        QByteArray doc = withData("<rs:data><z:row comment='" + text + "'/></rs:data>");
        doc.replace("dt:type='string'", "dt:type='" + type + "'");
        const Rowset r = RowsetReader::read(doc);
        QCOMPARE(r.rows.at(0).at(0).typeId(), QMetaType::QString);
        QCOMPARE(r.rows.at(0).at(0).toString(), QString::fromUtf8(text));
    }

    void pendingChangesShowAsTheRecordsetWouldHoldThem() {
        const Rowset r = RowsetReader::read(sample("pending.xml"));
        QCOMPARE(r.rows.size(), std::size_t(4));
        QCOMPARE(value(r, 0, "ShipperID").toInt(), 2);
        // The update keeps the original values of columns it does not name.
        QCOMPARE(value(r, 1, "ShipperID").toInt(), 3);
        QCOMPARE(value(r, 1, "CompanyName").toString(), QString("Federal Shipping"));
        QCOMPARE(value(r, 1, "Phone").toString(), QString("(503) 552-7134"));
        QCOMPARE(value(r, 2, "ShipperID").toInt(), 12);
        QCOMPARE(value(r, 3, "ShipperID").toInt(), 13);
        QVERIFY(!value(r, 3, "Phone").isValid());
        for (const auto& row : r.rows)
            QVERIFY(row.at(0).toInt() != 1); // the deleted row is gone
    }

    // An update whose original came without its changed row still holds the original.
    void anOriginalWithoutItsChangeStays() {
        const Rowset r = RowsetReader::read(
            withData("<rs:data><rs:update><rs:original><z:row comment='was'/></rs:original>"
                     "<rs:original><z:row comment='also'/></rs:original></rs:update></rs:data>"));
        QCOMPARE(r.rows.size(), std::size_t(2));
        QCOMPARE(value(r, 0, "comment").toString(), QString("was"));
        QCOMPARE(value(r, 1, "comment").toString(), QString("also"));
    }

    void namespacesMatchByUriNotPrefix() {
        const Rowset r = RowsetReader::read(sample("prefixes.xml"));
        QCOMPARE(r.columns.size(), std::size_t(2));
        QCOMPARE(r.columns[0].name, QString("ContactSys"));
        QCOMPARE(r.columns[1].name, QString("NoteCount"));
        QCOMPARE(r.columns[1].type, FieldType::Int);
        QCOMPARE(r.rows.size(), std::size_t(2)); // the row in a foreign namespace is no row
        QCOMPARE(r.rows[0][0].toInt(), 12);
        QCOMPARE(r.rows[1][0].toInt(), 13);
        QCOMPARE(r.rows[1][1].toInt(), 0);
    }

    void textEncodings_data() {
        columns<QByteArray, QString>("bytes", "lastName");
        row("UTF-16LE with BOM", sample("utf16.xml"), QString("Müller – Østergård €"));
        QByteArray utf8 = QString::fromUtf16(reinterpret_cast<const char16_t*>(
                                                 sample("utf16.xml").constData() + 2),
                                             (sample("utf16.xml").size() - 2) / 2)
                              .toUtf8();
        row("UTF-8", utf8, QString("Müller – Østergård €"));
        row("UTF-8 with BOM", QByteArray("\xEF\xBB\xBF") + utf8, QString("Müller – Østergård €"));
    }
    void textEncodings() {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, lastName);
        const Rowset r = RowsetReader::read(bytes);
        QCOMPARE(r.rows.size(), std::size_t(1));
        QCOMPARE(r.rows[0][1].toString(), lastName);
    }

    void unreadableAnswersRaiseTheGenericNumber_data() {
        columns<QByteArray>("bytes");
        row("empty", QByteArray());
        row("blanks and line breaks", QByteArray(" \r\n\t "));
        row("IIS error page",
            QByteArray("<html><head><title>500 - Internal server error.</title></head>"
                       "<body><h2>500 - Internal server error.</h2></body></html>"));
        row("HTML that is no XML",
            QByteArray("<!DOCTYPE html><html><body><p>Server Error<br></body></html>"));
        row("provider error text",
            QByteArray("Microsoft OLE DB Provider for ODBC Drivers error '80040e14'"));
        row("well-formed, no rowset", QByteArray("<xml><answer ok='1'/></xml>"));
        row("schema in a foreign namespace",
            withData("<rs:data/>").replace("uuid:BDC6E3F0", "uuid:00000000"));
        row("schema, no data part", QByteArray(kHead) + "</xml>");
        row("UTF-16 cut in half a character", sample("utf16.xml").chopped(1));
        row("NUL inside",
            withData(QByteArray("<rs:data><z:row comment='a\0b'/>", 32) + "</rs:data>"));
    }
    void unreadableAnswersRaiseTheGenericNumber() {
        QFETCH(QByteArray, bytes);
        const auto failure = failureOf(bytes);
        QVERIFY(failure);
        QCOMPARE(failure->number(), err::Unspecified);
        QVERIFY(!failure->description().isEmpty());
        QVERIFY(!failure->description().contains(u'\n'));
    }

    void everyTruncationIsRefused() {
        const QByteArray board = sample("board.xml");
        for (qsizetype n = 0; n < board.size(); ++n) {
            const auto failure = failureOf(board.left(n));
            if (!failure || failure->number() != err::Unspecified)
                QFAIL(qPrintable(QString("a board cut after %1 bytes was read").arg(n)));
        }
    }
};

QTEST_GUILESS_MAIN(RowsetReaderTest)
#include "RowsetReaderTest.moc"
