#pragma once

#include <QStringList>

// tavlo-query: posts one statement to a gateway exactly as the client does, or reads a saved
// rowset file, and prints the recordset.
//
//   tavlo-query --url http://host/tavlo "EXECUTE tl_VersionCheck"
//   tavlo-query --file answer.xml --tsv
//   tavlo-query --url http://host/tavlo --sign-in ann --password-file pw "EXEC tl_GetMyFriendsList
//   5001,1"
//
// Exit status: 0 done, 1 bad usage (or a file that cannot be read), 2 the server could not be
// reached, 3 the answer is no rowset, 4 the sign-in was refused. Failures print one line on
// stderr.
class QueryTool {
public:
    enum Exit { Ok = 0, Usage = 1, Unreachable = 2, NoRowset = 3, SignInRefused = 4 };

    // Runs with the program's arguments (the first is the program itself).
    static int run(const QStringList& arguments);
};
