// Owns GoogleTest's precompiled headers. It has no tests; nobody builds or runs it.
