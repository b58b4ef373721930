#pragma once

#include <string>

// Why a management value was refused.
enum rejectReasons : int {
  rejectReasonNone = 0,
  rejectReasonUnknownItem = 1,
  rejectReasonReadOnly = 2,
  rejectReasonOutOfRange = 3,
  rejectReasonInvalidValue = 4
};

// Writes the reason for a refusal into `text`, printf-style. Thread: any.
void setRejectReason(rejectReasons reason, std::string& text, const char* format, ...)
    __attribute__((format(printf, 3, 4)));
