#pragma once

#include "wire/Rowset.h"
#include <QString>
#include <QVariantList>

class Database;

// The shape every board list answers in: person, user, status, comment, returning moment and
// whether the asking user has the person as a friend.
namespace Board {

// The columns a person's record is read from, over the aliases c (contact) and u (user);
// home details only where the person agreed to show them.
QString ContactColumns();

// The board columns of the people a condition picks, as the given user sees them.
// `where` is SQL over the aliases c (contact) and u (user), with '?' for `values`.
wire::Rowset people(Database& db, qint64 askingUser, const QString& where,
                    const QVariantList& values);

// A stored returning moment as the board reads it: "M/d/yyyy h:mm AM", or the literal for
// "nothing given" when none is stored.
QString returningText(const QVariant& stored);

// The moment the client sends with a status: the date (with a time of day) and the time as
// separate texts, either may be missing. Empty when neither reads as a moment.
QString storedMoment(const QVariant& date, const QVariant& time);

QString now(); // the present moment as stored

// The index of a column by its name, or -1.
int columnOf(const wire::Rowset& rowset, const QString& name);

} // namespace Board
