#pragma once

namespace host {

// The first call of each program's main, before it opens files or starts threads.
// Opens /dev/null in place of a closed standard descriptor: otherwise the first opened file,
// perhaps a database, would receive the standard output. Ignores SIGPIPE and SIGXFSZ, so that
// writing to a closed pipe or beyond the file size limit fails with an error. Failure: ends the
// program with status 1, as it is unsafe to continue without /dev/null.
void startProgram();

}  // namespace host
