#include "InputRules.h"

#include "BadInput.h"
#include <QRegularExpression>

namespace InputRules {
namespace {

bool hasControl(const QString& text) {
    for (const QChar c : text)
        if (c.category() == QChar::Other_Control || c == QChar::LineSeparator ||
            c == QChar::ParagraphSeparator)
            return true;
    return false;
}

bool matches(const QString& text, const char* pattern) {
    return QRegularExpression(QLatin1String(pattern)).match(text).hasMatch();
}

// The text, trimmed, when it matches the pattern; otherwise the complaint, with the text in
// place of %1.
QString matching(const QString& text, const char* pattern, const char* complaint) {
    const QString value = text.trimmed();
    if (!matches(value, pattern))
        throw BadInput(QString::fromUtf8(complaint).arg(value));
    return value;
}

} // namespace

QString name(const QString& text, const QString& field, int longest) {
    const QString value = text.trimmed();
    if (value.isEmpty())
        throw BadInput(field + QStringLiteral(" is empty"));
    if (value.size() > longest)
        throw BadInput(field + QStringLiteral(" is longer than %1 characters").arg(longest));
    if (hasControl(value))
        throw BadInput(field + QStringLiteral(" holds a line break or another control character"));
    return value;
}

QString userName(const QString& text) {
    return matching(text, "^[A-Za-z0-9._-]{1,50}$",
                    "user name '%1' isn't 1 to 50 letters, digits, '.', '_' or '-'");
}

QString emailAddress(const QString& text) {
    if (text.trimmed().size() > 254)
        throw BadInput(QStringLiteral("e-mail address '%1' is too long").arg(text.trimmed()));
    return matching(text, "^[^@\\s,;<>\"]+@[^@\\s,;<>\"]+\\.[^@\\s,;<>\"]+$",
                    "e-mail address '%1' isn't one address, as in ann@example.org");
}

QString extension(const QString& text) {
    return matching(text, "^[A-Za-z0-9 +#*-]{0,20}$",
                    "extension '%1' isn't up to 20 digits, letters, blanks or + # * -");
}

QString colour(const QString& text) {
    return matching(text, "^#[0-9A-Fa-f]{6}$", "colour '%1' isn't #RRGGBB, as in #00C000")
        .mid(1)
        .toUpper();
}

int number(const QString& text, const QString& field, int least, int most) {
    bool ok = false;
    const int value = text.trimmed().toInt(&ok);
    if (!ok || value < least || value > most)
        throw BadInput(QStringLiteral("%1 takes a whole number from %2 to %3")
                           .arg(field)
                           .arg(least)
                           .arg(most));
    return value;
}

bool yesNo(const QString& text, const QString& field) {
    const QString value = text.trimmed().toLower();
    if (value.isEmpty() || value == QStringLiteral("no") || value == QStringLiteral("false") ||
        value == QStringLiteral("0"))
        return false;
    if (value == QStringLiteral("yes") || value == QStringLiteral("true") ||
        value == QStringLiteral("1"))
        return true;
    throw BadInput(field + QStringLiteral(" takes yes or no, not '%1'").arg(text.trimmed()));
}

} // namespace InputRules
