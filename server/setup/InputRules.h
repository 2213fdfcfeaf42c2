#pragma once

#include <QString>

// What the directory accepts as names, user names, addresses, extensions and colours. Each
// answers the cleaned value (blanks around it dropped) or throws BadInput naming the field.
namespace InputRules {

// A name shown on the board: 1 to `longest` characters, no line breaks or other controls.
QString name(const QString& text, const QString& field, int longest = 50);
// Letters, digits, '.', '_' and '-', 1 to 50 of them.
QString userName(const QString& text);
// One plain address, as in ann@example.org.
QString emailAddress(const QString& text);
// Empty, or up to 20 digits, letters, blanks and + # * -.
QString extension(const QString& text);
// #RRGGBB; answered as the store keeps it, RRGGBB in capitals.
QString colour(const QString& text);
// A whole number from least to most.
int number(const QString& text, const QString& field, int least, int most);
// yes/no, true/false, 1/0, or empty for no.
bool yesNo(const QString& text, const QString& field);

} // namespace InputRules
