#pragma once

#include "wire/Rowset.h"
#include <QByteArray>
#include <vector>

// A board answer as the server sends it, made the same way on every run: kPeople people with
// the board's columns, some Nulls, and comments with control characters inside.
namespace BoardAnswer {

inline constexpr int kPeople = 5000;

std::vector<wire::Column> Columns();
QByteArray Xml();

} // namespace BoardAnswer
