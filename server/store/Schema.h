#pragma once

#include <QStringList>

// The server's tables. Moments are stored as ISO text ("2026-11-18T09:05:00") so that both
// engines keep and sort them alike.
namespace Schema {

QStringList statements(bool postgres); // CREATE TABLE IF NOT EXISTS ..., in dependency order
QStringList tables();                  // every table, in the same order

} // namespace Schema
