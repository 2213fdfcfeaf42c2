#include "Release.h"

#include "Database.h"
#include <QRegularExpression>

namespace {

// The client keeps each part in a 16-bit signed integer.
constexpr int kMaxVersionPart = 32767;

bool parseVersion(const QString& text, Release& out) {
    static const QRegularExpression form(
        QStringLiteral("^([0-9]{1,5})\\.([0-9]{1,5})\\.([0-9]{1,5})$"));
    const auto match = form.match(text);
    if (!match.hasMatch())
        return false;
    int* parts[] = {&out.major, &out.minor, &out.revision};
    for (int i = 0; i < 3; ++i) {
        *parts[i] = match.captured(i + 1).toInt();
        if (*parts[i] > kMaxVersionPart)
            return false;
    }
    return true;
}

// HOST or HOST:PORT with no scheme, path or blanks (an IPv6 address in brackets); a port, when
// given, in 1..65535.
bool isFtpSite(const QString& site) {
    static const QRegularExpression form(
        QStringLiteral("^(?:\\[[0-9A-Fa-f:.]+\\]|[^\\s/:@\\[\\]]+)(?::([0-9]{1,5}))?$"));
    const auto match = form.match(site);
    if (!match.hasMatch())
        return false;
    const QString port = match.captured(1);
    return port.isEmpty() || (port.toInt() >= 1 && port.toInt() <= 65535);
}

bool hasControl(const QString& text) {
    for (const QChar c : text)
        if (c.category() == QChar::Other_Control)
            return true;
    return false;
}

QString checkPlace(const ReleaseInput& in) {
    if (!isFtpSite(in.ftpSite))
        return QStringLiteral("--ftp-site takes HOST or HOST:PORT, as in ftp.example.org:2121");
    if (in.ftpDirectory.isEmpty() || hasControl(in.ftpDirectory))
        return QStringLiteral("--ftp-dir takes the folder on the FTP server, as in /updates");
    if (in.fileName.isEmpty() || in.fileName.contains(QLatin1Char('/')) || hasControl(in.fileName))
        return QStringLiteral("--file takes the update file's name (no folder), as in "
                              "tavlo-update-1.0.1.run");
    return {};
}

QString checkSignIn(const ReleaseInput& in) {
    if (in.ftpUser.has_value() != in.ftpPassword.has_value())
        return QStringLiteral("--ftp-user and --ftp-password go together (leave both out for an "
                              "anonymous FTP server)");
    if (in.ftpUser && (in.ftpUser->isEmpty() || hasControl(*in.ftpUser)))
        return QStringLiteral("--ftp-user takes a user name");
    if (in.ftpPassword && hasControl(*in.ftpPassword))
        return QStringLiteral("--ftp-password may not hold control characters");
    return {};
}

} // namespace

QString Release::versionText() const {
    return QStringLiteral("%1.%2.%3").arg(major).arg(minor).arg(revision);
}

namespace Releases {

Parsed parse(const ReleaseInput& in) {
    Release release;
    if (!parseVersion(in.version, release))
        return {std::nullopt, QStringLiteral("--version takes MAJOR.MINOR.REVISION, each a whole "
                                             "number from 0 to 32767, as in 1.0.1")};
    static const QRegularExpression hex(QStringLiteral("^[0-9A-Fa-f]{64}$"));
    if (!in.sha256.isEmpty() && !hex.match(in.sha256).hasMatch())
        return {std::nullopt, QStringLiteral("--sha256 takes the update file's SHA-256 as 64 hex "
                                             "digits (sha256sum prints it)")};
    for (const QString& error : {checkPlace(in), checkSignIn(in)})
        if (!error.isEmpty())
            return {std::nullopt, error};
    release.ftpSite = in.ftpSite;
    release.ftpDirectory = in.ftpDirectory;
    release.fileName = in.fileName;
    release.ftpUser = in.ftpUser.value_or(QStringLiteral("anonymous"));
    release.ftpPassword = in.ftpPassword.value_or(QString());
    release.sha256 = in.sha256.toLower();
    return {release, {}};
}

void add(Database& db, const Release& r) {
    db.write([&] {
        const qint64 key = db.nextKey(QStringLiteral("versioninfo"), QStringLiteral("versionsys"));
        db.exec(QStringLiteral("INSERT INTO versioninfo (versionsys, versionstring, major, minor, "
                               "revision, ftpsite, ftpdirectory, ftpfile, ftpuser, ftppassword, "
                               "updatesha256) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"),
                {key, r.versionText(), r.major, r.minor, r.revision, r.ftpSite, r.ftpDirectory,
                 r.fileName, r.ftpUser, r.ftpPassword.isNull() ? QStringLiteral("") : r.ftpPassword,
                 r.sha256.isEmpty() ? QVariant() : QVariant(r.sha256)});
    });
}

QStringList describe(const Release& r) {
    QString path = r.ftpDirectory;
    if (!path.startsWith(QLatin1Char('/')))
        path.prepend(QLatin1Char('/'));
    if (!path.endsWith(QLatin1Char('/')))
        path += QLatin1Char('/');
    return {QStringLiteral("release %1 added: tl_VersionCheck now names it").arg(r.versionText()),
            QStringLiteral("update file: ftp://%1%2%3").arg(r.ftpSite, path, r.fileName),
            QStringLiteral("signed in as: %1").arg(r.ftpUser),
            QStringLiteral("sha256: %1")
                .arg(r.sha256.isEmpty() ? QStringLiteral("(not given)") : r.sha256)};
}

} // namespace Releases
