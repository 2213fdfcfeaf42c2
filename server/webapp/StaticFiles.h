#pragma once

#include "gateway/HttpReply.h"
#include <QString>

// The web pages' files, compiled in under :/web/static/.
namespace StaticFiles {

// One of them (by its name, as "admin.html") as an answer with the given status.
HttpReply Reply(int status, const QString& name);

} // namespace StaticFiles
