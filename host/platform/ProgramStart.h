#pragma once

namespace host {

// The first call of each program's main, before any file is opened or thread started.
// A standard descriptor that is closed becomes /dev/null, or else the first file opened, a database
// perhaps, would get what is written to standard output. SIGPIPE and SIGXFSZ are ignored: a write
// to a reader that has gone, or beyond the limit of a file's size, fails as any other.
// Failure: ends the program with status 1; without /dev/null there is no safe way on.
void startProgram();

}  // namespace host
