// The platform's XmlParser for test programs without an XML library: elements, text and the
// named, decimal and hexadecimal character references up to U+007F; no comments, no CDATA.

#include <cstddef>
#include <cstdlib>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "XmlParser.h"

struct XmlParser::Impl {
  void* userData;
  StartElement start;
  EndElement end;
  CharacterData characterData;
};

namespace {

struct OpenElement {
  std::string name;
  std::string text;
};

// "amp" is '&', "#10" and "#xa" a line feed. False for one that is not known.
bool decode(const std::string& reference, char& character) {
  static const std::map<std::string, char> named{
      {"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};
  if (const auto found = named.find(reference); found != named.end()) {
    character = found->second;
    return true;
  }
  if (reference.size() < 2 || reference[0] != '#') return false;
  const bool hexadecimal = reference[1] == 'x';
  const std::string digits = reference.substr(hexadecimal ? 2 : 1);
  char* rest = nullptr;
  const long code = std::strtol(digits.c_str(), &rest, hexadecimal ? 16 : 10);
  if (digits.empty() || *rest != '\0' || code < 1 || code > 127) return false;
  character = static_cast<char>(code);
  return true;
}

bool appendText(const std::string& raw, std::string& text) {
  for (std::size_t at = 0; at < raw.size(); ++at) {
    char character = raw[at];
    if (character == '&') {
      const std::size_t last = raw.find(';', at);
      if (last == std::string::npos || !decode(raw.substr(at + 1, last - at - 1), character))
        return false;
      at = last;
    }
    text += character;
  }
  return true;
}

class Reading {
 public:
  Reading(std::string document, const XmlParser::StartElement start,
          const XmlParser::EndElement end, const XmlParser::CharacterData text, void* userData)
      : m_document(std::move(document)),
        m_start(start),
        m_end(end),
        m_text(text),
        m_userData(userData) {}

  bool run() {
    std::size_t at = 0;
    while (at < m_document.size()) {
      const std::size_t tag = m_document.find('<', at);
      if (!takeText(m_document.substr(at, tag - at))) return false;
      if (tag == std::string::npos) break;
      const std::size_t last = m_document.find('>', tag);
      if (last == std::string::npos) return false;
      if (!takeTag(m_document.substr(tag + 1, last - tag - 1))) return false;
      at = last + 1;
    }
    return m_seenRoot && m_open.empty();
  }

 private:
  bool takeText(const std::string& raw) {
    if (!m_open.empty()) return appendText(raw, m_open.back().text);
    return raw.find_first_not_of(" \t\r\n") == std::string::npos;
  }

  bool takeTag(std::string tag) {
    if (tag.empty()) return false;
    if (tag.front() == '?') return true;
    if (tag.front() == '/') return close(tag.substr(1));
    const bool alone = tag.back() == '/';
    if (alone) tag.pop_back();
    const std::string name = tag.substr(0, tag.find_first_of(" \t\r\n"));
    if (name.empty() || (m_open.empty() && m_seenRoot)) return false;
    open(name);
    return !alone || close(name);
  }

  void open(const std::string& name) {
    const char* none = nullptr;
    m_seenRoot = true;
    m_open.push_back({name, ""});
    m_start(m_userData, name.c_str(), &none);
  }

  bool close(const std::string& name) {
    if (m_open.empty() || m_open.back().name != name) return false;
    const std::string text = m_open.back().text;
    m_open.pop_back();
    if (!text.empty()) m_text(m_userData, text.data(), static_cast<int>(text.size()));
    m_end(m_userData, name.c_str());
    return true;
  }

  const std::string m_document;
  const XmlParser::StartElement m_start;
  const XmlParser::EndElement m_end;
  const XmlParser::CharacterData m_text;
  void* const m_userData;
  std::vector<OpenElement> m_open;
  bool m_seenRoot = false;
};

}  // namespace

XmlParser::XmlParser(void* userData, StartElement start, EndElement end,
                     CharacterData characterData)
    : m_impl(std::make_unique<Impl>(Impl{userData, start, end, characterData})) {}

XmlParser::~XmlParser() = default;

bool XmlParser::parseMessage(const char* document, int length) {
  if (length <= 0) return false;
  return Reading(std::string(document, static_cast<std::size_t>(length)), m_impl->start,
                 m_impl->end, m_impl->characterData, m_impl->userData)
      .run();
}
