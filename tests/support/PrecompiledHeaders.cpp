// Owns GoogleTest's precompiled headers. It has no tests and is never run.
