#pragma once

#include <memory>

// A streaming parser for small XML documents.
// Owner: its creator. Thread: one at a time; callbacks run inside parseMessage. The character-data
// callback gets the text of an element in one piece, just before the end callback, and only if the
// text is not empty.
class XmlParser {
 public:
  // attributes: name, value, name, value, ... null.
  using StartElement = void (*)(void* userData, const char* name, const char** attributes);
  using EndElement = void (*)(void* userData, const char* name);
  using CharacterData = void (*)(void* userData, const char* text, int length);

  // `userData` is passed to every callback unchanged and is not owned.
  XmlParser(void* userData, StartElement start, EndElement end, CharacterData characterData);
  virtual ~XmlParser();
  XmlParser(const XmlParser&) = delete;
  XmlParser& operator=(const XmlParser&) = delete;

  // Parses one whole document of `length` bytes. False when it is not well formed; the part before
  // the error has then reached the callbacks. May be called again with another document.
  virtual bool parseMessage(const char* document, int length);

 private:
  struct Impl;
  std::unique_ptr<Impl> m_impl;
};
