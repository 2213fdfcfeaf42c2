#include "RowsetFromQuery.h"

#include "RowsetBuilder.h"
#include "store/Database.h"
#include <QSqlDriver>
#include <QSqlRecord>
#include <sqlite3.h>
#include <stdexcept>

namespace {

// The connection's own SQLite handle, or null on another engine.
sqlite3* sqliteHandle(QSqlDatabase connection) {
    const QVariant handle = connection.driver()->handle();
    if (!handle.isValid() || qstrcmp(handle.typeName(), "sqlite3*") != 0)
        return nullptr;
    return *static_cast<sqlite3* const*>(handle.data());
}

wire::Rowset readSqlite(sqlite3* db, const QString& sql, const QVariantList& values) {
    sqlite3_stmt* statement = nullptr;
    const QByteArray text = sql.toUtf8();
    if (sqlite3_prepare_v2(db, text.constData(), int(text.size()), &statement, nullptr) !=
        SQLITE_OK)
        throw std::runtime_error(std::string("cannot prepare: ") + sqlite3_errmsg(db));
    std::vector<QByteArray> kept; // bound texts live until the statement ends
    kept.reserve(values.size());
    for (int i = 0; i < values.size(); ++i) {
        const QVariant& value = values[i];
        if (value.isNull())
            sqlite3_bind_null(statement, i + 1);
        else if (value.typeId() == QMetaType::QString) {
            kept.push_back(value.toString().toUtf8());
            sqlite3_bind_text(statement, i + 1, kept.back().constData(), int(kept.back().size()),
                              SQLITE_STATIC);
        } else
            sqlite3_bind_int64(statement, i + 1, value.toLongLong());
    }
    const int count = sqlite3_column_count(statement);
    QStringList names;
    for (int i = 0; i < count; ++i)
        names << QString::fromUtf8(sqlite3_column_name(statement, i));
    RowsetBuilder builder(names);
    int step;
    while ((step = sqlite3_step(statement)) == SQLITE_ROW) {
        std::vector<QVariant> row(count);
        for (int i = 0; i < count; ++i) {
            switch (sqlite3_column_type(statement, i)) {
            case SQLITE_INTEGER:
                row[i] = QVariant(qlonglong(sqlite3_column_int64(statement, i)));
                break;
            case SQLITE_NULL:
                break;
            default: {
                const auto* chars =
                    reinterpret_cast<const char*>(sqlite3_column_text(statement, i));
                row[i] = QVariant(QString::fromUtf8(chars, sqlite3_column_bytes(statement, i)));
            }
            }
        }
        builder.addRow(std::move(row));
    }
    sqlite3_finalize(statement);
    if (step != SQLITE_DONE)
        throw std::runtime_error(std::string("cannot read: ") + sqlite3_errmsg(db));
    return builder.finish();
}

} // namespace

wire::Rowset RowsetFromQuery(QSqlQuery& query) {
    const QSqlRecord record = query.record();
    QStringList names;
    for (int i = 0; i < record.count(); ++i)
        names << record.fieldName(i);
    RowsetBuilder builder(names);
    while (query.next()) {
        std::vector<QVariant> row(names.size());
        for (int i = 0; i < names.size(); ++i) {
            QVariant value = query.value(i);
            if (!value.isNull())
                row[i] = std::move(value);
        }
        builder.addRow(std::move(row));
    }
    return builder.finish();
}

wire::Rowset ReadRowset(Database& db, const QString& sql, const QVariantList& values) {
    if (sqlite3* handle = sqliteHandle(db.connection()))
        return readSqlite(handle, sql, values);
    QSqlQuery query = db.exec(sql, values);
    return RowsetFromQuery(query);
}
