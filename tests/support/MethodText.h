#pragma once

#include <string>

class Method;

namespace support {

// A message as lines of text, in order:
//   call setTime
//   in int setTimeHours=7
//   in string ...=..., in bool ...=true
std::string textOf(const Method& method);

// The reverse; false, and `method` untouched, when the text is not a message.
bool methodOf(const std::string& text, Method& method);

// A message in one line, such as "setTime/0 setTimeHours/0=8": name/type, then each parameter as
// name/direction=value, with texts in quotes.
std::string lineOf(const Method& method);

}  // namespace support
