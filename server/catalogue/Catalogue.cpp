#include "Catalogue.h"

#include <QStringList>

namespace {

bool fits(ArgShape shape, const wire::Argument& arg) {
    using Kind = wire::Argument::Kind;
    switch (shape) {
    case ArgShape::Int:
        return arg.kind == Kind::Integer;
    case ArgShape::Text:
        return arg.kind == Kind::Text;
    case ArgShape::IntOrNull:
        return arg.kind == Kind::Integer || arg.kind == Kind::Null;
    case ArgShape::TextOrNull:
        return arg.kind == Kind::Text || arg.kind == Kind::Null;
    case ArgShape::Null:
        return arg.kind == Kind::Null;
    case ArgShape::GetDate:
        return arg.kind == Kind::GetDate;
    }
    return false;
}

bool fitsShape(const std::vector<ArgShape>& shape, const std::vector<wire::Argument>& args) {
    if (shape.size() != args.size())
        return false;
    for (size_t i = 0; i < shape.size(); ++i)
        if (!fits(shape[i], args[i]))
            return false;
    return true;
}

} // namespace

QVariant Args::value(int i) const {
    const auto& arg = m_args.at(i);
    switch (arg.kind) {
    case wire::Argument::Kind::Integer:
        return QVariant(qlonglong(arg.integer));
    case wire::Argument::Kind::Text:
        return QVariant(arg.text);
    default:
        return QVariant();
    }
}

Catalogue& Catalogue::instance() {
    static Catalogue catalogue;
    return catalogue;
}

void Catalogue::add(const QString& name, std::vector<std::vector<ArgShape>> shapes, Handler handler,
                    Access access) {
    m_procedures.insert(name.toLower(), {std::move(shapes), std::move(handler), std::move(access)});
}

QString Catalogue::keyOf(const wire::Statement& statement) {
    switch (statement.kind) {
    case wire::Statement::Kind::SessionInsert:
        return QStringLiteral("<sessions insert>");
    case wire::Statement::Kind::SessionUpdate:
        return QStringLiteral("<sessions update>");
    default:
        return statement.procedure.toLower();
    }
}

std::optional<QString> Catalogue::refusal(const wire::Statement& statement) const {
    const auto found = m_procedures.constFind(keyOf(statement));
    if (found == m_procedures.constEnd())
        return QStringLiteral("no such procedure: ") + statement.procedure.left(80);
    for (const auto& shape : found->shapes)
        if (fitsShape(shape, statement.args))
            return std::nullopt;
    return QStringLiteral("%1 doesn't take these %2 arguments")
        .arg(statement.procedure.isEmpty() ? keyOf(statement) : statement.procedure)
        .arg(statement.args.size());
}

void Catalogue::authorize(Database& db, const wire::Statement& statement, Caller& caller) const {
    const auto& procedure = m_procedures[keyOf(statement)];
    const QString name = statement.procedure.isEmpty() ? keyOf(statement) : statement.procedure;
    if (!caller.signedIn()) {
        if (!procedure.access.anonymous)
            throw Refusal(QStringLiteral("%1 needs a signed-in session").arg(name));
        return;
    }
    const Args args(statement.args, caller);
    const auto& roles = procedure.access.roles;
    for (int i = 0; i < args.count() && i < int(roles.size()); ++i)
        if (!args.isNull(i))
            CheckRole(db, roles[std::size_t(i)], args, i, name);
}

Answer Catalogue::run(Database& db, const wire::Statement& statement, Caller& caller) const {
    const auto& procedure = m_procedures[keyOf(statement)];
    return procedure.handler(db, Args(statement.args, caller));
}

QStringList Catalogue::names() const {
    QStringList out = m_procedures.keys();
    out.sort();
    return out;
}
