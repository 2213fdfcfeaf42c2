#include "BoardAnswer.h"

#include "wire/RowsetWriter.h"
#include <QDateTime>
#include <random>

using namespace wire;

namespace BoardAnswer {
namespace {

Column column(const char* name, FieldType type, int maxLength = -1) {
    Column c;
    c.name = QString::fromLatin1(name);
    c.type = type;
    c.maxLength = maxLength;
    return c;
}

QString pick(std::mt19937& rng, const QStringList& list) {
    return list.at(qsizetype(rng() % std::uint32_t(list.size())));
}

} // namespace

std::vector<Column> Columns() {
    return {column("ContactSys", FieldType::Int, 4),
            column("UserSys", FieldType::Int, 4),
            column("FirstName", FieldType::String, 50),
            column("LastName", FieldType::String, 50),
            column("Ext", FieldType::String, 10),
            column("StatusSys", FieldType::Int, 4),
            column("Status", FieldType::String, 50),
            column("Description", FieldType::String, 100),
            column("ColorSys", FieldType::Int, 4),
            column("ColorCode", FieldType::String, 6),
            column("comment", FieldType::String, 255),
            column("returningtext", FieldType::String, 50),
            column("myfriend", FieldType::Int, 4),
            column("ChatStatus", FieldType::Boolean, 2),
            column("Last Update", FieldType::DateTime, 16)};
}

// A deterministic board of kPeople rows: some Nulls, some comments with TAB, CR LF and other
// control characters inside.
QByteArray Xml() {
    const QStringList first{"Ann", "Bob", "Cara", "Dmitri", "Eve", "François", "Gül", "Hiro"};
    const QStringList last{"O'Neil", "Smith & Sons", "Diaz", "Müller", "Nakamura", "Ng"};
    const QStringList status{"In", "Out", "Unavailable", "At lunch", "In a meeting"};
    const QStringList colors{"00FF00", "FF0000", "FFFF00", "0000FF", "C0C0C0"};
    const QStringList comments{"Back after lunch\tcall my cell", "Meeting with <client>",
                               "line one\r\nline two", "On site \x01 visit", "Training"};
    std::mt19937 rng(42);
    Rowset r;
    r.columns = Columns();
    const QDateTime base(QDate(2024, 1, 1), QTime(8, 0));
    for (int i = 0; i < kPeople; ++i) {
        const QString f = pick(rng, first);
        const QString l = pick(rng, last);
        const int s = int(rng() % 5);
        std::vector<QVariant> row{
            QVariant(qlonglong(1000 + i)),
            QVariant(qlonglong(5000 + i)),
            f,
            l,
            rng() % 4 ? QVariant(QString::number(100 + i % 900)) : QVariant(QString()),
            QVariant(qlonglong(3 + s)),
            status.at(s),
            pick(rng, {"Engineering", "Sales desk", "Accounting", "Support"}),
            QVariant(qlonglong(10 + s)),
            colors.at(s),
            rng() % 2 ? QVariant(pick(rng, comments)) : QVariant(),
            rng() % 3 ? QVariant() : QVariant(QString("01/%1/2024 1:30 PM").arg(1 + i % 28)),
            QVariant(qlonglong(rng() % 2)),
            QVariant(rng() % 2 == 0),
            QVariant(base.addSecs(i * 37)),
        };
        r.rows.push_back(std::move(row));
    }
    return RowsetWriter::write(r);
}

} // namespace BoardAnswer
