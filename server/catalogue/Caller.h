#pragma once

#include <QString>

// Who a statement is run for: the address it came from and, when the request carried a live
// session, the signed-in person. Handlers read it to keep to that person's rights; sign-in
// and sign-out leave word here for the gateway to open or end the session.
struct Caller {
    QString peer;
    qint64 userSys = -1; // -1: no session
    qint64 contactSys = -1;
    qint64 organizationSys = -1;
    QString emailAddress;
    bool mayChangeOthersStatus = false;

    qint64 openSessionFor = -1; // set by a good sign-in
    bool endSession = false;    // set by the sign-out statement
    // The answer is made once for everybody: lists mark nobody as a friend, the gateway marks
    // each asker's friends on its copy.
    bool sharedAnswer = false;

    bool signedIn() const { return userSys >= 0; }
};
