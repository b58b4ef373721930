#include "RejectReason.h"

#include <cstdarg>

#include "base/FormattedText.h"

// Only the text is used: the reason codes mean nothing to a user.
void setRejectReason(rejectReasons /*reason*/, std::string& text, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  text = host::formattedText(format, arguments);
  va_end(arguments);
}
