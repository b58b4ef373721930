#pragma once

#include <string>

// Conversions between settings and their text. Thread: any.
class ClientUtils {
 public:
  // Decimal text of a number, and back. stoi reads as far as there are digits, as strtol does in
  // base 10: no digits give 0, too large a number gives the nearest int.
  static std::string itos(int number);
  static int stoi(const std::string& text);

  // "true" and "false", and back. stob is true for exactly "true".
  static std::string btos(bool value);
  static bool stob(const std::string& text);

  // True for a host name of RFC 1123 form: 1-253 characters, labels of 1-63 letters, digits and
  // hyphens, none at a label's ends; the last label is not all digits; one final dot is allowed.
  static bool validGlobalHostname(const std::string& text);
};
