#pragma once

// What the plug-ins of the tests tell: the test program exports it, they call it. Thread: any.
extern "C" void testPluginNote(const char* text);
