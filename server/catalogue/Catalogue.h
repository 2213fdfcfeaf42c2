#pragma once

#include "Caller.h"
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
    Args(const std::vector<wire::Argument>& args, Caller& caller)
        : m_args(args), m_caller(caller) {}
    int count() const { return static_cast<int>(m_args.size()); }
    bool isNull(int i) const { return m_args.at(i).kind == wire::Argument::Kind::Null; }
    qint64 integer(int i) const { return m_args.at(i).integer; }
    QString text(int i) const { return m_args.at(i).text; }
    // NULL as an invalid QVariant, otherwise the value: bound straight into queries.
    QVariant value(int i) const;
    // Who the statement runs for.
    Caller& caller() const { return m_caller; }

private:
    const std::vector<wire::Argument>& m_args;
    Caller& m_caller;
};

// What an argument names, for the check that the signed-in person may name it.
enum class Role {
    Any,             // nothing to check
    SelfUser,        // the signed-in user
    SelfContact,     // the signed-in person's contact
    Colleague,       // a contact of the signed-in person's organisation
    StatusOf,        // oneself, or a colleague with the right to change others' status
    FriendToAdd,     // a colleague by contact key, or by user key
    OwnOrganization, // the signed-in person's organisation
    OwnGroup,        // a group of that organisation
    OwnLocation,     // a location of that organisation
    OwnSessionRow,   // a Sessions row of the signed-in user
};

// Who may run a procedure: with anonymous, also a caller without a session (the handler
// then decides); roles by argument position, NULL always passing.
struct Access {
    bool anonymous = false;
    std::vector<Role> roles;
};

// What a handler throws to turn away a well-formed statement that the caller may not make
// (someone else's note, mail to an outside address). The gateway answers 403 and logs the
// reason; a write in progress is rolled back with the transaction.
class Refusal : public std::runtime_error {
public:
    explicit Refusal(const QString& reason, int status = 403)
        : std::runtime_error(reason.toStdString()), m_reason(reason), m_status(status) {}
    QString reason() const { return m_reason; }
    int status() const { return m_status; } // 403, or 429 for a caller who must wait

private:
    QString m_reason;
    int m_status;
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

    void add(const QString& name, std::vector<std::vector<ArgShape>> shapes, Handler handler,
             Access access = {});

    // Why the statement is refused, or nullopt when it may run.
    std::optional<QString> refusal(const wire::Statement& statement) const;
    // Throws Refusal unless the caller may run the accepted statement with these arguments.
    void authorize(Database& db, const wire::Statement& statement, Caller& caller) const;
    // Runs an accepted, authorised statement.
    Answer run(Database& db, const wire::Statement& statement, Caller& caller) const;

    QStringList names() const;

private:
    struct Procedure {
        std::vector<std::vector<ArgShape>> shapes;
        Handler handler;
        Access access;
    };
    static QString keyOf(const wire::Statement& statement);
    QHash<QString, Procedure> m_procedures;
};

// Throws Refusal unless argument i of the call names what the role allows the caller.
void CheckRole(Database& db, Role role, const Args& args, int i, const QString& procedure);

// Registers the procedures of each group; called once before serving.
void registerCatalogue();
