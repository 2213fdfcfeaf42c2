#pragma once

class QCoreApplication;

// The tavlo-server command line: reads the arguments, runs the command they name and answers
// the exit code: 0 done, 2 bad input (said on the error output, nothing written), 1 a failure
// of the store or the network.
int RunCommandLine(const QCoreApplication& app);
