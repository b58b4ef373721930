#include "RejectReason.h"

#include <cstdarg>

#include "base/FormattedText.h"

// The text alone is kept: a reason without words would tell a person nothing.
void setRejectReason(rejectReasons /*reason*/, std::string& text, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  text = host::formattedText(format, arguments);
  va_end(arguments);
}
