#pragma once

#include <QString>

// The maker's own addresses, quoted in messages and mails to users.
namespace MakerAddresses {
inline const QString SupportMail = QStringLiteral("support@norvane.com");
inline const QString InfoMail = QStringLiteral("info@norvane.com");
inline const QString NotesMail = QStringLiteral("notes@norvane.com");
inline const QString WebSite = QStringLiteral("www.norvane.com");
} // namespace MakerAddresses
