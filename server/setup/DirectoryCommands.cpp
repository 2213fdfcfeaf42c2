#include "DirectoryCommands.h"
#include "OptionAdder.h"

#include "BadInput.h"
#include "Groups.h"
#include "InputRules.h"
#include "Locations.h"
#include "Organisations.h"
#include "People.h"
#include "PeopleImport.h"
#include "Statuses.h"
#include "store/Database.h"
#include <QCommandLineParser>
#include <QFile>
#include <QStringDecoder>
#include <QTextStream>
#include <QUrl>
#include <functional>

namespace DirectoryCommands {
namespace {

struct Context {
    const QStringList& args; // command, what, and the name or file when there is one
    const QCommandLineParser& parser;
    const QString& dbUrl;

    QString option(const char* name) const { return parser.value(QLatin1String(name)); }
    QString subject() const { return args.value(2); }
};

void say(const QString& line) {
    QTextStream(stdout) << line << '\n';
}

// The store, made ready; opened only once the input has been checked.
std::unique_ptr<Database> open(const Context& c) {
    auto db = std::make_unique<Database>(c.dbUrl);
    db->createSchema();
    return db;
}

// Mail goes out when the links in it have somewhere to point.
MailSetup mailSetup(const Context& c) {
    MailSetup mail;
    mail.publicUrl = c.option("public-url").trimmed();
    mail.mailFrom = c.option("mail-from").trimmed();
    while (mail.publicUrl.endsWith(QLatin1Char('/')))
        mail.publicUrl.chop(1);
    const QUrl url(mail.publicUrl);
    if (!mail.publicUrl.isEmpty() &&
        (!url.isValid() || url.host().isEmpty() ||
         (url.scheme() != QStringLiteral("http") && url.scheme() != QStringLiteral("https"))))
        throw BadInput(QStringLiteral("--public-url takes http[s]://host[:port]"));
    if (mail.mails())
        InputRules::emailAddress(mail.mailFrom);
    return mail;
}

QString welcomeText(const AddedPerson& added, const QString& email) {
    return added.password.isEmpty()
               ? QStringLiteral("a set-password mail to %1 is queued").arg(email)
               : QStringLiteral("first password: %1").arg(added.password);
}

int orgAdd(const Context& c) {
    InputRules::name(c.subject(), QStringLiteral("the organisation's name"), 100);
    const auto db = open(c);
    const qint64 key = Organisations::add(*db, c.subject());
    say(QStringLiteral("added organisation '%1' (%2)").arg(c.subject().trimmed()).arg(key));
    return 0;
}

int personAdd(const Context& c) {
    const PersonInput person = People::checked(
        {c.option("first"), c.option("last"), c.option("user"), c.option("email"), c.option("ext"),
         c.option("group"), c.option("location"), c.parser.isSet(QStringLiteral("admin"))});
    const MailSetup mail = mailSetup(c);
    const auto db = open(c);
    const AddedPerson added =
        People::add(*db, Organisations::find(*db, c.option("org")), person, mail);
    say(QStringLiteral("added %1 %2 as %3 (contact %4, user %5); %6")
            .arg(person.first, person.last, person.user)
            .arg(added.contactSys)
            .arg(added.userSys)
            .arg(welcomeText(added, person.email)));
    return 0;
}

int personImport(const Context& c) {
    QFile file(c.subject());
    if (c.subject().isEmpty() || !file.open(QIODevice::ReadOnly))
        throw BadInput(QStringLiteral("can't read '%1'").arg(c.subject()));
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = utf8.decode(file.readAll());
    if (utf8.hasError())
        throw BadInput(QStringLiteral("'%1' isn't UTF-8 text").arg(c.subject()));
    const MailSetup mail = mailSetup(c);
    const auto db = open(c);
    const auto people =
        PeopleImport::run(*db, Organisations::find(*db, c.option("org")), text, mail);
    for (const AddedPerson& added : people)
        say(QStringLiteral("added %1 (contact %2, user %3); %4")
                .arg(added.user)
                .arg(added.contactSys)
                .arg(added.userSys)
                .arg(added.password.isEmpty()
                         ? QStringLiteral("a set-password mail is queued")
                         : QStringLiteral("first password: ") + added.password));
    say(QStringLiteral("imported %1 people").arg(people.size()));
    return 0;
}

int personDisable(const Context& c) {
    const auto db = open(c);
    People::disable(*db, People::findUser(*db, c.subject()));
    say(QStringLiteral("disabled %1: can't sign in any more, sessions ended").arg(c.subject()));
    return 0;
}

int personRemove(const Context& c) {
    const auto db = open(c);
    People::remove(*db, People::findUser(*db, c.subject()));
    say(QStringLiteral("removed %1 from the board; the account is closed").arg(c.subject()));
    return 0;
}

int personRights(const Context& c) {
    const Rights rights{c.parser.isSet(QStringLiteral("admin")),
                        c.parser.isSet(QStringLiteral("others-status"))};
    const auto db = open(c);
    People::setRights(*db, People::findUser(*db, c.subject()), rights);
    say(QStringLiteral("%1: administrator %2, may change anyone's status %3")
            .arg(c.subject(), rights.administrator ? QStringLiteral("yes") : QStringLiteral("no"),
                 rights.othersStatus ? QStringLiteral("yes") : QStringLiteral("no")));
    return 0;
}

int groupAdd(const Context& c) {
    InputRules::name(c.subject(), QStringLiteral("the group's name"));
    const auto db = open(c);
    const qint64 key = Groups::add(*db, Organisations::find(*db, c.option("org")), c.subject());
    say(QStringLiteral("added group '%1' (%2)").arg(c.subject().trimmed()).arg(key));
    return 0;
}

int locationAdd(const Context& c) {
    InputRules::name(c.subject(), QStringLiteral("the location's name"));
    const auto db = open(c);
    const qint64 key = Locations::add(*db, Organisations::find(*db, c.option("org")), c.subject());
    say(QStringLiteral("added location '%1' (%2)").arg(c.subject().trimmed()).arg(key));
    return 0;
}

int statusAdd(const Context& c) {
    const StatusInput status{c.subject(), c.option("color"), c.option("order")};
    InputRules::name(status.text, QStringLiteral("the status text"));
    InputRules::colour(status.colour);
    InputRules::number(status.order, QStringLiteral("--order"), 1, 1000);
    const auto db = open(c);
    const qint64 key = Statuses::add(*db, Organisations::find(*db, c.option("org")), status);
    say(QStringLiteral("added status '%1' (%2): %3, order %4")
            .arg(status.text.trimmed())
            .arg(key)
            .arg(status.colour.trimmed().toUpper(), status.order.trimmed()));
    return 0;
}

struct Command {
    const char* what;
    const char* action;
    int arguments; // positional ones, the command's words included
    std::function<int(const Context&)> run;
};

const Command kCommands[] = {{"org", "add", 3, orgAdd},
                             {"person", "add", 2, personAdd},
                             {"person", "import", 3, personImport},
                             {"person", "disable", 3, personDisable},
                             {"person", "remove", 3, personRemove},
                             {"person", "rights", 3, personRights},
                             {"group", "add", 3, groupAdd},
                             {"location", "add", 3, locationAdd},
                             {"status", "add", 3, statusAdd}};

} // namespace

int Run(const QStringList& args, const QCommandLineParser& parser, const QString& dbUrl) {
    bool known = false;
    for (const Command& command : kCommands) {
        if (args.value(0) != QLatin1String(command.what))
            continue;
        known = true;
        if (args.value(1) != QLatin1String(command.action))
            continue;
        if (args.size() != command.arguments)
            throw BadInput(QStringLiteral("%1 %2 takes %3")
                               .arg(args[0], args[1],
                                    command.arguments == 2 ? QStringLiteral("no further words")
                                                           : QStringLiteral("one name")));
        return command.run({args, parser, dbUrl});
    }
    if (known)
        throw BadInput(QStringLiteral("unknown command: ") + args.join(QLatin1Char(' ')));
    return -1;
}

void AddOptions(QCommandLineParser& parser) {
    const OptionAdder add(parser);
    add("org", "the organisation, by name or number", "org");
    add("first", "person add: first name", "name");
    add("last", "person add: last name", "name");
    add("user", "person add: user name", "name");
    add("email", "person add: e-mail address", "address");
    add("ext", "person add: extension", "ext");
    add("group", "person add: the group, by name", "name");
    add("location", "person add: the location, by name", "name");
    add("color", "status add: the colour, #RRGGBB", "#rrggbb");
    add("order", "status add: its place in the list, 1 to 1000", "n");
    parser.addOption({QStringLiteral("admin"), QStringLiteral("person add|rights: administrator")});
    parser.addOption({QStringLiteral("others-status"),
                      QStringLiteral("person rights: may change anyone's status")});
}

} // namespace DirectoryCommands
