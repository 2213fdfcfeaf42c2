#pragma once

#include <QString>
#include <QStringList>
#include <optional>

class Database;

// A client release as tl_VersionCheck names it: the version and where the update file is
// fetched from over FTP, with the SHA-256 of that file when known.
struct Release {
    int major = 0;
    int minor = 0;
    int revision = 0;
    QString ftpSite;      // HOST or HOST:PORT
    QString ftpDirectory; // folder on the FTP server
    QString fileName;     // the update file in that folder
    QString ftpUser;      // "anonymous" unless given
    QString ftpPassword;  // empty for anonymous
    QString sha256;       // lower-case hex, or empty

    QString versionText() const;
};

// What `tavlo-server release` was given; an unset user or password is nullopt.
struct ReleaseInput {
    QString version;
    QString ftpSite;
    QString ftpDirectory;
    QString fileName;
    std::optional<QString> ftpUser;
    std::optional<QString> ftpPassword;
    QString sha256;
};

namespace Releases {

// The release the input describes, or why it doesn't describe one.
struct Parsed {
    std::optional<Release> release;
    QString error;
};
Parsed parse(const ReleaseInput& input);

// Adds the release as the newest row, which tl_VersionCheck answers first.
void add(Database& db, const Release& release);

// What was added, for the operator: one line each.
QStringList describe(const Release& release);

} // namespace Releases
