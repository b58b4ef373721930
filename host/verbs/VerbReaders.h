#pragma once

#include "verbs/Json.h"

namespace host {

class WordReader;

// What the verbs take: one reader for each shape of arguments (see Verb::read).
void readNothing(WordReader& words, Json& request);
void readCall(WordReader& words, Json& request);         // method, arguments
void readKey(WordReader& words, Json& request);          // key
void readKeyAndValue(WordReader& words, Json& request);  // key, value
void readWatch(WordReader& words, Json& request);        // count; 0: without end
void readClock(WordReader& words, Json& request);        // action, and what it takes
void readInject(WordReader& words, Json& request);       // what, and what it takes
void readLog(WordReader& words, Json& request);          // follow

}  // namespace host
