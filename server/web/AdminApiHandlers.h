#pragma once

#include "AdminApi.h"
#include <QJsonArray>
#include <QJsonObject>

struct MailSetup;

// The handlers behind AdminApi's routes, grouped by what they keep; each is given the
// administrator's organisation and user and the request's fields.
namespace AdminApi {

using Handler = Reply(Database& db, qint64 organizationSys, qint64 userSys, const Fields& fields);

// An answer of 200 with the value, or of another status with {"error": text}.
Reply ok(const QJsonValue& value);
Reply error(int status, const QString& text);
// A field read as a key; BadInput when it isn't one.
qint64 keyField(const Fields& fields, const char* name);
// The server's mail settings: links are mailed only when the public address was given.
MailSetup mailSetup();

Handler listPeople, onePerson, addPerson, editPerson, disablePerson, removePerson, setRights,
    sendResetLink;
Handler listGroups, addGroup, setGroupMember, listLocations, addLocation, listStatuses, addStatus,
    editStatus, chat, setChat;
Handler release, setRelease, outbox, anomalies, history;

} // namespace AdminApi
