#include "platform/AutoStart.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <QStandardPaths>

namespace {

QString autostartFolder() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/autostart");
}

// One argument of an Exec line, quoted as desktop entries want it: inside double quotes a
// backslash, double quote, backquote and dollar take a backslash, and the entry's own string
// escaping then doubles every backslash and spells line breaks and tabs. A percent sign is
// doubled, as field codes start with it.
QString execArgument(const QString& argument) {
    QString quoted;
    for (const QChar c : argument) {
        if (c == u'"' || c == u'`' || c == u'$' || c == u'\\')
            quoted += QLatin1Char('\\');
        quoted += c;
    }
    quoted.replace(QLatin1Char('\\'), QStringLiteral("\\\\"));
    quoted.replace(QLatin1Char('%'), QStringLiteral("%%"));
    quoted.replace(QLatin1Char('\n'), QStringLiteral("\\n"));
    quoted.replace(QLatin1Char('\t'), QStringLiteral("\\t"));
    quoted.replace(QLatin1Char('\r'), QStringLiteral("\\r"));
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

QByteArray desktopEntry() {
    QString entry;
    entry += QStringLiteral("[Desktop Entry]\n");
    entry += QStringLiteral("Type=Application\n");
    entry += QStringLiteral("Name=Tavlo\n");
    entry += QStringLiteral("Comment=In/out board\n");
    entry += QStringLiteral("Exec=") + execArgument(AutoStart::Command()) + QLatin1Char('\n');
    entry += QStringLiteral("Terminal=false\n");
    entry += QStringLiteral("X-GNOME-Autostart-enabled=true\n");
    return entry.toUtf8();
}

} // namespace

namespace AutoStart {

QString Command() {
    return QCoreApplication::applicationFilePath();
}

QString EntryLocation() {
    return autostartFolder() + QStringLiteral("/tavlo.desktop");
}

bool IsPresent() {
    return QFile::exists(EntryLocation());
}

bool Add() {
    if (!QDir().mkpath(autostartFolder()))
        return false;
    QSaveFile file(EntryLocation());
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write(desktopEntry());
    return file.commit();
}

bool Remove() {
    return QFile::exists(EntryLocation()) && QFile::remove(EntryLocation());
}

} // namespace AutoStart
