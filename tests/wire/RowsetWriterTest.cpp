#include "wire/RowsetWriter.h"
#include "wire/RowsetReader.h"

#include "Rows.h"
#include "WireSample.h"
#include <QDateTime>
#include <QFile>
#include <QtTest>
#include <cmath>

using namespace wire;

namespace {

Column column(const QString& name, FieldType type) {
    Column c;
    c.name = name;
    c.type = type;
    return c;
}

// Equal values of the same type; NaN equals NaN.
bool sameValue(const QVariant& a, const QVariant& b) {
    if (a.typeId() != b.typeId())
        return false;
    if (a.typeId() == QMetaType::Double && std::isnan(a.toDouble()))
        return std::isnan(b.toDouble());
    if (a.typeId() == QMetaType::Double)
        return std::signbit(a.toDouble()) == std::signbit(b.toDouble()) && a == b;
    return a == b;
}

void compareRowsets(const Rowset& expected, const Rowset& actual) {
    QCOMPARE(actual.columns.size(), expected.columns.size());
    for (std::size_t i = 0; i < expected.columns.size(); ++i) {
        const Column& e = expected.columns[i];
        const Column& a = actual.columns[i];
        QCOMPARE(a.name, e.name);
        QCOMPARE(a.type, e.type);
        QCOMPARE(a.dbType, e.dbType);
        QCOMPARE(a.maxLength, e.maxLength);
        QCOMPARE(a.nullable, e.nullable);
    }
    QCOMPARE(actual.rows.size(), expected.rows.size());
    for (std::size_t r = 0; r < expected.rows.size(); ++r) {
        for (std::size_t c = 0; c < expected.columns.size(); ++c) {
            const QVariant& e = expected.rows[r][c];
            const QVariant& a = actual.rows[r][c];
            if (!sameValue(e, a)) {
                QFAIL(qPrintable(QString("row %1 column %2: wrote %3 (%4), read %5 (%6)")
                                     .arg(r)
                                     .arg(expected.columns[c].name)
                                     .arg(e.toString(), e.typeName())
                                     .arg(a.toString(), a.typeName())));
            }
        }
    }
}

} // namespace

class RowsetWriterTest : public QObject {
    Q_OBJECT
private slots:
    void writesInAdosOwnStyle() {
        Rowset r;
        r.columns = {column("ContactSys", FieldType::Int), column("LastName", FieldType::String)};
        r.columns[0].nullable = false;
        r.columns[0].maxLength = 4;
        r.rows = {{QVariant(12LL), QVariant(QString("Ann"))}, {QVariant(13LL), QVariant()}};
        const QByteArray xml = RowsetWriter::write(r);
        QVERIFY(xml.startsWith("<xml xmlns:s='uuid:BDC6E3F0-6DA3-11d1-A2A3-00AA00C14882'\n"
                               "\txmlns:dt='uuid:C2F41010-65B3-11d1-A29F-00AA00C14882'\n"
                               "\txmlns:rs='urn:schemas-microsoft-com:rowset'\n"
                               "\txmlns:z='#RowsetSchema'>\n<s:Schema id='RowsetSchema'>\n"));
        QVERIFY(!xml.contains('"'));
        QVERIFY(xml.contains("\t\t<s:AttributeType name='ContactSys' rs:number='1'>\n"
                             "\t\t\t<s:datatype dt:type='int' dt:maxLength='4' "
                             "rs:maybenull='false'/>\n"));
        QVERIFY(xml.contains("<rs:data>\n\t<z:row ContactSys='12' LastName='Ann'/>\n"
                             "\t<z:row ContactSys='13'/>\n</rs:data>\n"));
        QVERIFY(xml.endsWith("</xml>"));
    }

    void emptyRowsetHasAnEmptyDataElement() {
        Rowset r;
        r.columns = {column("NoteCount", FieldType::Int)};
        const QByteArray xml = RowsetWriter::write(r);
        QVERIFY(xml.contains("\n<rs:data/>\n"));
        const Rowset back = RowsetReader::read(xml);
        QCOMPARE(back.columns.size(), std::size_t(1));
        QVERIFY(back.rows.empty());
    }

    void namesThatCannotBeAttributesGetAliases_data() {
        columns<QStringList, QStringList>("names", "attributes");
        row("plain", QStringList{"ContactSys", "_x", "Ü-ber.1"},
            QStringList{"ContactSys", "_x", "Ü-ber.1"});
        row("blank and symbols", QStringList{"ContactSys", "First Name", "a&b", "1st", ""},
            QStringList{"ContactSys", "c1", "c2", "c3", "c4"});
        row("colon and xml prefix", QStringList{"rs:number", "xmlns", "XMLData"},
            QStringList{"c0", "c1", "c2"});
        row("duplicates", QStringList{"Name", "Name", "name"}, QStringList{"Name", "c1", "name"});
        row("real names like aliases", QStringList{"c1", "Full Name", "c2"},
            QStringList{"c0", "c1", "c2"});
    }
    void namesThatCannotBeAttributesGetAliases() {
        QFETCH(QStringList, names);
        QFETCH(QStringList, attributes);
        Rowset r;
        std::vector<QVariant> row;
        for (const QString& n : names) {
            r.columns.push_back(column(n, FieldType::String));
            row.push_back(QString("v:" + n));
        }
        r.rows.push_back(row);
        const Rowset back = RowsetReader::read(RowsetWriter::write(r));
        QCOMPARE(back.columns.size(), r.columns.size());
        for (qsizetype i = 0; i < names.size(); ++i) {
            QCOMPARE(back.columns[std::size_t(i)].attribute, attributes[i]);
            QCOMPARE(back.columns[std::size_t(i)].name, names[i]);
            QCOMPARE(back.rows[0][std::size_t(i)].toString(), QString("v:" + names[i]));
        }
    }

    void markupAndLineBreaksAreEscaped() {
        Rowset r;
        r.columns = {column("comment", FieldType::String)};
        const QString text = "<a href=\"x\">Tom's & Jerry's</a>\tcol\r\nnext\nline";
        r.rows = {{QVariant(text)}};
        const QByteArray xml = RowsetWriter::write(r);
        const QByteArray row = xml.mid(xml.indexOf("<z:row"));
        QVERIFY(row.startsWith("<z:row comment='&lt;a href=&quot;x&quot;&gt;Tom&apos;s &amp; "
                               "Jerry&apos;s&lt;/a&gt;&#x9;col&#xD;&#xA;next&#xA;line'/>"));
        QCOMPARE(RowsetReader::read(xml).rows[0][0].toString(), text);
    }

    void everyTypeSurvivesTheRoundTrip_data() {
        columns<int, QVariantList>("type", "values");
        const auto ints = [](std::initializer_list<qlonglong> l) {
            QVariantList out;
            for (qlonglong v : l)
                out << QVariant(v);
            return out;
        };
        const auto doubles = [](std::initializer_list<double> l) {
            QVariantList out;
            for (double v : l)
                out << QVariant(v);
            return out;
        };
        const qlonglong lo = std::numeric_limits<qlonglong>::min();
        const qlonglong hi = std::numeric_limits<qlonglong>::max();
        row("int", int(FieldType::Int), ints({0, -1, 2147483647, -2147483648LL}));
        row("i1", int(FieldType::I1), ints({-128, 127}));
        row("i2", int(FieldType::I2), ints({-32768, 32767}));
        row("i4", int(FieldType::I4), ints({-7, 2147483647}));
        row("i8", int(FieldType::I8), ints({lo, hi, 0}));
        row("ui1", int(FieldType::UI1), ints({0, 255}));
        row("ui2", int(FieldType::UI2), ints({65535}));
        row("ui4", int(FieldType::UI4), ints({4294967295LL}));
        row("ui8", int(FieldType::UI8),
            QVariantList{QVariant(std::numeric_limits<qulonglong>::max()),
                         QVariant(qulonglong(0))});
        row("r4", int(FieldType::R4), doubles({double(3.14f), 0.0, -1.5e-30}));
        row("float", int(FieldType::Float),
            doubles({0.1, -0.0, 1e308, 4.9e-324, 1.0 / 3.0, std::numeric_limits<double>::infinity(),
                     std::numeric_limits<double>::quiet_NaN()}));
        row("number", int(FieldType::Number), doubles({1234.5678, -12.5, 1e15}));
        row("boolean", int(FieldType::Boolean), QVariantList{QVariant(true), QVariant(false)});
        row("dateTime", int(FieldType::DateTime),
            QVariantList{QDateTime(QDate(2024, 1, 1), QTime(9, 13)),
                         QDateTime(QDate(1899, 12, 30), QTime(0, 0, 0, 1)),
                         QDateTime(QDate(9999, 12, 31), QTime(23, 59, 59, 999)),
                         QDateTime(QDate(2024, 6, 1), QTime(8, 0), Qt::UTC),
                         QDateTime(QDate(2024, 6, 1), QTime(8, 0), Qt::OffsetFromUTC, -16200)});
        row("date", int(FieldType::Date), QVariantList{QDate(2024, 2, 29), QDate(1753, 1, 1)});
        row("time", int(FieldType::Time), QVariantList{QTime(0, 0), QTime(23, 59, 59, 5)});
        row("uuid", int(FieldType::Uuid),
            QVariantList{QString("{6F9619FF-8B86-D011-B42D-00C04FC964FF}")});
        QByteArray allBytes;
        for (int i = 0; i < 256; ++i)
            allBytes.append(char(i));
        row("bin.hex", int(FieldType::BinHex), QVariantList{allBytes, QByteArray("")});
        row("string", int(FieldType::String),
            QVariantList{QString(""), QString("  padded  "), QString("Zoë € 中文 😀"),
                         QString("ctl \x01\x02\x1f\x7f"), QString("\t\r\n"),
                         QString("]]> <!-- &amp; -->"), QString("'\"")});
        row("text kept in a typed column", int(FieldType::Int),
            QVariantList{QString("12abc"), QString("")});
    }
    void everyTypeSurvivesTheRoundTrip() {
        QFETCH(int, type);
        QFETCH(QVariantList, values);
        Rowset r;
        r.columns = {column("k", FieldType::Int), column("v", FieldType(type))};
        r.columns[1].dbType = "numeric";
        r.columns[1].maxLength = 19;
        r.columns[1].nullable = type % 2 == 0;
        qlonglong key = 0;
        for (const QVariant& v : values)
            r.rows.push_back({QVariant(++key), v});
        r.rows.push_back({QVariant(++key), QVariant()}); // and a Null
        compareRowsets(r, RowsetReader::read(RowsetWriter::write(r)));
    }

    void aByteOrderMarkInsideAValueIsData() {
        const QByteArray doc =
            "<xml xmlns:s='uuid:BDC6E3F0-6DA3-11d1-A2A3-00AA00C14882' "
            "xmlns:dt='uuid:C2F41010-65B3-11d1-A29F-00AA00C14882' "
            "xmlns:rs='urn:schemas-microsoft-com:rowset' xmlns:z='#RowsetSchema'>"
            "<s:Schema id='RowsetSchema'><s:ElementType name='row'>"
            "<s:AttributeType name='n' rs:number='1' dt:type='i2'/>"
            "</s:ElementType></s:Schema><rs:data>"
            "<z:row n='\xEF\xBB\xBF+68'/></rs:data></xml>";
        const Rowset first = RowsetReader::read(doc);
        QCOMPARE(first.rows[0][0], QVariant(QChar(0xFEFF) + QString("+68")));
        compareRowsets(first, RowsetReader::read(RowsetWriter::write(first)));
    }

    // Inputs the fuzzer found: each must read, write and read back to the same rowset.
    void fuzzFindingsStayFixed_data() {
        columns<QString>("path");
        const QDir dir(TAVLO_WIRE_SAMPLES "/fuzz");
        for (const QString& name : dir.entryList(QDir::Files))
            row(qPrintable(name), dir.filePath(name));
    }
    void fuzzFindingsStayFixed() {
        QFETCH(QString, path);
        QFile f(path);
        QVERIFY(f.open(QIODevice::ReadOnly));
        const Rowset first = RowsetReader::read(f.readAll());
        const QByteArray once = RowsetWriter::write(first);
        const Rowset again = RowsetReader::read(once);
        compareRowsets(first, again);
        QCOMPARE(RowsetWriter::write(again), once);
    }

    void samplesReadWriteReadUnchanged_data() {
        columns<QString>("name");
        for (const char* n : {"board.xml", "alltypes.xml", "pending.xml", "versioncheck.xml",
                              "empty.xml", "prefixes.xml", "utf16.xml"})
            row(n, QString(n));
    }
    void samplesReadWriteReadUnchanged() {
        QFETCH(QString, name);
        const Rowset first = RowsetReader::read(sample(name.toLatin1().constData()));
        compareRowsets(first, RowsetReader::read(RowsetWriter::write(first)));
    }
};

QTEST_GUILESS_MAIN(RowsetWriterTest)
#include "RowsetWriterTest.moc"
