#pragma once

#include "wire/Rowset.h"
#include "wire/Statement.h"
#include <QHash>
#include <QString>
#include <functional>
#include <optional>
#include <stdexcept>
#include <vector>

class Database;

// What a procedure may be given in one argument position.
enum class ArgShape { Int, Text, IntOrNull, TextOrNull, Null, GetDate };

// The arguments of one accepted call, read by position. The shape check has run before any
// handler sees them, so the kinds are known.
class Args {
public:
    explicit Args(const std::vector<wire::Argument>& args) : m_args(args) {}
    int count() const { return static_cast<int>(m_args.size()); }
    bool isNull(int i) const { return m_args.at(i).kind == wire::Argument::Kind::Null; }
    qint64 integer(int i) const { return m_args.at(i).integer; }
    QString text(int i) const { return m_args.at(i).text; }
    // NULL as an invalid QVariant, otherwise the value: bound straight into queries.
    QVariant value(int i) const;

private:
    const std::vector<wire::Argument>& m_args;
};

// What a handler throws to turn away a well-formed statement that the caller may not make
// (someone else's note, mail to an outside address). The gateway answers 403 and logs the
// reason; a write in progress is rolled back with the transaction.
class Refusal : public std::runtime_error {
public:
    explicit Refusal(const QString& reason)
        : std::runtime_error(reason.toStdString()), m_reason(reason) {}
    QString reason() const { return m_reason; }

private:
    QString m_reason;
};

// A read answers a rowset; a write answers nothing.
using Answer = std::optional<wire::Rowset>;
using Handler = std::function<Answer(Database&, const Args&)>;

// Every statement the server runs, by procedure name (any case), with the argument shapes
// each accepts. A statement that names nothing here, or has no accepted shape, is refused
// before any handler runs.
class Catalogue {
public:
    static Catalogue& instance();

    void add(const QString& name, std::vector<std::vector<ArgShape>> shapes, Handler handler);

    // Why the statement is refused, or nullopt when it may run.
    std::optional<QString> refusal(const wire::Statement& statement) const;
    // Runs an accepted statement.
    Answer run(Database& db, const wire::Statement& statement) const;

    QStringList names() const;

private:
    struct Procedure {
        std::vector<std::vector<ArgShape>> shapes;
        Handler handler;
    };
    static QString keyOf(const wire::Statement& statement);
    QHash<QString, Procedure> m_procedures;
};

// Registers the procedures of each group; called once before serving.
void registerCatalogue();
